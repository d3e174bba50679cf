#include "shell/flow/CanvasPainter.h"

#include "shell/design/Icon.h"
#include "shell/design/Theme.h"
#include "shell/flow/CanvasMetrics.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace ombrel {

namespace {

using State = FlowRunHighlight::NodeState;

// Below these scales words are bars, and wires are hairlines.
constexpr double readableScale = 0.45;
constexpr double fineScale = 0.6;

QColor wireColor(const CanvasWire& wire, const CanvasPainter::Marks& marks, bool hasRun) {
    const ThemeColors& colors = Theme::current().colors();
    if (wire.isTaken) {
        return wire.isLast ? colors.accent : colors.success;
    }
    if (marks.selectedWire == wire.id) {
        return colors.accent;
    }
    if (marks.hoveredWire == wire.id) {
        return colors.secondary;
    }
    return hasRun ? colors.strongBorder : colors.faint;
}

void drawArrow(QPainter& painter, QPointF tip, const QColor& color) {
    const QPolygonF head({tip + QPointF(-1, 0), tip + QPointF(-9, -4.6), tip + QPointF(-9, 4.6)});
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawPolygon(head);
}

} // namespace

void CanvasPainter::themeChanged() {
    m_faces.clear();
    m_text.clear();
    m_knowledge = {};
}

void CanvasPainter::draw(QPainter& painter, const CanvasScene& scene, const CanvasView& view,
                         const Marks& marks, const QRectF& exposed) {
    const ThemeColors& colors = Theme::current().colors();
    painter.fillRect(exposed, colors.window);
    drawGrid(painter, view, exposed);

    const double scale = view.zoomScale;
    const QPointF offset = canvas::origin + QPointF(view.panOffset.width, view.panOffset.height);
    QTransform toWidget = QTransform::fromTranslate(offset.x(), offset.y()).scale(scale, scale);
    const QRectF seen = toWidget.inverted().mapRect(exposed);
    const QRectF reach = seen.adjusted(-canvas::cardMargin, -canvas::cardMargin, canvas::cardMargin,
                                       canvas::cardMargin);
    std::vector<const CanvasCard*> cards;
    for (const CanvasCard& card : scene.cards()) {
        if (canvas::cardRect(scene.centre(card)).intersects(reach)) {
            cards.push_back(&card);
        }
    }

    painter.save();
    painter.setTransform(toWidget, true);
    painter.setRenderHint(QPainter::Antialiasing);
    for (const bool isVertical : {true, false}) {
        const auto& guide = isVertical ? marks.guideX : marks.guideY;
        if (guide) {
            QPen pen(colors.accent, 1, Qt::DashLine);
            pen.setCosmetic(true);
            painter.setPen(pen);
            painter.drawLine(isVertical ? QLineF(*guide, seen.top(), *guide, seen.bottom())
                                        : QLineF(seen.left(), *guide, seen.right(), *guide));
        }
    }
    drawWires(painter, scene, marks, seen, scale);
    painter.restore();

    drawFaces(painter, scene, view, marks, cards);

    painter.save();
    painter.setTransform(toWidget, true);
    painter.setRenderHint(QPainter::Antialiasing);
    if (scale >= readableScale) {
        drawWords(painter, scene, cards);
        drawPorts(painter, scene, marks, seen);
    }
    drawMarks(painter, scene, cards, scale);
    for (const CanvasCard* card : cards) {
        if (card->runState == State::active) {
            QColor glow = colors.accent;
            glow.setAlphaF(static_cast<float>(0.5 * (1 - marks.pulse)));
            const double spread = 3 + 8 * marks.pulse;
            painter.setPen(QPen(glow, 3));
            painter.setBrush(Qt::NoBrush);
            painter.drawRoundedRect(
                canvas::cardRect(scene.centre(*card)).adjusted(-spread, -spread, spread, spread),
                canvas::cardCorner + spread, canvas::cardCorner + spread);
        }
    }
    if (marks.pulledWire) {
        drawPulled(painter, *marks.pulledWire);
    }
    if (marks.rubberBand) {
        QPen pen(colors.accent, 1);
        pen.setCosmetic(true);
        painter.setPen(pen);
        QColor fill = colors.accent;
        fill.setAlphaF(0.12F);
        painter.setBrush(fill);
        painter.drawRect(*marks.rubberBand);
    }
    painter.restore();
}

void CanvasPainter::drawGrid(QPainter& painter, const CanvasView& view,
                             const QRectF& exposed) const {
    constexpr double closest = 16;
    double step = canvas::gridStep * view.zoomScale;
    while (step < closest) {
        step *= 2;
    }
    const QColor color =
        Theme::current().isDark() ? QColor(255, 255, 255, 20) : QColor(20, 20, 50, 26);
    const double dot = view.zoomScale >= 1.5 ? 2 : 1.4;
    // The last place of a dot at or before the edge; also where the offset is out of all measure.
    const auto first = [step](double edge, double offset) {
        const double behind = std::fmod(edge - offset, step);
        return edge - (behind < 0 ? behind + step : behind);
    };
    const double left = first(exposed.left(), canvas::origin.x() + view.panOffset.width);
    const double top = first(exposed.top(), canvas::origin.y() + view.panOffset.height);
    if (!std::isfinite(left) || !std::isfinite(top)) {
        return;
    }
    std::vector<QRectF> dots;
    dots.reserve(
        static_cast<std::size_t>((exposed.width() / step + 2) * (exposed.height() / step + 2)));
    for (double y = top; y < exposed.bottom(); y += step) {
        for (double x = left; x < exposed.right(); x += step) {
            dots.emplace_back(std::round(x), std::round(y), dot, dot);
        }
    }
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawRects(dots.data(), static_cast<int>(dots.size()));
}

void CanvasPainter::drawWires(QPainter& painter, const CanvasScene& scene, const Marks& marks,
                              const QRectF& seen, double scale) const {
    const auto draw = [&](const CanvasWire& wire) {
        const WireCurve curve = scene.curve(wire);
        const QRectF bounds = curve.bounds().adjusted(-8, -8, 8, 8);
        if (!bounds.intersects(seen)) {
            return;
        }
        const bool isBright = wire.isTaken || marks.selectedWire == wire.id;
        const QColor color = wireColor(wire, marks, scene.hasRun());
        if (scale < fineScale && !isBright) {
            QPen pen(color, 1);
            pen.setCosmetic(true);
            painter.setPen(pen);
            const double length = (bounds.width() + bounds.height()) * scale;
            painter.drawPolyline(curve.flattened(std::clamp(static_cast<int>(length / 10), 6, 32)));
            return;
        }
        if (marks.selectedWire == wire.id) {
            QColor halo = Theme::current().colors().focus;
            halo.setAlphaF(0.3F);
            painter.setBrush(Qt::NoBrush);
            painter.setPen(QPen(halo, 8, Qt::SolidLine, Qt::RoundCap));
            painter.drawPath(curve.path());
        }
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(color, isBright ? 2.8 : 2, Qt::SolidLine, Qt::RoundCap));
        painter.drawPath(curve.path());
        if (wire.isLast) {
            const double t = marks.pulse;
            painter.setPen(Qt::NoPen);
            painter.setBrush(color);
            painter.drawEllipse(curve.at(t), 5, 5);
        }
        if (scale >= fineScale) {
            drawArrow(painter, curve.at(1) - QPointF(4, 0), color);
        }
    };
    // Those of the run, and the selected one, lie above the others.
    const auto isAbove = [&](const CanvasWire& wire) {
        return wire.isTaken || marks.selectedWire == wire.id;
    };
    for (const bool above : {false, true}) {
        for (const CanvasWire& wire : scene.wires()) {
            if (isAbove(wire) == above) {
                draw(wire);
            }
        }
    }
}

void CanvasPainter::drawPulled(QPainter& painter, const Marks::Pulled& pulled) const {
    const ThemeColors& colors = Theme::current().colors();
    const QColor color = pulled.canConnect ? colors.accent : colors.faint;
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(color, 2.4, pulled.canConnect ? Qt::SolidLine : Qt::DotLine, Qt::RoundCap));
    painter.drawPath(WireCurve(pulled.from, pulled.to).path());
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawEllipse(pulled.from, canvas::handleRadius, canvas::handleRadius);
    painter.drawEllipse(pulled.to, 4.5, 4.5);
}

void CanvasPainter::drawPorts(QPainter& painter, const CanvasScene& scene, const Marks& marks,
                              const QRectF& seen) {
    const ThemeColors& colors = Theme::current().colors();
    for (const CanvasWire& wire : scene.wires()) {
        if (wire.port.isEmpty()) {
            continue;
        }
        const WireCurve curve = scene.curve(wire);
        const QPointF middle = curve.at(0.5);
        constexpr double most = 96;
        if (!seen.adjusted(-most, -20, most, 20).contains(middle)) {
            continue;
        }
        const double width = m_text.width(wire.port, TextRole::caption, most);
        const QRectF pill(middle.x() - width / 2 - 8, middle.y() - 9.5, width + 16, 19);
        const QColor line = wireColor(wire, marks, scene.hasRun());
        const bool isBright = wire.isTaken || marks.selectedWire == wire.id;
        painter.setPen(QPen(isBright ? line : colors.border, 1.2));
        painter.setBrush(colors.surface);
        painter.drawRoundedRect(pill, 9.5, 9.5);
        m_text.draw(painter, {pill.left() + 8, pill.center().y()}, wire.port, TextRole::caption,
                    most, isBright ? line : colors.secondary);
    }
}

void CanvasPainter::drawFaces(QPainter& painter, const CanvasScene& scene, const CanvasView& view,
                              const Marks& marks, const std::vector<const CanvasCard*>& cards) {
    const double ratio = painter.device()->devicePixelRatioF();
    const double scale = view.zoomScale;
    const bool withBars = scale < readableScale;
    m_faces.setScale(scale, ratio, withBars);
    for (const CanvasCard* card : cards) {
        CardFace face;
        face.kind = card->kind;
        face.runState = card->runState;
        face.isFaint = scene.hasRun() && card->runState == State::notReached;
        face.isSelected = marks.selectedNodes.contains(card->id);
        face.hasFocus = face.isSelected && marks.hasFocus;
        face.isHovered = marks.hoveredNode == card->id;
        face.isTarget = marks.targetNode == card->id;
        if (withBars) {
            face.titleBar = static_cast<int>(std::min<qsizetype>(card->title.size() / 2 + 1, 6));
            face.subtitleBar =
                card->subtitle.isEmpty()
                    ? 0
                    : static_cast<int>(std::min<qsizetype>(card->subtitle.size() / 2 + 1, 6));
        }
        const QPixmap& picture = m_faces.picture(face);
        const QPointF centre = scene.centre(*card);
        const QPointF seen(centre.x() * scale + canvas::origin.x() + view.panOffset.width,
                           centre.y() * scale + canvas::origin.y() + view.panOffset.height);
        // At a whole device pixel, where the picture is sharp.
        const QPointF corner = seen * ratio - QPointF(m_faces.centre());
        painter.drawPixmap(QPointF(std::round(corner.x()), std::round(corner.y())) / ratio,
                           picture);
    }
}

void CanvasPainter::drawWords(QPainter& painter, const CanvasScene& scene,
                              const std::vector<const CanvasCard*>& cards) {
    const ThemeColors& colors = Theme::current().colors();
    constexpr double left = 55;
    constexpr double right = 10;
    constexpr double width = canvas::cardWidth - left - right;
    for (const CanvasCard* card : cards) {
        const QPointF centre = scene.centre(*card);
        const double x = centre.x() - canvas::cardWidth / 2 + left;
        const bool isFaint = scene.hasRun() && card->runState == State::notReached;
        const bool isAlone = card->subtitle.isEmpty();
        m_text.draw(painter, {x, centre.y() - (isAlone ? 0 : 9)}, card->title, TextRole::strong,
                    width, isFaint ? colors.secondary : colors.text);
        m_text.draw(painter, {x, centre.y() + 11}, card->subtitle, TextRole::caption,
                    width - (card->drawsOnKnowledge ? 20 : 0),
                    isFaint ? colors.faint : colors.secondary);
    }
}

void CanvasPainter::drawMarks(QPainter& painter, const CanvasScene& scene,
                              const std::vector<const CanvasCard*>& cards, double scale) {
    const ThemeColors& colors = Theme::current().colors();
    for (const CanvasCard* card : cards) {
        const QPointF centre = scene.centre(*card);
        if (card->drawsOnKnowledge && scale >= readableScale) {
            if (m_knowledge.isNull()) {
                m_knowledge = themeIcon(QStringLiteral("rag"), Tone::accent).pixmap(QSize(60, 60));
            }
            painter.setRenderHint(QPainter::SmoothPixmapTransform);
            painter.drawPixmap(canvas::knowledgeRect(centre), m_knowledge, m_knowledge.rect());
        }
        if (card->mark) {
            const QRectF place = canvas::markRect(centre);
            const bool isError = *card->mark == FlowIssue::Severity::error;
            painter.setPen(QPen(colors.window, 2));
            painter.setBrush(isError ? colors.danger : colors.warning);
            painter.drawEllipse(place);
            if (scale >= readableScale) {
                const QColor ink = colors.window;
                painter.setPen(QPen(ink, 2, Qt::SolidLine, Qt::RoundCap));
                const QPointF middle = place.center();
                painter.drawLine(middle + QPointF(0, -4.2), middle + QPointF(0, 0.6));
                painter.drawPoint(middle + QPointF(0, 4.2));
            }
        }
        if (card->step > 0) {
            drawBubble(painter, *card, canvas::bubbleRect(centre), scale);
        }
    }
}

void CanvasPainter::drawBubble(QPainter& painter, const CanvasCard& card, const QRectF& place,
                               double scale) {
    const ThemeColors& colors = Theme::current().colors();
    QColor ink = colors.success;
    QColor soft = colors.successSoft;
    if (card.runState == State::failed) {
        ink = colors.danger;
        soft = colors.dangerSoft;
    } else if (card.runState == State::active) {
        ink = colors.accent;
        soft = colors.accentSoft;
    }
    const QString step = QString::number(card.step);
    constexpr double side = 18;
    const double inset = (place.height() - side) / 2;
    const double stepWidth =
        std::max(side, m_text.width(step, TextRole::caption, place.width()) + 10);
    const double room = place.width() - stepWidth - 3 * inset - 10;
    const bool isReadable = scale >= readableScale;
    const double textWidth = isReadable ? m_text.width(card.runValue, TextRole::caption, room) : 0;
    const double width = stepWidth + 2 * inset + (textWidth > 0 ? textWidth + 14 : 0);
    const QRectF pill(place.left(), place.top(), width, place.height());
    painter.setPen(QPen(ink, 1));
    painter.setBrush(soft);
    painter.drawRoundedRect(pill, place.height() / 2, place.height() / 2);
    painter.setPen(Qt::NoPen);
    painter.setBrush(ink);
    const QRectF stepPlace(pill.left() + inset, pill.top() + inset, stepWidth, side);
    painter.drawRoundedRect(stepPlace, side / 2, side / 2);
    if (isReadable) {
        const double stepText = m_text.width(step, TextRole::caption, place.width());
        m_text.draw(painter, {stepPlace.center().x() - stepText / 2, stepPlace.center().y()}, step,
                    TextRole::caption, place.width(), soft);
        m_text.draw(painter, {stepPlace.right() + 6, pill.center().y()}, card.runValue,
                    TextRole::caption, room, colors.text);
    }
}

} // namespace ombrel

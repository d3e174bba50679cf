#include "shell/flow/CanvasPainter.h"

#include "shell/design/Icon.h"
#include "shell/design/MixedColor.h"
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

// The same for places that are whole pixels apart.
double wholePixel(double at) {
    return std::floor(at + 0.5);
}

QPen hairline(const QColor& color, Qt::PenStyle style = Qt::SolidLine) {
    QPen pen(color, 1, style);
    pen.setCosmetic(true);
    return pen;
}

} // namespace

struct CanvasPainter::Drawn {
    const CanvasScene& scene;
    const CanvasPlace& place;
    const Marks& marks;
    const QRect& part;
    std::vector<const CanvasCard*> cards; // that are seen

    bool isReadable() const { return place.zoomScale() >= readableScale; }
    bool touches(const QRectF& onCanvas) const {
        return place.seen(onCanvas).intersects(QRectF(part));
    }
};

void CanvasPainter::themeChanged() {
    m_faces.clear();
    m_text.clear();
    m_knowledge = {};
}

void CanvasPainter::draw(QPainter& painter, const CanvasScene& scene, const CanvasPlace& place,
                         const Marks& marks, const QRect& part) {
    Drawn drawn{scene, place, marks, part, {}};
    for (const CanvasCard& card : scene.cards()) {
        if (drawn.touches(canvas::cardReach(scene.centre(card)))) {
            drawn.cards.push_back(&card);
        }
    }
    painter.fillRect(part, Theme::current().colors().window);
    drawGrid(painter, drawn);

    painter.setRenderHint(QPainter::Antialiasing);
    painter.setTransform(place.transform());
    drawWires(painter, drawn);
    painter.resetTransform();
    drawFaces(painter, drawn);
    painter.setTransform(place.transform());
    if (drawn.isReadable()) {
        drawWords(painter, drawn);
        drawPorts(painter, drawn);
    }
    drawMarks(painter, drawn);
}

void CanvasPainter::drawGrid(QPainter& painter, const Drawn& drawn) const {
    const double ratio = drawn.place.ratio;
    const double closest = 16 * ratio;
    double step = canvas::gridStep * drawn.place.unit;
    while (step < closest) {
        step *= 2;
    }
    const double dot = (drawn.place.zoomScale() >= 1.5 ? 2 : 1.4) * ratio;
    const int side = static_cast<int>(std::lround(dot));
    std::vector<QRect> dots;
    const QPointF first = (QPointF(drawn.part.topLeft()) - drawn.place.offset) / step;
    constexpr double most = 1e12; // beyond it there are no fractions to count with
    if (!(std::abs(first.x()) < most && std::abs(first.y()) < most)) {
        return;
    }
    const auto pixel = [step](double count, double offset) {
        return static_cast<int>(wholePixel(count * step + offset));
    };
    for (double row = std::floor(first.y());; ++row) {
        const int y = pixel(row, drawn.place.offset.y());
        if (y > drawn.part.bottom()) {
            break;
        }
        for (double column = std::floor(first.x());; ++column) {
            const int x = pixel(column, drawn.place.offset.x());
            if (x > drawn.part.right()) {
                break;
            }
            dots.emplace_back(x, y, side, side);
        }
    }
    const ThemeColors& colors = Theme::current().colors();
    const bool isDark = Theme::current().isDark();
    painter.setPen(Qt::NoPen);
    painter.setBrush(
        mixed(colors.window, isDark ? Qt::white : QColor(20, 20, 50), isDark ? 0.08 : 0.1));
    painter.drawRects(dots.data(), static_cast<int>(dots.size()));
}

void CanvasPainter::drawWires(QPainter& painter, const Drawn& drawn) const {
    const Marks& marks = drawn.marks;
    const double scale = drawn.place.zoomScale();
    constexpr double widest = 8; // and what is drawn beside it
    const QRectF seen =
        drawn.place.onCanvas(QRectF(drawn.part)).adjusted(-widest, -widest, widest, widest);
    const auto draw = [&](const CanvasWire& wire, bool isBright) {
        const WireCurve curve = drawn.scene.curve(wire);
        const QRectF bounds = curve.bounds().adjusted(-8, -8, 8, 8);
        if (!drawn.touches(bounds)) {
            return;
        }
        const QColor color = wireColor(wire, marks, drawn.scene.hasRun());
        painter.setBrush(Qt::NoBrush);
        const double length = (bounds.width() + bounds.height()) * drawn.place.unit; // about
        if (scale < fineScale && !isBright) {
            painter.setPen(hairline(color)); // of one pixel, which is drawn fast
            painter.drawPolyline(curve.flattened(std::clamp(static_cast<int>(length / 10), 6, 32)));
            return;
        }
        // No more of it than is seen.
        const QPainterPath path =
            curve.pathWithin(seen, std::clamp(static_cast<int>(length / 8), 16, 96));
        if (marks.selectedWire == wire.id) {
            QColor halo = Theme::current().colors().focus;
            halo.setAlphaF(0.3F);
            painter.setPen(QPen(halo, 8, Qt::SolidLine, Qt::RoundCap));
            painter.drawPath(path);
        }
        painter.setPen(QPen(color, isBright ? 2.8 : 2, Qt::SolidLine, Qt::RoundCap));
        painter.drawPath(path);
        if (scale >= fineScale) {
            drawArrow(painter, curve.at(1) - QPointF(4, 0), color);
        }
    };
    // Those of the run, and the selected one, lie above the others.
    for (const bool above : {false, true}) {
        for (const CanvasWire& wire : drawn.scene.wires()) {
            if ((wire.isTaken || marks.selectedWire == wire.id) == above) {
                draw(wire, above);
            }
        }
    }
}

void CanvasPainter::drawPorts(QPainter& painter, const Drawn& drawn) {
    const ThemeColors& colors = Theme::current().colors();
    for (const CanvasWire& wire : drawn.scene.wires()) {
        if (wire.port.isEmpty()) {
            continue;
        }
        const QPointF middle = drawn.scene.curve(wire).at(0.5);
        if (!drawn.touches(canvas::portReach(middle))) {
            continue;
        }
        const double width = m_text.width(wire.port, TextRole::caption, canvas::portWidth);
        const QRectF pill(middle.x() - width / 2 - 8, middle.y() - 9.5, width + 16, 19);
        const QColor line = wireColor(wire, drawn.marks, drawn.scene.hasRun());
        const bool isBright = wire.isTaken || drawn.marks.selectedWire == wire.id;
        painter.setPen(QPen(isBright ? line : colors.border, 1.2));
        painter.setBrush(colors.surface);
        painter.drawRoundedRect(pill, 9.5, 9.5);
        m_text.draw(painter, {pill.left() + 8, pill.center().y()}, wire.port, TextRole::caption,
                    canvas::portWidth, isBright ? line : colors.secondary);
    }
}

void CanvasPainter::drawFaces(QPainter& painter, const Drawn& drawn) {
    const bool withBars = !drawn.isReadable();
    m_faces.setScale(drawn.place.unit, withBars);
    for (const CanvasCard* card : drawn.cards) {
        CardFace face;
        face.kind = card->kind;
        face.runState = card->runState;
        face.isFaint = drawn.scene.hasRun() && card->runState == State::notReached;
        face.isSelected = drawn.marks.selectedNodes.contains(card->id);
        face.hasFocus = face.isSelected && drawn.marks.hasFocus;
        face.isHovered = drawn.marks.hoveredNode == card->id;
        face.isTarget = drawn.marks.targetNode == card->id;
        if (withBars) {
            face.titleBar = static_cast<int>(std::min<qsizetype>(card->title.size() / 2 + 1, 6));
            face.subtitleBar =
                card->subtitle.isEmpty()
                    ? 0
                    : static_cast<int>(std::min<qsizetype>(card->subtitle.size() / 2 + 1, 6));
        }
        const QPixmap& picture = m_faces.picture(face);
        // At a whole device pixel, where the picture is sharp.
        const QPointF centre = drawn.place.seen(drawn.scene.centre(*card));
        painter.drawPixmap(QPointF(wholePixel(centre.x()), wholePixel(centre.y())) -
                               QPointF(m_faces.centre()),
                           picture);
    }
}

void CanvasPainter::drawWords(QPainter& painter, const Drawn& drawn) {
    const ThemeColors& colors = Theme::current().colors();
    constexpr double left = 55;
    constexpr double right = 10;
    constexpr double width = canvas::cardWidth - left - right;
    for (const CanvasCard* card : drawn.cards) {
        const QPointF centre = drawn.scene.centre(*card);
        const double x = centre.x() - canvas::cardWidth / 2 + left;
        const bool isFaint = drawn.scene.hasRun() && card->runState == State::notReached;
        const bool isAlone = card->subtitle.isEmpty();
        m_text.draw(painter, {x, centre.y() - (isAlone ? 0 : 9)}, card->title, TextRole::strong,
                    width, isFaint ? colors.secondary : colors.text);
        m_text.draw(painter, {x, centre.y() + 11}, card->subtitle, TextRole::caption,
                    width - (card->drawsOnKnowledge ? 20 : 0),
                    isFaint ? colors.faint : colors.secondary);
    }
}

void CanvasPainter::drawMarks(QPainter& painter, const Drawn& drawn) {
    const ThemeColors& colors = Theme::current().colors();
    const bool isReadable = drawn.isReadable();
    for (const CanvasCard* card : drawn.cards) {
        const QPointF centre = drawn.scene.centre(*card);
        if (card->drawsOnKnowledge && isReadable) {
            const QRectF box = canvas::knowledgeRect(centre);
            const double side = box.width() * drawn.place.unit;
            if (m_knowledge.isNull() || m_knowledgeSide != side) {
                m_knowledge = scaledIcon(themeIcon(QStringLiteral("rag"), Tone::accent), side);
                m_knowledgeSide = side;
            }
            painter.setRenderHint(QPainter::SmoothPixmapTransform);
            painter.drawPixmap(box, m_knowledge, m_knowledge.rect());
        }
        if (card->mark) {
            const QRectF box = canvas::markRect(centre);
            const bool isError = *card->mark == FlowIssue::Severity::error;
            painter.setPen(QPen(colors.window, 2));
            painter.setBrush(isError ? colors.danger : colors.warning);
            painter.drawEllipse(box);
            if (isReadable) {
                painter.setPen(QPen(colors.window, 2, Qt::SolidLine, Qt::RoundCap));
                const QPointF middle = box.center();
                painter.drawLine(middle + QPointF(0, -4.2), middle + QPointF(0, 0.6));
                painter.drawPoint(middle + QPointF(0, 4.2));
            }
        }
        if (card->step > 0) {
            drawBubble(painter, *card, canvas::bubbleRect(centre), isReadable);
        }
    }
}

void CanvasPainter::drawBubble(QPainter& painter, const CanvasCard& card, const QRectF& box,
                               bool isReadable) {
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
    const double inset = (box.height() - side) / 2;
    const double stepWidth =
        std::max(side, m_text.width(step, TextRole::caption, box.width()) + 10);
    const double room = box.width() - stepWidth - 3 * inset - 10;
    const double textWidth = isReadable ? m_text.width(card.runValue, TextRole::caption, room) : 0;
    const double width = stepWidth + 2 * inset + (textWidth > 0 ? textWidth + 14 : 0);
    const QRectF pill(box.left(), box.top(), width, box.height());
    painter.setPen(QPen(ink, 1));
    painter.setBrush(soft);
    painter.drawRoundedRect(pill, box.height() / 2, box.height() / 2);
    painter.setPen(Qt::NoPen);
    painter.setBrush(ink);
    const QRectF stepBox(pill.left() + inset, pill.top() + inset, stepWidth, side);
    painter.drawRoundedRect(stepBox, side / 2, side / 2);
    if (isReadable) {
        const double stepText = m_text.width(step, TextRole::caption, box.width());
        m_text.draw(painter, {stepBox.center().x() - stepText / 2, stepBox.center().y()}, step,
                    TextRole::caption, box.width(), soft);
        m_text.draw(painter, {stepBox.right() + 6, pill.center().y()}, card.runValue,
                    TextRole::caption, room, colors.text);
    }
}

void CanvasPainter::drawOverlay(QPainter& painter, const CanvasScene& scene, const Overlay& overlay,
                                const QRectF& seen) const {
    const ThemeColors& colors = Theme::current().colors();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(hairline(colors.accent, Qt::DashLine));
    if (overlay.guideX) {
        painter.drawLine(QLineF(*overlay.guideX, seen.top(), *overlay.guideX, seen.bottom()));
    }
    if (overlay.guideY) {
        painter.drawLine(QLineF(seen.left(), *overlay.guideY, seen.right(), *overlay.guideY));
    }
    if (scene.isLive()) {
        for (const CanvasWire& wire : scene.wires()) {
            if (wire.isLast) {
                painter.setPen(Qt::NoPen);
                painter.setBrush(colors.accent);
                painter.drawEllipse(scene.curve(wire).at(overlay.pulse), 5, 5);
            }
        }
        for (const CanvasCard& card : scene.cards()) {
            if (card.runState == State::active) {
                QColor glow = colors.accent;
                glow.setAlphaF(static_cast<float>(0.5 * (1 - overlay.pulse)));
                const double spread = 3 + 8 * overlay.pulse;
                painter.setPen(QPen(glow, 3));
                painter.setBrush(Qt::NoBrush);
                painter.drawRoundedRect(
                    canvas::cardRect(scene.centre(card)).adjusted(-spread, -spread, spread, spread),
                    canvas::cardCorner + spread, canvas::cardCorner + spread);
            }
        }
    }
    if (overlay.pulledWire) {
        drawPulled(painter, *overlay.pulledWire);
    }
    if (overlay.rubberBand) {
        painter.setPen(hairline(colors.accent));
        QColor fill = colors.accent;
        fill.setAlphaF(0.12F);
        painter.setBrush(fill);
        painter.drawRect(*overlay.rubberBand);
    }
}

void CanvasPainter::drawPulled(QPainter& painter, const Overlay::Pulled& pulled) const {
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

} // namespace ombrel

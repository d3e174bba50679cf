#include "shell/flow/FlowMinimap.h"

#include "shell/design/Named.h"
#include "shell/design/Spacing.h"
#include "shell/design/Theme.h"
#include "shell/flow/CanvasMetrics.h"
#include "shell/flow/CardFace.h"

#include <QMouseEvent>
#include <QPainter>

#include <algorithm>

namespace ombrel {

FlowMinimap::FlowMinimap(const CanvasScene& scene, QWidget* parent)
    : QWidget(parent), m_scene(scene) {
    named(this, QStringLiteral("canvas.minimap"), tr("Map of the flow"));
    setToolTip(tr("The whole flow. Drag the frame to look elsewhere."));
    setFixedSize(188, 124);
    setCursor(Qt::PointingHandCursor);
    connect(&Theme::current(), &Theme::changed, this, [this] { sceneChanged(); });
}

void FlowMinimap::setSeen(const QRectF& seen) {
    if (seen != m_seen) {
        m_seen = seen;
        update();
    }
}

void FlowMinimap::sceneChanged() {
    QRectF bounds;
    for (const CanvasCard& card : m_scene.cards()) {
        bounds |= canvas::cardRect(card.centre);
    }
    m_bounds = bounds.adjusted(-40, -40, 40, 40);
    m_picture = {};
    update();
}

QTransform FlowMinimap::transform() const {
    const QRectF room = QRectF(rect()).adjusted(6, 6, -6, -6);
    const double scale = std::min(room.width() / std::max(1.0, m_bounds.width()),
                                  room.height() / std::max(1.0, m_bounds.height()));
    QTransform transform;
    transform.translate(room.center().x(), room.center().y());
    transform.scale(scale, scale);
    transform.translate(-m_bounds.center().x(), -m_bounds.center().y());
    return transform;
}

void FlowMinimap::paintEvent(QPaintEvent* /*event*/) {
    const ThemeColors& colors = Theme::current().colors();
    if (m_picture.isNull()) {
        m_picture = QPixmap(size() * devicePixelRatioF());
        m_picture.setDevicePixelRatio(devicePixelRatioF());
        m_picture.fill(Qt::transparent);
        QPainter painter(&m_picture);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(colors.border, 1));
        painter.setBrush(colors.surface);
        painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), spacing::cardCorner,
                                spacing::cardCorner);
        painter.setRenderHint(QPainter::Antialiasing, false);
        const QTransform map = transform();
        for (const CanvasCard& card : m_scene.cards()) {
            QRectF place = map.mapRect(canvas::cardRect(card.centre));
            place.setSize(place.size().expandedTo({3, 2}));
            QColor color = CardFace::ink(card.kind);
            color.setAlphaF(0.7F);
            painter.fillRect(place, color);
        }
    }
    QPainter painter(this);
    painter.drawPixmap(0, 0, m_picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setClipRect(rect().adjusted(2, 2, -2, -2));
    QColor fill = colors.accent;
    fill.setAlphaF(0.12F);
    painter.setBrush(fill);
    painter.setPen(QPen(colors.accent, 1.4));
    painter.drawRoundedRect(transform().mapRect(m_seen), 3, 3);
}

void FlowMinimap::ask(QPointF at) {
    Q_EMIT asked(transform().inverted().map(at));
}

void FlowMinimap::mousePressEvent(QMouseEvent* event) {
    ask(event->position());
}

void FlowMinimap::mouseMoveEvent(QMouseEvent* event) {
    ask(event->position());
}

} // namespace ombrel

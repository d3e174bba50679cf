#include "shell/agents/DiagramArrow.h"

#include "shell/design/Spacing.h"
#include "shell/design/Theme.h"

#include <QPainter>

namespace ombrel {

DiagramArrow::DiagramArrow(Qt::Orientation orientation, QWidget* parentWidget)
    : QWidget(parentWidget), m_orientation(orientation) {
    if (orientation == Qt::Vertical) {
        setFixedHeight(spacing::wide);
    } else {
        setFixedWidth(spacing::large);
    }
    connect(&Theme::current(), &Theme::changed, this, qOverload<>(&QWidget::update));
}

void DiagramArrow::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QColor color = Theme::current().colors().faint;
    const QPointF middle = QRectF(rect()).center();
    if (m_orientation == Qt::Horizontal) {
        painter.setPen(QPen(color, 1.5, Qt::DashLine));
        painter.drawLine(QPointF(0, middle.y()), QPointF(width(), middle.y()));
        return;
    }
    constexpr double head = 4;
    const QPointF tip(middle.x(), height() - 3);
    painter.setPen(QPen(color, 1.5, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawLine(QPointF(middle.x(), 3), tip);
    painter.drawPolyline(QPolygonF({tip + QPointF(-head, -head), tip, tip + QPointF(head, -head)}));
}

} // namespace ombrel

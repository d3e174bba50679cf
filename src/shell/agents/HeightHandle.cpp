#include "shell/agents/HeightHandle.h"

#include "shell/design/Spacing.h"
#include "shell/design/Theme.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

namespace ombrel {

HeightHandle::HeightHandle(QWidget* target, int height, int least, int most, QWidget* parentWidget)
    : QWidget(parentWidget), m_target(target), m_least(least), m_most(most) {
    setFixedHeight(spacing::medium);
    setCursor(Qt::SizeVerCursor);
    setFocusPolicy(Qt::TabFocus);
    setToolTip(tr("Drag to change the height"));
    setTargetHeight(height);
}

void HeightHandle::setTargetHeight(int height) {
    m_target->setFixedHeight(qBound(m_least, height, m_most));
}

void HeightHandle::mousePressEvent(QMouseEvent* event) {
    m_dragStartHeight = m_target->height();
    m_dragStartY = event->globalPosition().toPoint().y();
}

void HeightHandle::mouseMoveEvent(QMouseEvent* event) {
    setTargetHeight(m_dragStartHeight + event->globalPosition().toPoint().y() - m_dragStartY);
}

void HeightHandle::keyPressEvent(QKeyEvent* event) {
    const int step = m_target->fontMetrics().lineSpacing();
    if (event->key() == Qt::Key_Down) {
        setTargetHeight(m_target->height() + step);
    } else if (event->key() == Qt::Key_Up) {
        setTargetHeight(m_target->height() - step);
    } else {
        QWidget::keyPressEvent(event);
    }
}

void HeightHandle::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const ThemeColors& colors = Theme::current().colors();
    constexpr int length = 36;
    const QRectF grip((width() - length) / 2.0, height() / 2.0 - 1.5, length, 3);
    painter.setPen(Qt::NoPen);
    painter.setBrush(hasFocus() ? colors.focus : colors.strongBorder);
    painter.drawRoundedRect(grip, 1.5, 1.5);
}

} // namespace ombrel

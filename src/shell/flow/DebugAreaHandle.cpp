#include "shell/flow/DebugAreaHandle.h"

#include "shell/design/Theme.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

namespace ombrel {

namespace {
constexpr int handleHeight = 6;
constexpr int step = 24; // of the arrow keys
} // namespace

DebugAreaHandle::DebugAreaHandle(QWidget* parentWidget) : QWidget(parentWidget) {
    setFixedHeight(handleHeight);
    setCursor(Qt::SizeVerCursor);
    setFocusPolicy(Qt::TabFocus);
    setToolTip(tr("Drag to change the height of the debug area"));
    connect(&Theme::current(), &Theme::changed, this, qOverload<>(&QWidget::update));
}

void DebugAreaHandle::paintEvent(QPaintEvent*) {
    const ThemeColors& colors = Theme::current().colors();
    QPainter painter(this);
    painter.fillRect(rect(), colors.window);
    if (hasFocus() || underMouse()) {
        painter.fillRect(QRect(0, 0, width(), 3), hasFocus() ? colors.focus : colors.strongBorder);
    } else {
        painter.fillRect(QRect(0, 0, width(), 1), colors.border);
    }
}

void DebugAreaHandle::enterEvent(QEnterEvent* event) {
    QWidget::enterEvent(event);
    update();
}

void DebugAreaHandle::leaveEvent(QEvent* event) {
    QWidget::leaveEvent(event);
    update();
}

void DebugAreaHandle::mousePressEvent(QMouseEvent* event) {
    m_grip = event->position().toPoint().y();
}

void DebugAreaHandle::mouseMoveEvent(QMouseEvent* event) {
    if (event->buttons().testFlag(Qt::LeftButton)) {
        // It stays below the pointer, as it moves with what it changes.
        Q_EMIT movedUp(m_grip - event->position().toPoint().y());
    }
}

void DebugAreaHandle::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Up) {
        Q_EMIT movedUp(step);
    } else if (event->key() == Qt::Key_Down) {
        Q_EMIT movedUp(-step);
    } else {
        QWidget::keyPressEvent(event);
    }
}

} // namespace ombrel

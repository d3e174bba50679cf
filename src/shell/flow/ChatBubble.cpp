#include "shell/flow/ChatBubble.h"

#include "shell/design/Spacing.h"
#include "shell/design/Theme.h"

#include <QPainter>
#include <QVBoxLayout>

namespace ombrel {

ChatBubble::ChatBubble(QWidget* text, Side side, QWidget* parentWidget)
    : QWidget(parentWidget), m_side(side) {
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(spacing::medium, spacing::small, spacing::medium, spacing::small);
    column->addWidget(text);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Minimum);
    connect(&Theme::current(), &Theme::changed, this, qOverload<>(&QWidget::update));
}

void ChatBubble::paintEvent(QPaintEvent*) {
    const ThemeColors& colors = Theme::current().colors();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const bool isUser = m_side == Side::user;
    painter.setPen(isUser ? QPen(Qt::NoPen) : QPen(colors.border, 1));
    painter.setBrush(isUser ? colors.accentSoft : colors.surface);
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), spacing::cardCorner,
                            spacing::cardCorner);
}

} // namespace ombrel

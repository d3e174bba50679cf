#include "shell/flow/ChatBubble.h"

#include "shell/design/MessageText.h"
#include "shell/design/Spacing.h"
#include "shell/design/Theme.h"

#include <QPainter>
#include <QVBoxLayout>

namespace ombrel {

ChatBubble::ChatBubble(Side side, const QString& textName, QWidget* parentWidget)
    : QWidget(parentWidget), m_text(new MessageText), m_side(side) {
    m_text->setObjectName(textName);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(spacing::medium, spacing::small, spacing::medium, spacing::small);
    column->addWidget(m_text);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Minimum);
    connect(&Theme::current(), &Theme::changed, this, qOverload<>(&QWidget::update));
}

void ChatBubble::setText(const QString& text) {
    m_text->setText(text);
    setMaximumWidth(m_text->widestLine() + 2 * spacing::medium);
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

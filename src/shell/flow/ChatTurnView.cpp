#include "shell/flow/ChatTurnView.h"

#include "shell/QtText.h"
#include "shell/design/Button.h"
#include "shell/design/Icon.h"
#include "shell/design/LongTextView.h"
#include "shell/design/Named.h"
#include "shell/design/Spacing.h"
#include "shell/design/TextLabel.h"
#include "shell/flow/ChatBubble.h"

#include <QHBoxLayout>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

namespace ombrel {

namespace {

constexpr int promptHeight = 220;

// Puts a bubble at its side.
QHBoxLayout* makeLine(ChatBubble* bubble, ChatBubble::Side side) {
    auto* line = new QHBoxLayout;
    line->addWidget(bubble, 4);
    line->insertStretch(side == ChatBubble::Side::user ? 0 : 1, 1);
    return line;
}

} // namespace

ChatTurnView::ChatTurnView(int number, QWidget* parentWidget)
    : QWidget(parentWidget), m_running(new QWidget), m_context(makeButton({}, ButtonKind::plain)) {
    const QString name = QStringLiteral("debug.chat.%1").arg(number);
    m_message = new ChatBubble(ChatBubble::Side::user, name + QStringLiteral(".message"));
    m_reply = new ChatBubble(ChatBubble::Side::flow, name + QStringLiteral(".reply"));
    m_running->setObjectName(name + QStringLiteral(".running"));
    m_context->setObjectName(name + QStringLiteral(".context"));

    auto* running = new QHBoxLayout(m_running);
    running->setContentsMargins(spacing::small, spacing::tight, 0, spacing::tight);
    running->setSpacing(spacing::small);
    auto* bar = named(new QProgressBar, name + QStringLiteral(".progress"), tr("Running"));
    bar->setRange(0, 0);
    bar->setTextVisible(false);
    bar->setFixedWidth(72);
    running->addWidget(bar);
    running->addWidget(
        new TextLabel(tr("Running\u2026"), TextRole::caption, TextLabel::Ink::secondary));
    running->addStretch(1);

    m_context->setCheckable(true);
    m_context->setIconSize({12, 12});
    connect(m_context, &QPushButton::clicked, this, &ChatTurnView::contextToggled);

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(spacing::tight);
    column->addLayout(makeLine(m_message, ChatBubble::Side::user));
    column->addLayout(makeLine(m_reply, ChatBubble::Side::flow));
    column->addWidget(m_running);
    column->addWidget(m_context, 0, Qt::AlignLeft);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Minimum);
}

int ChatTurnView::contextTop() const {
    return m_context->y();
}

void ChatTurnView::show(const ChatTurn& turn, bool isContextOpen) {
    if (m_shown == turn && m_isContextOpen == isContextOpen) {
        return;
    }
    m_shown = turn;
    m_isContextOpen = isContextOpen && turn.context;
    m_message->setText(toQt(turn.message));
    m_reply->setText(turn.reply ? toQt(*turn.reply) : QString());
    m_reply->setVisible(turn.reply.has_value());
    m_running->setVisible(turn.isRunning);
    m_context->setVisible(turn.context.has_value());
    if (turn.context) {
        m_context->setText(toQt(turn.context->label));
        m_context->setAccessibleName(m_context->text());
    }
    m_context->setIcon(themeIcon(m_isContextOpen ? QStringLiteral("chevron-down")
                                                 : QStringLiteral("chevron-right"),
                                 Tone::accent));
    m_context->setChecked(m_isContextOpen);
    if (m_isContextOpen && !m_prompt) {
        m_prompt = named(new LongTextView, m_context->objectName() + QStringLiteral(".prompt"),
                         tr("The prompt"));
        m_prompt->setFixedHeight(promptHeight);
        layout()->addWidget(m_prompt);
        m_prompt->show(); // at once, so that it has a place
    } else if (!m_isContextOpen && m_prompt) {
        m_prompt->hide();
        m_prompt->setObjectName({});
        m_prompt->deleteLater();
        m_prompt = nullptr;
    }
    if (m_prompt) {
        m_prompt->setText(toQt(turn.context->prompt));
    }
}

} // namespace ombrel

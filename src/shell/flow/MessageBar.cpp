#include "shell/flow/MessageBar.h"

#include "flows/Conversation.h"
#include "shell/QtText.h"
#include "shell/design/Button.h"
#include "shell/design/Named.h"
#include "shell/design/Spacing.h"
#include "shell/design/TextField.h"
#include "shell/design/TextLabel.h"

#include <QHBoxLayout>

#include <utility>

namespace ombrel {

MessageBar::MessageBar(std::shared_ptr<AppState> shownState, Uuid flowID, QWidget* parent)
    : StateView(std::move(shownState), parent), m_flowID(flowID),
      m_draft(named(new TextField(tr("Message")), QStringLiteral("debug.message"), tr("Message"))),
      m_promptSize(new TextLabel({}, TextRole::caption, TextLabel::Ink::secondary)),
      m_send(named(makeButton(tr("Send"), ButtonKind::primary), QStringLiteral("debug.send"),
                   tr("Send"))) {
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(spacing::small);
    row->addWidget(m_draft, 1);
    row->addWidget(m_promptSize);
    row->addWidget(m_send);
    m_promptSize->setObjectName(QStringLiteral("debug.promptSize"));
    m_promptSize->setToolTip(toQt(promptSizeHelp));
    connect(m_draft, &QLineEdit::textChanged, this, &MessageBar::refresh);
    connect(m_draft, &QLineEdit::returnPressed, this, &MessageBar::send);
    connect(m_send, &QPushButton::clicked, this, &MessageBar::send);
    watch(state().flows);
    watch(state().agents);
    watch(state().tools);
    watch(state().isRunningFlow);
    watch(state().lastFlowRunOutcome);
}

void MessageBar::refresh() {
    m_send->setEnabled(canSend(state(), m_flowID, fromQt(m_draft->text())));
    m_send->setToolTip(toQt(sendHelp(state(), m_flowID)));
    const auto size = promptSizeText(state());
    m_promptSize->setText(size ? toQt(*size) : QString());
    m_promptSize->setVisible(size.has_value());
}

void MessageBar::send() {
    const QString draft = m_draft->text();
    if (canSend(state(), m_flowID, fromQt(draft))) {
        m_draft->clear();
        Q_EMIT sent(draft);
    }
}

} // namespace ombrel

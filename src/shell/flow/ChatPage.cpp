#include "shell/flow/ChatPage.h"

#include "flows/Conversation.h"
#include "shell/QtText.h"
#include "shell/design/EmptyState.h"
#include "shell/design/Spacing.h"
#include "shell/flow/ChatTurnView.h"

#include <QScrollArea>
#include <QScrollBar>
#include <QStackedLayout>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace ombrel {

ChatPage::ChatPage(std::shared_ptr<AppState> shownState, Uuid flowID, QWidget* parent)
    : StateView(std::move(shownState), parent), m_flowID(flowID), m_area(new QScrollArea),
      m_column(nullptr), m_stack(new QStackedLayout(this)) {
    auto* empty = new EmptyState(QStringLiteral("question"), toQt(noMessagesText));
    empty->setObjectName(QStringLiteral("debug.chat.empty"));
    m_area->setObjectName(QStringLiteral("debug.chat"));
    m_area->setAccessibleName(tr("Chat"));
    m_area->setWidgetResizable(true);
    m_area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    auto* page = new QWidget;
    page->setProperty("page", "true");
    page->setMinimumHeight(1); // it is as high as its texts are at the width that there is
    m_column = new QVBoxLayout(page);
    m_column->setContentsMargins(spacing::large, spacing::medium, spacing::large, spacing::medium);
    m_column->setSpacing(spacing::medium);
    m_column->addStretch(1);
    m_area->setWidget(page);
    m_stack->addWidget(empty);
    m_stack->addWidget(m_area);
    QScrollBar* const bar = m_area->verticalScrollBar();
    connect(bar, &QScrollBar::rangeChanged, this, [this, bar] {
        if (m_follows) {
            bar->setValue(bar->maximum());
        }
    });
    connect(bar, &QScrollBar::valueChanged, this,
            [this, bar](int value) { m_follows = value >= bar->maximum(); });
    watch(state().conversationMessages);
    watch(state().lastFlowRunOutcome);
    watch(state().isRunningFlow);
}

void ChatPage::refresh() {
    const auto turns = chatTurns(state(), m_flowID);
    m_stack->setCurrentIndex(turns.empty() ? 0 : 1);
    if (m_turns.size() < turns.size()) {
        m_follows = true; // to what was just said
    }
    while (m_turns.size() > turns.size()) {
        m_turns.back()->hide();
        m_turns.back()->deleteLater();
        m_turns.pop_back();
    }
    if (m_expandedContextTurn && *m_expandedContextTurn >= turns.size()) {
        m_expandedContextTurn.reset();
    }
    for (std::size_t i = 0; i < turns.size(); ++i) {
        if (i == m_turns.size()) {
            auto* turn = new ChatTurnView(static_cast<int>(i));
            connect(turn, &ChatTurnView::contextToggled, this, [this, i](bool open) {
                m_expandedContextTurn = open ? std::optional(i) : std::nullopt;
                m_follows = false; // what the user looks at stays
                refresh();
                if (open) {
                    showPrompt(*m_turns[i]);
                }
            });
            m_column->insertWidget(m_column->count() - 1, turn);
            m_turns.push_back(turn);
        }
        m_turns[i]->show(turns[i], m_expandedContextTurn == i);
    }
}

void ChatPage::showPrompt(const ChatTurnView& turn) {
    // It has no place before all is laid out.
    for (const ChatTurnView* each : m_turns) {
        each->layout()->activate();
    }
    QWidget* const page = m_area->widget();
    m_column->activate();
    page->resize(page->width(),
                 std::max(m_area->viewport()->height(), page->heightForWidth(page->width())));
    m_area->ensureVisible(0, turn.geometry().bottom(), 0, spacing::small);
    m_area->ensureVisible(0, turn.y() + turn.contextTop(), 0, spacing::tight);
}

} // namespace ombrel

#include "shell/flow/FlowDebugArea.h"

#include "flows/Conversation.h"
#include "flows/FlowRun.h"
#include "shell/QtText.h"
#include "shell/StudioServices.h"
#include "shell/design/Badge.h"
#include "shell/design/Button.h"
#include "shell/design/ElidedLabel.h"
#include "shell/design/Icon.h"
#include "shell/design/LongText.h"
#include "shell/design/Named.h"
#include "shell/design/SegmentedControl.h"
#include "shell/design/Spacing.h"
#include "shell/flow/ChatPage.h"
#include "shell/flow/ConsolePage.h"
#include "shell/flow/DebugAreaHandle.h"
#include "shell/flow/IssuesPage.h"
#include "shell/flow/MessageBar.h"
#include "shell/flow/StartInputForm.h"
#include "shell/flow/TracePage.h"

#include <QHBoxLayout>
#include <QShortcut>
#include <QStackedWidget>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>
#include <array>
#include <utility>

namespace ombrel {

namespace {

using Tab = FlowDebugTabs::Tab;

constexpr std::array allTabs{Tab::chat, Tab::trace, Tab::console, Tab::issues};
constexpr int usualHeight = 260;
constexpr int leastHeight = 120;
constexpr int canvasHeight = 220; // that stays for what is above
constexpr int inputWidth = 260;
constexpr int mostPhase = 60; // characters of the badge

QString nameOf(Tab tab) {
    return toQt(FlowDebugTabs::title(tab)).toLower();
}

FlowKind kindOf(const AppState& state, Uuid flowID) {
    const Flow* flow = state.flow(flowID);
    return flow ? flow->kind : FlowKind::singleShot;
}

} // namespace

FlowDebugArea::FlowDebugArea(std::shared_ptr<AppState> shownState, StudioServices& services,
                             Uuid flowID, QWidget* parent)
    : StateView(std::move(shownState), parent), m_services(services), m_flowID(flowID),
      m_tabs(kindOf(state(), flowID)), m_wasRunning(*state().isRunningFlow),
      m_isExpanded(services.settings().flowDebugAreaExpanded()),
      m_height(static_cast<int>(std::clamp(services.settings().flowDebugAreaHeight(), 0.0, 1e5))),
      m_handle(named(new DebugAreaHandle, QStringLiteral("debug.handle"),
                     tr("Height of the debug area"))),
      m_bar(new QFrame), m_toggle(makeIconButton(QStringLiteral("chevron-right"), {})),
      m_segments(new SegmentedControl(SegmentedControl::Look::tabs)),
      m_status(new ElidedLabel({}, TextRole::caption, TextLabel::Ink::secondary)),
      m_phase(new Badge({}, Tone::accent)), m_outcome(new Badge),
      m_run(named(makeButton(tr("Run"), ButtonKind::primary), QStringLiteral("debug.run"),
                  tr("Run"))),
      m_runKey(new QShortcut(QKeySequence(static_cast<int>(Qt::CTRL) | Qt::Key_Return), this)),
      m_clear(
          named(makeButton(tr("Clear Chat")), QStringLiteral("debug.clearChat"), tr("Clear Chat"))),
      m_message(new MessageBar(sharedState(), flowID)), m_body(new QWidget),
      m_input(new StartInputForm(sharedState(), flowID)), m_pages(new QStackedWidget),
      m_chat(new ChatPage(sharedState(), flowID)), m_trace(new TracePage(sharedState(), flowID)),
      m_console(new ConsolePage(sharedState())), m_issues(new IssuesPage(sharedState(), flowID)) {
    named(this, QStringLiteral("debug"), tr("Debug area"));
    if (m_height == 0) {
        m_height = usualHeight;
    }
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(m_handle);
    column->addWidget(m_bar);
    fillBar();
    fillBody();
    column->addWidget(m_body, 1);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Preferred);

    connect(m_handle, &DebugAreaHandle::movedUp, this, &FlowDebugArea::resizeBy);
    connect(m_toggle, &QToolButton::clicked, this, [this] { setExpanded(!m_isExpanded); });
    connect(m_segments, &SegmentedControl::chosen, this, [this](int index) {
        setExpanded(true);
        selectTab(allTabs[static_cast<std::size_t>(index)]);
    });
    connect(m_run, &QPushButton::clicked, this, &FlowDebugArea::run);
    connect(m_clear, &QPushButton::clicked, this, [this] { clearConversation(state(), m_flowID); });
    connect(m_message, &MessageBar::sent, this, &FlowDebugArea::send);
    connect(m_trace, &TracePage::nodeChosen, this, &FlowDebugArea::nodeChosen);
    connect(m_issues, &IssuesPage::nodeChosen, this, &FlowDebugArea::nodeChosen);
    m_runKey->setObjectName(QStringLiteral("debug.runKey"));
    connect(m_runKey, &QShortcut::activated, m_run, &QPushButton::click);

    m_running = state().isRunningFlow.observe([this] { followRun(); });
    watch(state().flows);
    watch(state().agents);
    watch(state().tools);
    watch(state().isRunningFlow);
    watch(state().lastFlowRunOutcome);
    watch(state().flowRunPhase);
    watch(state().conversationMessages);
    showTab();
    showExpanded();
}

void FlowDebugArea::fillBar() {
    m_bar->setProperty("bar", "true");
    auto* lines = new QVBoxLayout(m_bar);
    lines->setContentsMargins(spacing::small, 0, spacing::medium, spacing::tight + 2);
    lines->setSpacing(spacing::tight + 2);
    auto* row = new QHBoxLayout;
    row->setSpacing(spacing::small);
    m_toggle->setObjectName(QStringLiteral("debug.toggle"));
    row->addWidget(m_toggle);
    m_segments->setObjectName(QStringLiteral("debug.tabs"));
    m_segments->setAccessibleName(tr("Tabs of the debug area"));
    for (const Tab tab : allTabs) {
        m_segments->add(nameOf(tab), toQt(FlowDebugTabs::title(tab)));
    }
    row->addWidget(m_segments);
    m_outcome->setObjectName(QStringLiteral("debug.outcome"));
    m_phase->setObjectName(QStringLiteral("debug.phase"));
    m_status->setObjectName(QStringLiteral("debug.status"));
    row->addWidget(m_outcome);
    row->addWidget(m_phase);
    row->addWidget(m_status, 1);
    row->addStretch(0);
    m_run->setIcon(onAccentIcon(QStringLiteral("play")));
    row->addWidget(m_run);
    row->addWidget(m_clear);
    lines->addLayout(row);
    lines->addWidget(m_message);
}

void FlowDebugArea::fillBody() {
    auto* row = new QHBoxLayout(m_body);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(0);
    m_input->setFixedWidth(inputWidth);
    row->addWidget(m_input);
    m_divider = new QFrame;
    m_divider->setProperty("rule", "vertical");
    row->addWidget(m_divider);
    for (QWidget* page : {static_cast<QWidget*>(m_chat), static_cast<QWidget*>(m_trace),
                          static_cast<QWidget*>(m_console), static_cast<QWidget*>(m_issues)}) {
        m_pages->addWidget(page);
    }
    m_body->setMinimumHeight(leastHeight);
    m_pages->setMinimumHeight(1); // what they hold is cut, or scrolls
    m_input->setMinimumHeight(1);
    row->addWidget(m_pages, 1);
}

void FlowDebugArea::refresh() {
    const Flow* flow = state().flow(m_flowID);
    if (!flow) {
        return;
    }
    const bool isChat = flow->kind == FlowKind::conversational;
    m_tabs.kindIs(flow->kind);
    m_segments->button(0)->setVisible(isChat);
    showTab();
    m_run->setVisible(!isChat);
    m_runKey->setEnabled(!isChat);
    m_run->setEnabled(canStartRun(state(), m_flowID));
    m_run->setToolTip(toQt(runHelp(state(), m_flowID)));
    m_message->setVisible(isChat);
    m_clear->setVisible(isChat);
    m_clear->setEnabled(!*state().isRunningFlow && !chatMessages(state(), m_flowID).empty());
    const bool hasInput = !isChat && !flow->startInput.empty();
    m_input->setVisible(hasInput);
    m_divider->setVisible(hasInput);

    const bool isRunning = *state().isRunningFlow;
    const QString status = toQt(runStatus(state()));
    m_status->setText(isRunning ? status : QString());
    m_outcome->setText(isRunning ? QString() : status);
    m_outcome->setVisible(!isRunning && !status.isEmpty());
    const auto& outcome = *state().lastFlowRunOutcome;
    const bool hasFailed = outcome && outcome->errorMessage;
    m_outcome->setTone(hasFailed ? Tone::danger : Tone::success);
    m_outcome->setToolTip(hasFailed ? toolTipText(toQt(*outcome->errorMessage)) : QString());
    const auto& phase = *state().flowRunPhase;
    m_phase->setVisible(isRunning && phase);
    if (phase) {
        const QString text = toQt(*phase);
        m_phase->setText(
            text.size() > mostPhase ? text.left(mostPhase - 1) + QStringLiteral("\u2026") : text);
        m_phase->setToolTip(toolTipText(text));
    }
}

// Tabs.

void FlowDebugArea::selectTab(Tab tab) {
    m_tabs.selected = tab;
    m_tabs.kindIs(kindOf(state(), m_flowID));
    showTab();
}

void FlowDebugArea::showTab() {
    const auto place =
        static_cast<int>(std::ranges::find(allTabs, m_tabs.selected) - allTabs.begin());
    m_segments->setCurrentIndex(place);
    m_pages->setCurrentIndex(place);
}

void FlowDebugArea::followRun() {
    const bool isRunning = *state().isRunningFlow;
    if (isRunning == m_wasRunning) {
        return;
    }
    m_wasRunning = isRunning;
    if (isRunning) {
        m_tabs.runBegan();
    } else {
        m_tabs.runEnded(*state().lastFlowRunOutcome);
    }
    showTab();
}

// Runs.

void FlowDebugArea::run() {
    setExpanded(true);
    m_services.spawnRun(runFlow(sharedState(), m_flowID, m_services.toolChain()));
}

void FlowDebugArea::send(const QString& message) {
    setExpanded(true);
    m_services.spawnRun(
        sendFlowMessage(sharedState(), m_flowID, fromQt(message), m_services.toolChain()));
}

// Its height.

void FlowDebugArea::setExpanded(bool expanded) {
    if (m_isExpanded != expanded) {
        m_isExpanded = expanded;
        m_services.settings().setFlowDebugAreaExpanded(expanded);
        showExpanded();
    }
}

void FlowDebugArea::showExpanded() {
    m_body->setVisible(m_isExpanded);
    m_handle->setEnabled(m_isExpanded);
    const QString what = m_isExpanded ? tr("Hide the debug area") : tr("Show the debug area");
    m_toggle->setIcon(
        themeIcon(m_isExpanded ? QStringLiteral("chevron-down") : QStringLiteral("chevron-right")));
    m_toggle->setToolTip(what);
    m_toggle->setAccessibleName(what);
    setMaximumHeight(m_isExpanded ? QWIDGETSIZE_MAX : layout()->sizeHint().height());
    updateGeometry();
}

QSize FlowDebugArea::sizeHint() const {
    return {StateView::sizeHint().width(),
            m_handle->height() + m_bar->sizeHint().height() + (m_isExpanded ? m_height : 0)};
}

QSize FlowDebugArea::minimumSizeHint() const {
    return {0, layout()->minimumSize().height()};
}

void FlowDebugArea::resizeBy(int pixels) {
    const QWidget* above = parentWidget();
    const int most = above ? std::max(leastHeight, above->height() - canvasHeight) : m_height;
    m_height = std::clamp(m_body->height() + pixels, leastHeight, most);
    m_services.settings().setFlowDebugAreaHeight(m_height);
    updateGeometry();
}

} // namespace ombrel

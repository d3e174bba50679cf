#include "shell/flow/TracePage.h"

#include "flows/FlowDebugTabs.h"
#include "flows/FlowEditorTexts.h"
#include "shell/QtText.h"
#include "shell/design/Banner.h"
#include "shell/design/Button.h"
#include "shell/design/ElidedLabel.h"
#include "shell/design/EmptyState.h"
#include "shell/design/LongTextView.h"
#include "shell/design/Named.h"
#include "shell/design/Spacing.h"
#include "shell/design/Theme.h"
#include "shell/flow/ResultView.h"
#include "shell/flow/TraceDelegate.h"
#include "shell/flow/TraceModel.h"

#include <QHBoxLayout>
#include <QListView>
#include <QSplitter>
#include <QStackedWidget>
#include <QToolButton>
#include <QVBoxLayout>

#include <utility>

namespace ombrel {

TracePage::TracePage(std::shared_ptr<AppState> shownState, Uuid flowID, QWidget* parent)
    : StateView(std::move(shownState), parent), m_flowID(flowID), m_stack(new QStackedWidget),
      m_note(new EmptyState(QStringLiteral("play"), {})), m_problem(new Banner(Tone::danger)),
      m_result(new ResultView), m_model(new TraceModel(this)),
      m_list(named(new QListView, QStringLiteral("debug.trace"), tr("Trace"))),
      m_detailTitle(new ElidedLabel({}, TextRole::strong)),
      m_detailText(named(new LongTextView, QStringLiteral("debug.trace.detail"), tr("Detail"))),
      m_detail(makeDetail()) {
    m_problem->setObjectName(QStringLiteral("debug.trace.problem"));
    m_note->setObjectName(QStringLiteral("debug.trace.note"));
    m_list->setItemDelegate(new TraceDelegate(*m_model, m_list));
    m_list->setModel(m_model);
    m_list->setUniformItemSizes(true);
    m_list->setMouseTracking(true);
    m_list->setEditTriggers(QListView::NoEditTriggers);
    m_list->setVerticalScrollMode(QListView::ScrollPerPixel);
    m_list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);

    auto* steps = new QSplitter(Qt::Horizontal);
    steps->setChildrenCollapsible(false);
    steps->setHandleWidth(1);
    steps->addWidget(m_list);
    steps->addWidget(m_detail);
    steps->setStretchFactor(0, 3);
    steps->setStretchFactor(1, 2);
    auto* outcome = new QWidget;
    auto* column = new QVBoxLayout(outcome);
    column->setContentsMargins(spacing::small, spacing::small, spacing::small, spacing::small);
    column->setSpacing(spacing::small);
    column->addWidget(m_problem);
    column->addWidget(steps, 1);
    column->addWidget(m_result);
    m_stack->addWidget(m_note);
    m_stack->addWidget(outcome);
    auto* whole = new QVBoxLayout(this);
    whole->setContentsMargins(0, 0, 0, 0);
    whole->addWidget(m_stack);

    connect(m_list, &QListView::clicked, this, &TracePage::choose);
    connect(m_list, &QListView::activated, this, &TracePage::choose);
    connect(m_list->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            [this](const QModelIndex& current) { showDetail(current.row()); });
    connect(&Theme::current(), &Theme::changed, m_list, [this] { m_list->viewport()->update(); });
    watch(state().isRunningFlow);
    watch(state().lastFlowRunOutcome);
}

QWidget* TracePage::makeDetail() {
    auto* detail = new QWidget;
    auto* column = new QVBoxLayout(detail);
    column->setContentsMargins(spacing::medium, 0, 0, 0);
    column->setSpacing(spacing::tight);
    auto* head = new QHBoxLayout;
    head->addWidget(m_detailTitle, 1);
    auto* close = named(makeIconButton(QStringLiteral("x"), tr("Close the detail")),
                        QStringLiteral("debug.trace.closeDetail"), tr("Close the detail"));
    connect(close, &QToolButton::clicked, this, [this] { showDetail(-1); });
    head->addWidget(close);
    column->addLayout(head);
    column->addWidget(m_detailText, 1);
    detail->setMinimumWidth(200);
    detail->hide();
    return detail;
}

void TracePage::refresh() {
    const std::string note = traceNote(state());
    m_stack->setCurrentIndex(note.empty() ? 1 : 0);
    if (!note.empty()) {
        m_note->setIcon(*state().isRunningFlow ? QStringLiteral("clock") : QStringLiteral("play"));
        m_note->setTexts(*state().isRunningFlow ? QString() : toQt(noRunText), toQt(note));
        return;
    }
    const auto& outcome = *state().lastFlowRunOutcome;
    if (m_shown != outcome) {
        m_shown = outcome;
        showOutcome(*outcome);
    }
}

void TracePage::showOutcome(const FlowRunOutcome& outcome) {
    m_problem->showOrHide(outcome.errorMessage ? toQt(*outcome.errorMessage) : QString());
    m_model->show(outcome.trace);
    showDetail(-1);
    m_list->setVisible(!outcome.trace.empty());
    m_result->setVisible(outcome.resultLine.has_value());
    if (outcome.resultLine) {
        m_result->setResult(toQt(shownResult(*outcome.resultLine)));
    }
}

void TracePage::showDetail(int row) {
    m_detail->setVisible(row >= 0);
    if (row < 0) {
        m_detailText->setText({});
        return;
    }
    const FlowTraceEvent& event = m_model->event(row);
    m_detailTitle->setText(toQt(event.node ? event.kind + " \u00b7 " + *event.node : event.kind));
    m_detailText->setText(toQt(event.detail));
}

void TracePage::choose(const QModelIndex& index) {
    showDetail(index.row());
    const Flow* flow = state().flow(m_flowID);
    const auto& node = m_model->event(index.row()).node;
    if (!flow || !node) {
        return;
    }
    if (const auto nodeID = nodeTitled(*flow, *node, *state().agents, *state().tools)) {
        Q_EMIT nodeChosen(*nodeID);
    }
}

} // namespace ombrel

#include "shell/flow/IssuesPage.h"

#include "flows/FlowDebugTabs.h"
#include "flows/FlowEditorTexts.h"
#include "flows/FlowValidator.h"
#include "shell/QtText.h"
#include "shell/TwoLineDelegate.h"
#include "shell/design/EmptyState.h"
#include "shell/design/Icon.h"
#include "shell/design/LongText.h"
#include "shell/design/Named.h"

#include <QListView>
#include <QStackedLayout>
#include <QStandardItemModel>

#include <algorithm>
#include <utility>

namespace ombrel {

namespace {

bool tellTheSame(const FlowIssue& left, const FlowIssue& right) {
    return left.severity == right.severity && left.message == right.message &&
           left.nodeID == right.nodeID;
}

} // namespace

IssuesPage::IssuesPage(std::shared_ptr<AppState> shownState, Uuid flowID, QWidget* parent)
    : StateView(std::move(shownState), parent), m_flowID(flowID),
      m_model(new QStandardItemModel(this)),
      m_list(named(new QListView, QStringLiteral("debug.issues"), tr("Issues"))),
      m_stack(new QStackedLayout(this)) {
    m_list->setItemDelegate(new TwoLineDelegate(m_list));
    m_list->setModel(m_model);
    m_list->setUniformItemSizes(true);
    m_list->setEditTriggers(QListView::NoEditTriggers);
    m_list->setVerticalScrollMode(QListView::ScrollPerPixel);
    m_list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff); // long messages are cut
    m_stack->addWidget(new EmptyState(QStringLiteral("check-circle"), toQt(noIssuesText)));
    m_stack->addWidget(m_list);
    connect(m_list, &QListView::clicked, this,
            [this](const QModelIndex& index) { choose(index.row()); });
    connect(m_list, &QListView::activated, this,
            [this](const QModelIndex& index) { choose(index.row()); });
    watch(state().flows);
    watch(state().agents);
    watch(state().tools);
}

void IssuesPage::refresh() {
    const Flow* flow = state().flow(m_flowID);
    if (!flow) {
        return;
    }
    auto issues = flowIssues(state(), m_flowID);
    if (!std::ranges::equal(issues, m_issues, tellTheSame)) {
        m_model->clear();
        for (const FlowIssue& issue : issues) {
            const bool isError = issue.severity == FlowIssue::Severity::error;
            auto* item = new QStandardItem(
                themeIcon(QStringLiteral("alert"), isError ? Tone::danger : Tone::warning),
                toQt(issue.message));
            item->setToolTip(toolTipText(toQt(issue.message)));
            item->setAccessibleText(
                (isError ? tr("Error: %1") : tr("Warning: %1")).arg(toQt(issue.message)));
            m_model->appendRow(item);
        }
        m_issues = std::move(issues);
        m_stack->setCurrentIndex(m_issues.empty() ? 0 : 1);
    }
    for (std::size_t i = 0; i < m_issues.size(); ++i) {
        const auto& nodeID = m_issues[i].nodeID;
        QStandardItem* const item = m_model->item(static_cast<int>(i));
        const QString about =
            nodeID ? toQt(nodeTitle(*flow, *nodeID, *state().agents, *state().tools)) : tr("Flow");
        if (item->data(Qt::UserRole).toString() != about) {
            item->setData(about, Qt::UserRole);
        }
    }
}

void IssuesPage::choose(int row) {
    if (const auto& nodeID = m_issues[static_cast<std::size_t>(row)].nodeID) {
        Q_EMIT nodeChosen(*nodeID);
    }
}

} // namespace ombrel

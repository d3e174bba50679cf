#include "shell/flow/FlowInspector.h"

#include "core/FindByID.h"
#include "shell/design/Named.h"
#include "shell/flow/EdgePage.h"
#include "shell/flow/FlowPage.h"
#include "shell/flow/NodePage.h"

#include <QHBoxLayout>
#include <QScrollArea>
#include <QStackedWidget>

#include <utility>

namespace ombrel {

namespace {

QWidget* scrolling(QWidget* page) {
    auto* area = new QScrollArea;
    area->setWidgetResizable(true);
    area->setFocusPolicy(Qt::NoFocus);
    area->setWidget(page);
    return area;
}

} // namespace

FlowInspector::FlowInspector(std::shared_ptr<AppState> shownState, Uuid flowID, QWidget* parent)
    : StateView(std::move(shownState), parent), m_flowID(flowID), m_pages(new QStackedWidget),
      m_flow(new FlowPage(sharedState(), flowID)), m_node(new NodePage(sharedState(), flowID)),
      m_edge(new EdgePage(sharedState(), flowID)) {
    named(this, QStringLiteral("inspector"), tr("Inspector"));
    for (QWidget* page : {static_cast<QWidget*>(m_flow), static_cast<QWidget*>(m_node),
                          static_cast<QWidget*>(m_edge)}) {
        m_pages->addWidget(scrolling(page));
    }
    auto* whole = new QHBoxLayout(this);
    whole->setContentsMargins(0, 0, 0, 0);
    whole->addWidget(m_pages);
    setMinimumWidth(280);
    connect(m_node, &NodePage::shown, this, &FlowInspector::shown);
    watch(state().flows);
    watch(state().agents);
    watch(state().tools);
    watch(state().canvasSelection);
}

void FlowInspector::takeFocus() {
    const QWidget* page = m_pages->currentWidget();
    for (QWidget* next = nextInFocusChain(); next != this; next = next->nextInFocusChain()) {
        if (page->isAncestorOf(next) && next->isVisible() && next->isEnabled() &&
            next->focusPolicy() != Qt::NoFocus) {
            next->setFocus(Qt::TabFocusReason);
            return;
        }
    }
}

void FlowInspector::refresh() {
    const Flow* flow = state().flow(m_flowID);
    if (!flow) {
        return;
    }
    const auto& selection = *state().canvasSelection;
    const auto* chosenNode =
        selection ? std::get_if<CanvasSelection::Node>(&selection->value) : nullptr;
    const auto* chosenEdge =
        selection ? std::get_if<CanvasSelection::Edge>(&selection->value) : nullptr;
    const FlowNode* node = chosenNode ? flow->node(chosenNode->id) : nullptr;
    const FlowEdge* edge = chosenEdge ? findByID(flow->edges, chosenEdge->id) : nullptr;
    if (node) {
        m_node->showNode(*flow, *node);
        m_pages->setCurrentIndex(1);
    } else if (edge) {
        m_edge->showEdge(*flow, *edge);
        m_pages->setCurrentIndex(2);
    } else {
        m_flow->showFlow(*flow);
        m_pages->setCurrentIndex(0);
    }
}

} // namespace ombrel

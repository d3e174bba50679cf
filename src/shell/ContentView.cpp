#include "shell/ContentView.h"

#include "shell/NavigatorView.h"
#include "shell/RagView.h"
#include "shell/StudioServices.h"
#include "shell/agents/AgentBuilderView.h"
#include "shell/agents/ToolEditorView.h"
#include "shell/design/EmptyState.h"
#include "shell/flow/FlowEditor.h"

#include <QHBoxLayout>
#include <QSplitter>
#include <QStackedWidget>

#include <utility>

namespace ombrel {

namespace {

// The kind of what is selected when it no longer exists; nothing when it does.
QString missingKind(const AppState& state) {
    using Selection = NavigatorSelection;
    const auto& shown = state.selectedNavigatorItem().value;
    if (const auto* agent = std::get_if<Selection::Agent>(&shown)) {
        return state.agent(agent->id) ? QString() : ContentView::tr("Agent");
    }
    if (const auto* tool = std::get_if<Selection::Tool>(&shown)) {
        return state.tool(tool->id) ? QString() : ContentView::tr("Tool");
    }
    if (const auto* flow = std::get_if<Selection::Flow>(&shown)) {
        return state.flow(flow->id) ? QString() : ContentView::tr("Flow");
    }
    const auto* rag = std::get_if<Selection::Rag>(&shown);
    return rag && state.ragIndex(rag->id) ? QString() : ContentView::tr("RAG");
}

} // namespace

ContentView::ContentView(std::shared_ptr<AppState> shownState, StudioServices& services,
                         QWidget* parent)
    : StateView(std::move(shownState), parent), m_services(services),
      m_navigator(new NavigatorView(sharedState(), services)), m_detail(new QStackedWidget),
      m_rag(new RagView(sharedState(), services)),
      m_notFound(new EmptyState(QStringLiteral("question"), {})) {
    setObjectName(QStringLiteral("content"));
    m_notFound->setObjectName(QStringLiteral("notFound"));
    m_detail->addWidget(m_rag);
    m_detail->addWidget(m_notFound);
    auto* splitter = new QSplitter(Qt::Horizontal);
    splitter->setObjectName(QStringLiteral("content.splitter"));
    splitter->setChildrenCollapsible(false);
    splitter->setHandleWidth(1);
    splitter->addWidget(m_navigator);
    splitter->addWidget(m_detail);
    splitter->setStretchFactor(0, 0);
    splitter->setStretchFactor(1, 1);
    splitter->setSizes({256, 1064});
    auto* whole = new QHBoxLayout(this);
    whole->setContentsMargins(0, 0, 0, 0);
    whole->addWidget(splitter);
    watchNavigatorItem();
    watchIndex();
    watch(state().agents);
    watch(state().tools);
    watch(state().flows);
}

void ContentView::refresh() {
    if (const QString missing = missingKind(state()); !missing.isEmpty()) {
        m_notFound->setTexts(tr("%1 Not Found").arg(missing),
                             tr("This %1 may have been deleted.").arg(missing.toLower()));
        m_detail->setCurrentWidget(m_notFound);
    } else if (const auto* flow =
                   std::get_if<NavigatorSelection::Flow>(&state().selectedNavigatorItem().value)) {
        showFlow(flow->id);
    } else if (const auto* agent =
                   std::get_if<NavigatorSelection::Agent>(&state().selectedNavigatorItem().value)) {
        showEditor(m_agent, agent->id);
    } else if (const auto* tool =
                   std::get_if<NavigatorSelection::Tool>(&state().selectedNavigatorItem().value)) {
        showEditor(m_tool, tool->id);
    } else {
        m_detail->setCurrentWidget(m_rag);
    }
}

// An editor is for one agent, tool or flow, so that what it remembers is of that one.
template <class Editor>
void ContentView::showEditor(Editor*& editor, Uuid id) {
    if (!editor || editor->id() != id) {
        delete editor;
        editor = new Editor(sharedState(), id);
        m_detail->addWidget(editor);
    }
    m_detail->setCurrentWidget(editor);
}

void ContentView::showFlow(Uuid id) {
    if (!m_flow || m_flow->flowID() != id) {
        delete m_flow;
        m_flow = new FlowEditor(sharedState(), m_services, id);
        m_detail->addWidget(m_flow);
    }
    m_detail->setCurrentWidget(m_flow);
}

} // namespace ombrel

#pragma once

#include "shell/StateView.h"

class QStackedWidget;

namespace ombrel {

class AgentBuilderView;
class EmptyState;
class FlowEditor;
class NavigatorView;
class RagView;
class StudioServices;
class ToolEditorView;

// The content of a document window: the navigator, and beside it what is selected in it.
class ContentView final : public StateView {
    Q_OBJECT

  public:
    ContentView(std::shared_ptr<AppState> state, StudioServices& services,
                QWidget* parent = nullptr);
    NavigatorView* navigator() const { return m_navigator; }

  protected:
    void refresh() override;

  private:
    void showFlow(Uuid id);
    template <class Editor>
    void showEditor(Editor*& editor, Uuid id);

    StudioServices& m_services;
    NavigatorView* m_navigator;
    QStackedWidget* m_detail;
    RagView* m_rag;
    EmptyState* m_notFound;
    AgentBuilderView* m_agent = nullptr; // of the agent that was shown last
    ToolEditorView* m_tool = nullptr;    // of the tool
    FlowEditor* m_flow = nullptr;        // of the flow
};

} // namespace ombrel

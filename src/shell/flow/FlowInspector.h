#pragma once

#include "shell/StateView.h"

class QStackedWidget;

namespace ombrel {

class EdgePage;
class FlowPage;
class NodePage;

// Beside the canvas: what is selected on it, or else the flow.
class FlowInspector final : public StateView {
    Q_OBJECT

  public:
    FlowInspector(std::shared_ptr<AppState> state, Uuid flowID, QWidget* parent = nullptr);

    // Gives the keyboard to its first field.
    void takeFocus();

  Q_SIGNALS:
    // The user wants to edit the agent or tool of a node.
    void shown(const ombrel::FlowNodeKind& kind);

  protected:
    void refresh() override;

  private:
    Uuid m_flowID;
    QStackedWidget* m_pages;
    FlowPage* m_flow;
    NodePage* m_node;
    EdgePage* m_edge;
};

} // namespace ombrel

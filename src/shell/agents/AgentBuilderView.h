#pragma once

#include "core/Record.h"
#include "shell/agents/AgentPart.h"

#include <array>

class QScrollArea;
class QVBoxLayout;

namespace ombrel {

class AgentDiagramView;
class SegmentedControl;
class TextField;
class TextLabel;

enum class AgentBuilderTab { properties, playground, evaluation };

constexpr auto rawValues(AgentBuilderTab) {
    using enum AgentBuilderTab;
    return std::array{RawValue<AgentBuilderTab>{properties, "Properties"},
                      RawValue<AgentBuilderTab>{playground, "Playground"},
                      RawValue<AgentBuilderTab>{evaluation, "Evaluation"}};
}

// Where one agent is edited, tried and evaluated. The object names begin with "agent.".
class AgentBuilderView final : public AgentPart {
    Q_OBJECT

  public:
    AgentBuilderView(std::shared_ptr<AppState> state, Uuid agentID, QWidget* parent = nullptr);
    // The agent that it is for.
    Uuid id() const { return agentID(); }

  protected:
    void refresh() override;
    void resizeEvent(QResizeEvent* event) override;
    bool focusNextPrevChild(bool next) override;

  private:
    QWidget* makeHeader();
    QWidget* makeBody();
    void showTab(int index);
    // The diagram stands beside the tabs where there is room, else below them.
    void placeDiagram();

    TextField* m_name;
    TextField* m_summary;
    TextLabel* m_usage;
    SegmentedControl* m_tabs;
    std::array<QWidget*, rawValues(AgentBuilderTab{}).size()> m_pages;
    AgentDiagramView* m_diagram;
    QVBoxLayout* m_pageColumn = nullptr;
    QScrollArea* m_pageArea = nullptr;
    QVBoxLayout* m_sideColumn = nullptr;
    QScrollArea* m_side = nullptr;
};

} // namespace ombrel

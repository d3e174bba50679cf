#pragma once

#include "shell/agents/AgentPart.h"

namespace ombrel {

class OutputKindEditor;
class PropertyListEditor;

// What an agent is: its instructions, context, input, output, tools and knowledge.
class AgentPropertiesPage final : public AgentPart {
    Q_OBJECT

  public:
    AgentPropertiesPage(std::shared_ptr<AppState> state, Uuid agentID, QWidget* parent = nullptr);

  protected:
    void refresh() override;

  private:
    PropertyListEditor* m_input;
    OutputKindEditor* m_output;
};

} // namespace ombrel

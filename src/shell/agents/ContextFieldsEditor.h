#pragma once

#include "shell/agents/AgentPart.h"

#include <optional>
#include <string>
#include <vector>

class QPushButton;

namespace ombrel {

class TextField;
class WrapLayout;

// The names of the flow context that an agent reads. The object names begin with "agent.context".
class ContextFieldsEditor final : public AgentPart {
    Q_OBJECT

  public:
    ContextFieldsEditor(std::shared_ptr<AppState> state, Uuid agentID, QWidget* parent = nullptr);

  protected:
    void refresh() override;

  private:
    void add();

    std::optional<std::vector<std::string>> m_shown;
    QWidget* m_chips;
    WrapLayout* m_row;
    TextField* m_newName;
    QPushButton* m_add;
};

} // namespace ombrel

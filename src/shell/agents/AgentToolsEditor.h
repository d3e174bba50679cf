#pragma once

#include "shell/agents/AgentPart.h"

#include <QList>

class QVBoxLayout;

namespace ombrel {

class ElidedCheckBox;
class MessageText;
class TextLabel;

// Which tools an agent may call. The object names begin with "agent.tools".
class AgentToolsEditor final : public AgentPart {
    Q_OBJECT

  public:
    AgentToolsEditor(std::shared_ptr<AppState> state, Uuid agentID, QWidget* parent = nullptr);

  protected:
    void refresh() override;

  private:
    void addRow();
    void setUsed(std::size_t index, bool used);

    QVBoxLayout* m_column;
    TextLabel* m_empty;
    struct Row {
        ElidedCheckBox* box;
        MessageText* about;
    };
    QList<Row> m_rows;
};

} // namespace ombrel

#pragma once

#include "shell/agents/AgentPart.h"

#include <QList>

class QVBoxLayout;

namespace ombrel {

class AttachmentRow;
class TextLabel;

// Which RAG indexes an agent is given knowledge from. Row N is an AttachmentRow with the object
// name "agent.knowledge.N".
class AgentKnowledgeEditor final : public AgentPart {
    Q_OBJECT

  public:
    AgentKnowledgeEditor(std::shared_ptr<AppState> state, Uuid agentID, QWidget* parent = nullptr);

  protected:
    void refresh() override;

  private:
    void addRow();
    // Of the RAG index that the row shows.
    Uuid idOf(const AttachmentRow* row) const;

    QVBoxLayout* m_column;
    TextLabel* m_empty;
    QList<AttachmentRow*> m_rows;
};

} // namespace ombrel

#pragma once

#include "agents/AgentEvaluation.h"
#include "shell/agents/AgentPart.h"

#include <QList>

class QPushButton;
class QVBoxLayout;

namespace ombrel {

class BusyButton;
class EvaluationCaseCard;
class TextLabel;

// An agent's fixed sample inputs. Case N is an EvaluationCaseCard with the object name
// "agent.case.N".
class AgentEvaluationPage final : public AgentPart {
    Q_OBJECT

  public:
    AgentEvaluationPage(std::shared_ptr<AppState> state, Uuid agentID, QWidget* parent = nullptr);

  protected:
    void refresh() override;

  private:
    void addCard();
    // The case that the card at the index shows; null when there is none any more.
    const AgentEvaluationCase* caseAt(std::size_t index) const;

    // A run outlives the page, and then has this to itself.
    std::shared_ptr<RunningCases> m_running = std::make_shared<RunningCases>();
    Subscription m_runningChanged;

    BusyButton* m_runAll;
    TextLabel* m_empty;
    QVBoxLayout* m_column;
    QPushButton* m_add;
    QList<EvaluationCaseCard*> m_cards;
};

} // namespace ombrel

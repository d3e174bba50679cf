#pragma once

#include "agents/AgentEvaluation.h"
#include "shell/agents/AgentPart.h"

namespace ombrel {

class BusyButton;
class EvaluationCaseList;

// An agent's fixed sample inputs. The object names begin with "agent.cases".
class AgentEvaluationPage final : public AgentPart {
    Q_OBJECT

  public:
    AgentEvaluationPage(std::shared_ptr<AppState> state, Uuid agentID, QWidget* parent = nullptr);

  protected:
    void refresh() override;

  private:
    // A run outlives the page, and then has this to itself.
    std::shared_ptr<RunningCases> m_running = std::make_shared<RunningCases>();
    Subscription m_runningChanged;

    BusyButton* m_runAll;
    EvaluationCaseList* m_cases;
};

} // namespace ombrel

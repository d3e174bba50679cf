#pragma once

#include "agents/AgentRunResult.h"
#include "shell/agents/AgentPart.h"

#include <QPointer>

#include <optional>
#include <string>

namespace ombrel {

class AgentResultView;
class BusyButton;
class TextArea;
class TextLabel;

// Runs an agent on a sample input, and shows the answer. The object names begin with "agent.try".
class AgentTryPanel final : public AgentPart {
    Q_OBJECT

  public:
    AgentTryPanel(std::shared_ptr<AppState> state, Uuid agentID, QWidget* parent = nullptr);

  protected:
    void refresh() override;

  private:
    static Task<void> runAndShow(Platform platform, Agent agent, std::vector<RAGIndex> indexes,
                                 std::string input, QPointer<AgentTryPanel> panel);
    void run();
    void takeResult(AgentRunResult result);

    std::string m_sampleInput;
    std::optional<AgentRunResult> m_result;
    bool m_isRunning = false;

    TextArea* m_input;
    BusyButton* m_run;
    TextLabel* m_status;
    AgentResultView* m_resultView;
};

} // namespace ombrel

#pragma once

#include "agents/AgentInstructionRefiner.h"
#include "shell/agents/AgentPart.h"

#include <QPointer>

#include <optional>
#include <string>

class QMenu;
class QPushButton;

namespace ombrel {

class Banner;
class BusyButton;
class Card;
class TextArea;
class MessageText;
class TextLabel;

// An agent's instructions, and what the model proposes in their place. The object names begin with
// "agent.instructions" and "agent.refine".
class InstructionsEditor final : public AgentPart {
    Q_OBJECT

  public:
    InstructionsEditor(std::shared_ptr<AppState> state, Uuid agentID, QWidget* parent = nullptr);

  protected:
    void refresh() override;

  private:
    using Refined = ombrel::Result<AgentInstructionRefiner::Result>;
    static Task<void> refineAndShow(std::shared_ptr<OnDeviceModel> model, Agent agent,
                                    QPointer<InstructionsEditor> editor);
    QWidget* makeProposal();
    void refine();
    void takeRefined(const Refined& refined);
    void showMenu(const std::vector<std::string>& fieldNames);

    bool m_isRefining = false;
    std::optional<AgentInstructionRefiner::Result> m_refinement;
    std::optional<std::string> m_refinementError;
    std::optional<std::vector<std::string>> m_menuNames;

    TextArea* m_text;
    TextLabel* m_tokens;
    QPushButton* m_insert;
    QMenu* m_menu;
    BusyButton* m_refine;
    Banner* m_error;
    MessageText* m_proposalSummary;
    MessageText* m_proposalText;
    QWidget* m_proposal;
};

} // namespace ombrel

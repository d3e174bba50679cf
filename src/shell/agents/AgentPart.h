#pragma once

#include "shell/StateView.h"

#include <memory>
#include <utility>

namespace ombrel {

// A part of the builder of one agent. When the agent is gone it shows what it showed last, and
// writes nowhere.
class AgentPart : public StateView {
    Q_OBJECT

  protected:
    AgentPart(std::shared_ptr<AppState> shownState, Uuid agentID, QWidget* parent)
        : StateView(std::move(shownState), parent), m_agentID(agentID) {
        watch(state().agents);
    }

    Uuid agentID() const { return m_agentID; }
    // Null when it is gone.
    const Agent* agent() const { return state().agent(m_agentID); }
    // Changes the agent, undoably.
    template <class Change>
    void edit(Change change) {
        const Agent* current = agent();
        if (!current) {
            return;
        }
        Agent edited = *current;
        change(edited);
        if (!(edited == *current)) {
            state().updateAgent(edited);
        }
    }

  private:
    Uuid m_agentID;
};

} // namespace ombrel

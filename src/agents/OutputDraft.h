#pragma once

#include "core/AgentOutputKind.h"

#include <optional>
#include <string_view>
#include <vector>

namespace ombrel {

// The output of an agent or a tool while it is being edited: a copy, which is kept or dropped as a
// whole. The cases and properties of the kinds that are not showing stay at hand, so that changing
// the kind and back loses nothing.
class OutputDraft {
  public:
    explicit OutputDraft(AgentOutputKind output);

    const AgentOutputKind& output() const { return m_draft; }

    // Shows another kind, with what was last edited for it. The kind that is showing stays as it
    // is.
    void setKind(AgentOutputKind::Kind kind);
    // Edit the list of the kind, and show that kind.
    void setCases(std::vector<AgentEnumCase> cases);
    void setProperties(std::vector<AgentProperty> properties);
    // Takes an imported output in place of the draft. Of the other kinds nothing is lost.
    void import(AgentOutputKind output);

  private:
    AgentOutputKind m_draft;
    std::vector<AgentEnumCase> m_cachedEnumCases;
    std::vector<AgentProperty> m_cachedObjectProperties;
};

// Why an output can't be saved yet; nothing when it can. Looks at its own cases or properties, not
// at those nested in them.
std::optional<std::string_view> validationMessage(const AgentOutputKind& draft);

} // namespace ombrel

#pragma once

#include "core/AgentOutputKind.h"
#include "core/AgentProperty.h"
#include "flows/WireRAGAttachment.h"

#include <string>
#include <vector>

namespace ombrel {

// What a run has to know of an agent.
struct WireAgentSpec {
    std::string name;
    std::string instructions;
    std::vector<AgentProperty> input;
    AgentOutputKind output;
    std::vector<std::string> contextFields; // names of those that the agent reads
    std::vector<WireRAGAttachment> ragAttachments;

    static constexpr auto keys() {
        return std::tuple(required("name", &WireAgentSpec::name),
                          required("instructions", &WireAgentSpec::instructions),
                          required("input", &WireAgentSpec::input),
                          required("output", &WireAgentSpec::output),
                          required("contextFields", &WireAgentSpec::contextFields),
                          required("ragAttachments", &WireAgentSpec::ragAttachments));
    }
    bool operator==(const WireAgentSpec&) const = default;
};

} // namespace ombrel

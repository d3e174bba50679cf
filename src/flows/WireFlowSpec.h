#pragma once

#include "core/Flow.h"
#include "flows/WireFlowDestination.h"

#include <cstdint>
#include <string>
#include <vector>

namespace ombrel {

class JsonWriter;

// A whole flow as the tools that run and export it read it: a tree from its first agent on.
struct WireFlowSpec {
    std::string name;
    FlowKind kind = FlowKind::singleShot;
    std::int64_t maxHops = 0;
    std::int64_t maxHistoryTokens = 0;
    std::vector<AgentProperty> startInput;
    std::vector<AgentProperty> contextFields;
    WireAgentSpec firstAgent;
    WireFlowRouting routing;

    static constexpr auto keys() {
        return std::tuple(required("name", &WireFlowSpec::name),
                          required("kind", &WireFlowSpec::kind),
                          required("maxHops", &WireFlowSpec::maxHops),
                          required("maxHistoryTokens", &WireFlowSpec::maxHistoryTokens),
                          required("startInput", &WireFlowSpec::startInput),
                          required("contextFields", &WireFlowSpec::contextFields),
                          required("firstAgent", &WireFlowSpec::firstAgent),
                          required("routing", &WireFlowSpec::routing));
    }
    bool operator==(const WireFlowSpec&) const = default;
};

// Encodes a flow of any depth; see `encode` for what false means.
[[nodiscard]] bool encode(JsonWriter& writer, const WireFlowSpec& spec);

} // namespace ombrel

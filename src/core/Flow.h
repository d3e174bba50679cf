#pragma once

#include "core/AgentProperty.h"
#include "core/FlowEdge.h"
#include "core/FlowNode.h"
#include "core/Record.h"
#include "platform/Uuid.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace ombrel {

enum class FlowKind { singleShot, conversational };

constexpr auto rawValues(FlowKind) {
    using enum FlowKind;
    return std::array{RawValue<FlowKind>{singleShot, "Single-shot"},
                      RawValue<FlowKind>{conversational, "Conversational"}};
}

// The drawing of one runnable pipeline. The order of nodes and of edges breaks ties everywhere.
struct Flow {
    Flow() = default;
    // A new flow: one Start node at (80, 160) and one input field "request".
    explicit Flow(std::string name);

    Uuid id;
    std::string name;
    FlowKind kind = FlowKind::singleShot;
    std::int64_t maxHops = 6;
    std::int64_t maxHistoryTokens = 2000;
    std::vector<AgentProperty> startInput;
    std::vector<AgentProperty> contextFields;
    std::vector<FlowNode> nodes;
    std::vector<FlowEdge> edges;

    static constexpr auto keys() {
        return std::tuple(required("id", &Flow::id), required("name", &Flow::name),
                          required("kind", &Flow::kind), required("maxHops", &Flow::maxHops),
                          defaulted("maxHistoryTokens", &Flow::maxHistoryTokens),
                          required("startInput", &Flow::startInput),
                          required("contextFields", &Flow::contextFields),
                          required("nodes", &Flow::nodes), required("edges", &Flow::edges));
    }

    // The first node with that id, or null; an absent id gives null.
    const FlowNode* node(std::optional<Uuid> nodeID) const;
    // All edges that leave the node, in the order of `edges`.
    std::vector<FlowEdge> outgoingEdges(Uuid nodeID) const;
    // The first Start node, or null.
    const FlowNode* startNode() const;

    bool operator==(const Flow&) const = default;
};

} // namespace ombrel

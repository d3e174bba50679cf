#include "core/FlowRunHighlight.h"

namespace ombrel {

FlowRunHighlight::FlowRunHighlight(const Flow& flow, const std::vector<Agent>& agents,
                                   const std::vector<ToolDefinition>& tools)
    : flowID(flow.id), nodes(flow.nodes), edges(flow.edges) {
    for (const Agent& agent : agents) {
        agentNames.emplace(agent.id, agent.name);
    }
    for (const ToolDefinition& tool : tools) {
        toolNames.emplace(tool.id, tool.name);
    }
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        auto& place = places[nodes[i].id].node;
        place = place.value_or(i);
    }
    for (std::size_t i = 0; i < edges.size(); ++i) {
        places[edges[i].fromNodeID].outgoingEdges.push_back(i);
    }
}

} // namespace ombrel

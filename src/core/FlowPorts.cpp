#include "core/FlowPorts.h"

#include "core/FindByID.h"

namespace ombrel {

namespace {

std::vector<FlowPort> agentPorts(const Agent* agent) {
    if (!agent) {
        return {};
    }
    const auto* enumeration = std::get_if<AgentOutputKind::Enumeration>(&agent->output.value);
    if (!enumeration) {
        return {std::nullopt};
    }
    std::vector<FlowPort> ports;
    for (const auto& entry : enumeration->cases) {
        ports.emplace_back(entry.name);
    }
    return ports;
}

} // namespace

std::vector<FlowPort> outputPorts(const FlowNode& node, const std::vector<Agent>& agents) {
    if (const auto* agent = std::get_if<FlowNodeKind::Agent>(&node.kind.value)) {
        return agentPorts(findByID(agents, agent->agentID));
    }
    if (std::holds_alternative<FlowNodeKind::Branch>(node.kind.value)) {
        return {"true", "false"};
    }
    if (std::holds_alternative<FlowNodeKind::End>(node.kind.value)) {
        return {};
    }
    return {std::nullopt};
}

} // namespace ombrel

#include "flows/FlowEditorTexts.h"

#include "core/FindByID.h"

#include <algorithm>

namespace ombrel {

namespace {

using Kind = FlowNodeKind;

const Agent* agentOf(const FlowNode& node, const std::vector<Agent>& agents) {
    const auto* reference = std::get_if<Kind::Agent>(&node.kind.value);
    return reference ? findByID(agents, reference->agentID) : nullptr;
}

std::string joinedNames(const std::vector<AgentProperty>& properties) {
    std::string joined;
    for (const AgentProperty& property : properties) {
        joined += (&property == properties.data() ? "" : ", ") + property.name;
    }
    return joined;
}

std::string conditionText(const Kind::Branch& branch) {
    const std::string field = branch.field.empty() ? "field" : branch.field;
    if (branch.operation == WireBranchOperator::isEmpty) {
        return field + " is empty";
    }
    return field + " " + operatorLabel(branch.operation) + " " + branch.value;
}

} // namespace

const char* operatorLabel(WireBranchOperator operation) {
    switch (operation) {
    case WireBranchOperator::equals:
        return "=";
    case WireBranchOperator::contains:
        return "contains";
    case WireBranchOperator::isEmpty:
        return "is empty";
    case WireBranchOperator::greaterThan:
        return ">";
    case WireBranchOperator::lessThan:
        return "<";
    }
    return "";
}

std::string nodeTitle(const FlowNode& node, const std::vector<Agent>& agents,
                      const std::vector<ToolDefinition>& tools) {
    if (std::holds_alternative<Kind::Agent>(node.kind.value)) {
        const Agent* agent = agentOf(node, agents);
        return agent ? agent->name : "Deleted Agent";
    }
    if (const auto* reference = std::get_if<Kind::Tool>(&node.kind.value)) {
        const ToolDefinition* tool = findByID(tools, reference->toolID);
        return tool ? tool->name : "Deleted Tool";
    }
    if (const auto* end = std::get_if<Kind::End>(&node.kind.value)) {
        return "." + end->caseName;
    }
    return std::holds_alternative<Kind::Branch>(node.kind.value) ? "Branch" : "Start";
}

std::string nodeSubtitle(const FlowNode& node, const Flow& flow, const std::vector<Agent>& agents) {
    if (std::holds_alternative<Kind::Agent>(node.kind.value)) {
        const Agent* agent = agentOf(node, agents);
        return agent ? std::string(rawValue(agent->output.kind())) : std::string();
    }
    if (std::holds_alternative<Kind::Tool>(node.kind.value)) {
        return "mock data";
    }
    if (const auto* end = std::get_if<Kind::End>(&node.kind.value)) {
        return end->carriesOutput ? "carries value" : "no value";
    }
    if (const auto* branch = std::get_if<Kind::Branch>(&node.kind.value)) {
        return conditionText(*branch);
    }
    return joinedNames(flow.startInput);
}

std::string nodeTitle(const Flow& flow, Uuid nodeID, const std::vector<Agent>& agents,
                      const std::vector<ToolDefinition>& tools) {
    const FlowNode* node = flow.node(nodeID);
    return node ? nodeTitle(*node, agents, tools) : "this node";
}

std::optional<Uuid> nodeTitled(const Flow& flow, const std::string& title,
                               const std::vector<Agent>& agents,
                               const std::vector<ToolDefinition>& tools) {
    const auto found = std::ranges::find_if(
        flow.nodes, [&](const FlowNode& node) { return nodeTitle(node, agents, tools) == title; });
    return found == flow.nodes.end() ? std::nullopt : std::optional(found->id);
}

bool drawsOnKnowledge(const FlowNode& node, const std::vector<Agent>& agents) {
    const Agent* agent = agentOf(node, agents);
    return agent && !agent->ragAttachments.empty();
}

std::string readinessText(const std::vector<FlowIssue>& issues) {
    if (issues.empty()) {
        return "Ready to run";
    }
    return std::to_string(issues.size()) + (issues.size() == 1 ? " issue" : " issues");
}

std::string maxHopsText(const Flow& flow) {
    return "Max hops " + std::to_string(flow.maxHops);
}

std::string portQuestion(const Flow& flow, Uuid fromNodeID, Uuid toNodeID,
                         const std::vector<Agent>& agents,
                         const std::vector<ToolDefinition>& tools) {
    return "Connect " + nodeTitle(flow, fromNodeID, agents, tools) + " → " +
           nodeTitle(flow, toNodeID, agents, tools) + " as:";
}

} // namespace ombrel

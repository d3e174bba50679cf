#pragma once

#include "core/Agent.h"
#include "core/Flow.h"
#include "core/ToolDefinition.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

// Flows that tests draw.
namespace ombrel::test {

inline AgentProperty property(std::string name, decltype(PropertyKind::value) kind) {
    return {Uuid::random(), std::move(name), {std::move(kind)}, std::nullopt, false};
}

inline AgentOutputKind enumeration(const std::vector<std::string>& names) {
    AgentOutputKind::Enumeration cases;
    for (const std::string& name : names) {
        cases.cases.push_back({Uuid::random(), name, std::nullopt});
    }
    return {cases};
}

inline AgentOutputKind object(std::vector<AgentProperty> properties) {
    return {AgentOutputKind::Object{std::move(properties)}};
}

// A flow with its agents and tools, drawn node by node.
struct Drawing {
    Flow flow{"Support"};
    std::vector<Agent> agents;
    std::vector<ToolDefinition> tools;

    Uuid start() const { return flow.nodes.front().id; }

    Uuid node(decltype(FlowNodeKind::value) kind) {
        flow.nodes.push_back({Uuid::random(), {std::move(kind)}, {}});
        return flow.nodes.back().id;
    }
    Uuid agent(std::string name, AgentOutputKind output = {}) {
        agents.push_back(newAgent(std::move(name)));
        agents.back().output = std::move(output);
        return node(FlowNodeKind::Agent{agents.back().id});
    }
    Uuid tool(std::string name, std::string mockResponseJSON = "{}") {
        tools.push_back(newTool(std::move(name)));
        tools.back().mockResponseJSON = std::move(mockResponseJSON);
        return node(FlowNodeKind::Tool{tools.back().id});
    }
    Uuid branch(std::string field, WireBranchOperator operation = WireBranchOperator::equals,
                std::string value = "") {
        return node(FlowNodeKind::Branch{std::move(field), operation, std::move(value)});
    }
    Uuid end(std::string caseName = "result", bool carriesOutput = true) {
        return node(FlowNodeKind::End{std::move(caseName), carriesOutput});
    }
    // The id of the edge.
    Uuid connect(Uuid from, Uuid to, std::optional<std::string> port = std::nullopt) {
        flow.edges.push_back({Uuid::random(), from, std::move(port), to});
        return flow.edges.back().id;
    }
};

} // namespace ombrel::test

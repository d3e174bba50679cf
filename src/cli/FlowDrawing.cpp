#include "cli/FlowDrawing.h"

#include "cli/Command.h"
#include "cli/FindNamed.h"
#include "platform/Text.h"

#include <algorithm>
#include <set>

namespace ombrel {

namespace {

template <class... Handlers>
struct Overloaded : Handlers... {
    using Handlers::operator()...;
};

} // namespace

std::string nodeName(const AppState& state, const FlowNode& node) {
    return std::visit(Overloaded{[](const FlowNodeKind::Start&) -> std::string { return "Start"; },
                                 [&](const FlowNodeKind::Agent& reference) {
                                     const Agent* agent = state.agent(reference.agentID);
                                     return agent ? agent->name : "Deleted Agent";
                                 },
                                 [](const FlowNodeKind::Branch& branch) { return branch.field; },
                                 [&](const FlowNodeKind::Tool& reference) {
                                     const ToolDefinition* tool = state.tool(reference.toolID);
                                     return tool ? tool->name : "Deleted Tool";
                                 },
                                 [](const FlowNodeKind::End& end) { return end.caseName; }},
                      node.kind.value);
}

std::string portName(const AppState& state, const FlowNode& node, const FlowPort& port) {
    return nodeName(state, node) + (port ? "." + *port : "");
}

Uuid FlowDrawing::add(FlowNodeKind kind, const std::optional<std::string>& name) {
    const Uuid id = Uuid::random();
    m_flow.nodes.push_back({id, std::move(kind), {}});
    if (name) {
        m_names[id] = *name;
    }
    return id;
}

FlowNodeKind FlowDrawing::agentNode(const std::string& nameOrID) const {
    return {FlowNodeKind::Agent{findNamed(*m_state.agents, nameOrID, "agent")}};
}

FlowNodeKind FlowDrawing::toolNode(const std::string& nameOrID) const {
    return {FlowNodeKind::Tool{findNamed(*m_state.tools, nameOrID, "tool")}};
}

std::vector<Uuid> FlowDrawing::nodesCalled(const std::string& nameOrID) const {
    const std::optional<Uuid> id = Uuid::parse(nameOrID);
    if (id && m_flow.node(*id)) {
        return {*id};
    }
    std::vector<Uuid> found;
    for (const FlowNode& node : m_flow.nodes) {
        const auto given = m_names.find(node.id);
        const std::string name = given == m_names.end() ? nodeName(m_state, node) : given->second;
        if (canonicallyEqual(name, nameOrID)) {
            found.push_back(node.id);
        }
    }
    return found;
}

std::optional<FlowNodeKind> FlowDrawing::kindCalled(const std::string& name) const {
    const auto isCalled = [&](const auto& entry) { return canonicallyEqual(entry.name, name); };
    const bool isAgent = std::ranges::any_of(*m_state.agents, isCalled);
    const bool isTool = std::ranges::any_of(*m_state.tools, isCalled);
    if (isAgent && isTool) {
        throw Failure{"“" + name + "” is an agent and a tool: list the node that is meant."};
    }
    if (isAgent) {
        return agentNode(name);
    }
    return isTool ? std::optional(toolNode(name)) : std::nullopt;
}

bool FlowDrawing::isKnown(const std::string& name) const {
    return !nodesCalled(name).empty() || kindCalled(name);
}

Uuid FlowDrawing::find(const std::string& nameOrID) const {
    const std::vector<Uuid> found = nodesCalled(nameOrID);
    if (found.empty()) {
        std::set<std::string> names;
        for (const FlowNode& node : m_flow.nodes) {
            names.insert(nodeName(m_state, node));
        }
        throw Failure{"There is no node “" + nameOrID + "” in “" + m_flow.name +
                      "”. There are: " + join({names.begin(), names.end()}, ", ") + "."};
    }
    if (found.size() > 1) {
        std::string message = "Several nodes are called “" + nameOrID + "”. Use an id:";
        for (const Uuid& id : found) {
            message += "\n  " + id.text();
        }
        throw Failure{message};
    }
    return found.front();
}

Uuid FlowDrawing::findOrAdd(const std::string& nameOrID) {
    if (nodesCalled(nameOrID).empty()) {
        auto kind = kindCalled(nameOrID);
        if (!kind) {
            throw Failure{"“" + nameOrID + "” is neither a node nor an agent or a tool."};
        }
        return add(std::move(*kind));
    }
    return find(nameOrID);
}

// How much of the name of an output names the node: all, or what stands before one of its dots. The
// longest that is known counts.
std::size_t FlowDrawing::nodeNameLength(const std::string& name) const {
    std::size_t length = name.size();
    while (!isKnown(name.substr(0, length))) {
        length = length == 0 ? std::string::npos : name.rfind('.', length - 1);
        if (length == std::string::npos) {
            return name.size();
        }
    }
    return length;
}

FlowPort FlowDrawing::checkedPort(Uuid nodeID, const std::string& name,
                                  std::size_t nodeNameLength) const {
    const std::string node = name.substr(0, nodeNameLength);
    const std::vector<FlowPort> ports = outputPorts(*m_flow.node(nodeID), *m_state.agents);
    const FlowPort port =
        nodeNameLength == name.size() ? FlowPort() : FlowPort(name.substr(nodeNameLength + 1));
    if (std::ranges::find(ports, port) != ports.end()) {
        return port;
    }
    if (ports.empty()) {
        throw Failure{"“" + node + "” has no output to connect."};
    }
    std::string outputs;
    for (const FlowPort& known : ports) {
        outputs += (outputs.empty() ? "" : ", ") + node + (known ? "." + *known : "");
    }
    throw Failure{"“" + name + "” is no output. “" + node + "” has: " + outputs + "."};
}

std::pair<Uuid, FlowPort> FlowDrawing::findPort(const std::string& name) const {
    const std::size_t length = nodeNameLength(name);
    const Uuid node = find(name.substr(0, length));
    return {node, checkedPort(node, name, length)};
}

std::pair<Uuid, FlowPort> FlowDrawing::findOrAddPort(const std::string& name) {
    const std::size_t length = nodeNameLength(name);
    const Uuid node = findOrAdd(name.substr(0, length));
    return {node, checkedPort(node, name, length)};
}

} // namespace ombrel

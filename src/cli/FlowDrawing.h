#pragma once

#include "core/AppState.h"
#include "core/Flow.h"
#include "core/FlowPorts.h"
#include "platform/Uuid.h"

#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace ombrel {

// What a node is called on the command line: "Start", the name of its agent or tool, the field that
// a branch reads, the case name of an End.
std::string nodeName(const AppState& state, const FlowNode& node);

// A node's output as it is called there: "Triage.refund", or only the node's name.
std::string portName(const AppState& state, const FlowNode& node, const FlowPort& port);

// A flow while it is drawn by names. Everything throws `Failure` for a name that is not known or
// means several things.
class FlowDrawing {
  public:
    FlowDrawing(const AppState& state, Flow flow) : m_state(state), m_flow(std::move(flow)) {}

    const Flow& flow() const { return m_flow; }

    // Adds a node, which can then be called by this name too.
    Uuid add(FlowNodeKind kind, const std::optional<std::string>& name = std::nullopt);
    // The node with the name or id.
    Uuid find(const std::string& nameOrID) const;
    // The same, but the name of an agent or tool that has no node yet adds one.
    Uuid findOrAdd(const std::string& nameOrID);
    // The output called "NODE", or "NODE.PORT" of a node that has several.
    std::pair<Uuid, FlowPort> findPort(const std::string& name) const;
    // The same, adding as `findOrAdd` does.
    std::pair<Uuid, FlowPort> findOrAddPort(const std::string& name);

    // The kind of node that the name of an agent or a tool stands for.
    FlowNodeKind agentNode(const std::string& nameOrID) const;
    FlowNodeKind toolNode(const std::string& nameOrID) const;

  private:
    std::vector<Uuid> nodesCalled(const std::string& nameOrID) const;
    std::optional<FlowNodeKind> kindCalled(const std::string& name) const;
    bool isKnown(const std::string& name) const;
    std::size_t nodeNameLength(const std::string& portName) const;
    FlowPort checkedPort(Uuid nodeID, const std::string& name, std::size_t nodeNameLength) const;

    const AppState& m_state;
    Flow m_flow;
    std::map<Uuid, std::string> m_names; // that nodes were given beside their own
};

} // namespace ombrel

#pragma once

#include "core/Agent.h"
#include "core/Flow.h"
#include "core/FlowNodeRunValue.h"
#include "core/ToolDefinition.h"
#include "platform/Uuid.h"

#include <cstddef>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

namespace ombrel {

// The path that a run takes through the drawing of its flow, found again from what the run reports
// by walking a copy of the drawing. It survives the run's end, until it is cleared or replaced.
struct FlowRunHighlight {
    enum class NodeState { notReached, visited, active, failed };

    // A run that has not reported anything yet.
    FlowRunHighlight(const Flow& flow, const std::vector<Agent>& agents,
                     const std::vector<ToolDefinition>& tools);

    Uuid flowID;
    std::vector<Uuid> visitedNodeIDs; // in the order of the first visit, no repeats
    std::set<Uuid> visitedEdgeIDs;
    std::optional<Uuid> lastEdgeID;   // none after a jump
    std::optional<Uuid> activeNodeID; // the node that works now
    std::optional<Uuid> failedNodeID;
    std::map<Uuid, FlowNodeRunValue> values; // by node
    bool isLive = true;
    std::optional<bool> succeeded; // none until the run has ended

    // As they were when the run began.
    std::vector<FlowNode> nodes;
    std::vector<FlowEdge> edges;
    std::map<Uuid, std::string> agentNames;
    std::map<Uuid, std::string> toolNames;
    // Where a node id stands among `nodes` (the first with it) and `edges` (all that leave it, in
    // order).
    struct Place {
        std::optional<std::size_t> node;
        std::vector<std::size_t> outgoingEdges;
        bool operator==(const Place&) const = default;
    };
    std::unordered_map<Uuid, Place> places;

    std::optional<Uuid> currentNodeID;      // where the walk is; stays when a node has finished
    std::optional<std::string> pendingPort; // by which the next step leaves

    bool operator==(const FlowRunHighlight&) const = default;
};

} // namespace ombrel

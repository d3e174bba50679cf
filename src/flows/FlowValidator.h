#pragma once

#include "core/AppState.h"
#include "flows/FlowIssue.h"
#include "platform/Uuid.h"

#include <vector>

namespace ombrel {

// Says what is wrong with a flow. What it accepts is a tree from one Start, every path of which
// ends in an End or in a case of an enumeration that is not connected.
struct FlowValidator {
    // In a fixed order: about the flow's Starts, unreachable nodes, several connections into one
    // node, each node in turn, Ends of one name, and whether the flow can finish. Any thread.
    static std::vector<FlowIssue> validate(const Flow& flow, const std::vector<Agent>& agents,
                                           const std::vector<ToolDefinition>& tools);
};

// Of a flow of the project; none when there is no such flow.
std::vector<FlowIssue> flowIssues(const AppState& state, Uuid flowID);

// Whether the flow is there and has no issue that is an error.
bool canRunFlow(const AppState& state, Uuid flowID);

} // namespace ombrel

#pragma once

#include "core/Agent.h"
#include "core/Flow.h"
#include "core/ToolDefinition.h"
#include "core/WireBranchOperator.h"
#include "flows/FlowIssue.h"

#include <optional>
#include <string>
#include <vector>

// What the editor of a flow says of nodes, connections and the flow.
namespace ombrel {

// "=", "contains", "is empty", ">" and "<".
const char* operatorLabel(WireBranchOperator operation);

// What a node's card says: "Triage" and "Enum", "Branch" and "age > 12".
std::string nodeTitle(const FlowNode& node, const std::vector<Agent>& agents,
                      const std::vector<ToolDefinition>& tools);
// `flow` is the one that the node belongs to. Empty for an agent that is gone.
std::string nodeSubtitle(const FlowNode& node, const Flow& flow, const std::vector<Agent>& agents);

// The title of the flow's node with the id; "this node" when it is not there.
std::string nodeTitle(const Flow& flow, Uuid nodeID, const std::vector<Agent>& agents,
                      const std::vector<ToolDefinition>& tools);
// The first node of the flow with that title.
std::optional<Uuid> nodeTitled(const Flow& flow, const std::string& title,
                               const std::vector<Agent>& agents,
                               const std::vector<ToolDefinition>& tools);

// Whether the node's agent has knowledge attached.
bool drawsOnKnowledge(const FlowNode& node, const std::vector<Agent>& agents);
inline constexpr const char* knowledgeMarkHelp =
    "This agent draws on a RAG index — retrieved context is added to its prompt at run time.";

// "1 issue", "3 issues" or "Ready to run".
std::string readinessText(const std::vector<FlowIssue>& issues);
// "Max hops 6".
std::string maxHopsText(const Flow& flow);
// What is asked when a wire could leave by several ports.
std::string portQuestion(const Flow& flow, Uuid fromNodeID, Uuid toNodeID,
                         const std::vector<Agent>& agents,
                         const std::vector<ToolDefinition>& tools);

inline constexpr const char* clearRunPathHelp = "Clear the run path from the canvas (Esc)";
inline constexpr const char* runValueHelp = "Show this node's input and output";
inline constexpr const char* startNodeNote =
    "Defines the flow's input — edit its fields from the flow-level inspector (deselect this "
    "node).";
inline constexpr const char* toolNodeNote = "Runs deterministically — mock data in Studio runs.";
inline constexpr const char* fieldMappingNote =
    "Field mapping between upstream and downstream types (F4) isn't built yet — every agent "
    "currently reads the flow's Start input directly (see the dev plan's M1/M3 scope notes).";

} // namespace ombrel

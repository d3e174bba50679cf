#pragma once

#include "cli/Command.h"
#include "core/AppState.h"
#include "core/FlowNodeRunValue.h"
#include "core/FlowRunHighlight.h"
#include "flows/FlowIssue.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace ombrel {

// A highlight as it is told: all but its copy of the drawing.
struct HighlightReport {
    explicit HighlightReport(const FlowRunHighlight& highlight);

    Uuid flowID;
    std::string banner;
    std::vector<Uuid> visitedNodeIDs;
    std::vector<Uuid> visitedEdgeIDs;
    std::optional<Uuid> lastEdgeID;
    std::optional<Uuid> activeNodeID;
    std::optional<Uuid> failedNodeID;
    std::optional<Uuid> currentNodeID;
    std::optional<std::string> pendingPort;
    std::map<std::string, FlowNodeRunValue> values; // by node id
    bool isLive = false;
    std::optional<bool> succeeded;

    static constexpr auto keys() {
        using R = HighlightReport;
        return std::tuple(
            required("flowID", &R::flowID), required("banner", &R::banner),
            required("visitedNodeIDs", &R::visitedNodeIDs),
            required("visitedEdgeIDs", &R::visitedEdgeIDs), optional("lastEdgeID", &R::lastEdgeID),
            optional("activeNodeID", &R::activeNodeID), optional("failedNodeID", &R::failedNodeID),
            optional("currentNodeID", &R::currentNodeID), optional("pendingPort", &R::pendingPort),
            required("values", &R::values), required("isLive", &R::isLive),
            optional("succeeded", &R::succeeded));
    }
};

// The path that a run took, node by node, with what each saw.
std::string highlightText(const AppState& state, const FlowRunHighlight& highlight);

void printFlows(const AppState& state, const Invocation& invocation);
void printFlow(const AppState& state, Uuid flowID, const Invocation& invocation);
void printIssues(const AppState& state, const Flow& flow, const std::vector<FlowIssue>& issues,
                 const Invocation& invocation);

} // namespace ombrel

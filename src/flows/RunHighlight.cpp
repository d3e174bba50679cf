#include "flows/RunHighlight.h"

#include "platform/CaseInsensitiveSearch.h"
#include "platform/Text.h"

#include <algorithm>
#include <array>

namespace ombrel {

namespace {

template <class Kind>
bool isKind(const FlowNode& node) {
    return std::holds_alternative<Kind>(node.kind.value);
}

bool isNamed(const std::map<Uuid, std::string>& names, Uuid id, const std::string& name) {
    const auto found = names.find(id);
    return found != names.end() && found->second == name;
}

bool isAgentNamed(const FlowRunHighlight& highlight, const FlowNode& node,
                  const std::string& name) {
    const auto* agent = std::get_if<FlowNodeKind::Agent>(&node.kind.value);
    return agent && isNamed(highlight.agentNames, agent->agentID, name);
}

bool isToolNamed(const FlowRunHighlight& highlight, const FlowNode& node, const std::string& name) {
    const auto* tool = std::get_if<FlowNodeKind::Tool>(&node.kind.value);
    return tool && isNamed(highlight.toolNames, tool->toolID, name);
}

const FlowNode* nodeWithID(const FlowRunHighlight& highlight, Uuid id) {
    const auto place = highlight.places.find(id);
    return place == highlight.places.end() || !place->second.node
               ? nullptr
               : &highlight.nodes[*place->second.node];
}

// The edges that leave the current node, in order.
std::vector<const FlowEdge*> edgesOnward(const FlowRunHighlight& highlight) {
    std::vector<const FlowEdge*> onward;
    if (highlight.currentNodeID) {
        const auto place = highlight.places.find(*highlight.currentNodeID);
        if (place != highlight.places.end()) {
            for (const std::size_t i : place->second.outgoingEdges) {
                onward.push_back(&highlight.edges[i]);
            }
        }
    }
    return onward;
}

void visit(FlowRunHighlight& highlight, Uuid nodeID) {
    FlowNodeRunValue& value = highlight.values[nodeID];
    if (value.step == 0) {
        highlight.visitedNodeIDs.push_back(nodeID);
        value.step = static_cast<std::int64_t>(highlight.visitedNodeIDs.size());
    }
}

// The edge that leads from the current node to one that satisfies the predicate: by the pending
// port if such an edge leaves there, else the first. Null when there is none.
template <class Predicate>
const FlowEdge* edgeOnward(const FlowRunHighlight& highlight, Predicate& satisfies) {
    const FlowEdge* first = nullptr;
    for (const FlowEdge* edge : edgesOnward(highlight)) {
        const FlowNode* target = nodeWithID(highlight, edge->toNodeID);
        if (!target || !satisfies(*target)) {
            continue;
        }
        if (!highlight.pendingPort || edge->fromPort == highlight.pendingPort) {
            return edge;
        }
        first = first ? first : edge;
    }
    return first;
}

// Walks on to a node that satisfies the predicate: along an edge, or by a jump to the first such
// node when the walk has lost the path. What the node saw, to be written to; null when there is no
// such node.
template <class Predicate>
FlowNodeRunValue* advance(FlowRunHighlight& highlight, Predicate satisfies) {
    const FlowEdge* edge = edgeOnward(highlight, satisfies);
    highlight.pendingPort.reset();
    if (edge) {
        highlight.visitedEdgeIDs.insert(edge->id);
        highlight.lastEdgeID = edge->id;
        highlight.currentNodeID = edge->toNodeID;
    } else {
        const auto found = std::ranges::find_if(highlight.nodes, satisfies);
        if (found == highlight.nodes.end()) {
            return nullptr;
        }
        highlight.lastEdgeID.reset();
        highlight.currentNodeID = found->id;
    }
    visit(highlight, *highlight.currentNodeID);
    return &highlight.values[*highlight.currentNodeID];
}

// What the current node saw; null when the walk has not begun.
FlowNodeRunValue* currentValue(FlowRunHighlight& highlight) {
    return highlight.currentNodeID ? &highlight.values[*highlight.currentNodeID] : nullptr;
}

// The port that the text means: "refund", "Route.refund", "the refund route".
std::optional<std::string> portMeant(const FlowRunHighlight& highlight, std::string_view detail) {
    const std::string_view text = trimWhitespacesAndNewlines(detail);
    std::vector<const std::string*> ports;
    for (const FlowEdge* edge : edgesOnward(highlight)) {
        if (edge->fromPort) {
            ports.push_back(&*edge->fromPort);
        }
    }
    const auto first = [&](auto means) -> const std::string* {
        const auto found =
            std::ranges::find_if(ports, [&](const std::string* port) { return means(*port); });
        return found == ports.end() ? nullptr : *found;
    };
    const std::string* port = first([&](const std::string& name) { return text == name; });
    port = port ? port : first([&](const std::string& name) { return text.ends_with("." + name); });
    port = port ? port : first([&](const std::string& name) {
        return !name.empty() && containsIgnoringCase(text, name);
    });
    return port ? std::optional(*port) : std::nullopt;
}

void flowStarted(FlowRunHighlight& highlight, const FlowTraceEvent& event) {
    highlight.visitedNodeIDs.clear();
    highlight.visitedEdgeIDs.clear();
    highlight.lastEdgeID.reset();
    highlight.values.clear();
    highlight.pendingPort.reset();
    highlight.failedNodeID.reset();
    const auto start = std::ranges::find_if(highlight.nodes, isKind<FlowNodeKind::Start>);
    if (start == highlight.nodes.end()) {
        return;
    }
    highlight.currentNodeID = start->id;
    visit(highlight, start->id);
    highlight.values[start->id].output = event.detail;
    highlight.activeNodeID.reset();
}

void nodeEntered(FlowRunHighlight& highlight, const FlowTraceEvent& event) {
    if (!event.node) {
        return;
    }
    FlowNodeRunValue* value = advance(highlight, [&](const FlowNode& node) {
        return isAgentNamed(highlight, node, *event.node);
    });
    if (value) {
        constexpr std::string_view prefix = "input: ";
        value->input = event.detail.substr(event.detail.starts_with(prefix) ? prefix.size() : 0);
        highlight.activeNodeID = highlight.currentNodeID;
    }
}

void ragRetrieved(FlowRunHighlight& highlight, const FlowTraceEvent& event) {
    if (FlowNodeRunValue* value = currentValue(highlight)) {
        value->retrieval = event.detail;
    }
}

void promptBuilt(FlowRunHighlight& highlight, const FlowTraceEvent& event) {
    if (FlowNodeRunValue* value = currentValue(highlight)) {
        value->tokenEstimate = event.tokenEstimate;
    }
}

void outputReceived(FlowRunHighlight& highlight, const FlowTraceEvent& event) {
    if (FlowNodeRunValue* value = currentValue(highlight)) {
        value->output = event.detail;
    }
    highlight.activeNodeID.reset();
}

void routeTaken(FlowRunHighlight& highlight, const FlowTraceEvent& event) {
    highlight.pendingPort = portMeant(highlight, event.detail);
}

void branch(FlowRunHighlight& highlight, const FlowTraceEvent& event) {
    FlowNodeRunValue* value = advance(highlight, isKind<FlowNodeKind::Branch>);
    if (!value) {
        return;
    }
    value->output = event.detail;
    for (const char* outcome : {"true", "false"}) {
        if (event.detail.ends_with(std::string("-> ") + outcome)) {
            highlight.pendingPort = outcome;
        }
    }
}

void toolCalled(FlowRunHighlight& highlight, const FlowTraceEvent& event) {
    if (!event.node) {
        return;
    }
    FlowNodeRunValue* value = advance(
        highlight, [&](const FlowNode& node) { return isToolNamed(highlight, node, *event.node); });
    if (value) {
        value->output = event.detail;
    }
}

void error(FlowRunHighlight& highlight, const FlowTraceEvent& event) {
    std::optional<Uuid> target = highlight.currentNodeID;
    if (!target && event.node) {
        const auto found = std::ranges::find_if(highlight.nodes, [&](const FlowNode& node) {
            return isAgentNamed(highlight, node, *event.node) ||
                   isToolNamed(highlight, node, *event.node);
        });
        if (found != highlight.nodes.end()) {
            target = found->id;
        }
    }
    if (target) {
        highlight.values[*target].error = event.detail;
        highlight.failedNodeID = target;
    }
    highlight.activeNodeID.reset();
}

void flowFinished(FlowRunHighlight& highlight, const FlowTraceEvent& event) {
    if (FlowNodeRunValue* value = advance(highlight, isKind<FlowNodeKind::End>)) {
        value->output = event.detail;
    }
    highlight.activeNodeID.reset();
}

struct Step {
    std::string_view kind;
    void (*take)(FlowRunHighlight&, const FlowTraceEvent&);
};

constexpr std::array steps{Step{"flowStarted", flowStarted},
                           Step{"nodeEntered", nodeEntered},
                           Step{"ragRetrieved", ragRetrieved},
                           Step{"promptBuilt", promptBuilt},
                           Step{"outputReceived", outputReceived},
                           Step{"routeTaken", routeTaken},
                           Step{"branch", branch},
                           Step{"toolCalled", toolCalled},
                           Step{"error", error},
                           Step{"flowFinished", flowFinished}};

// By the order of a node's kinds.
constexpr std::array<const char*, 5> outputLabels{"Run input", "Output", "Decision", "Returned",
                                                  "Result"};
static_assert(outputLabels.size() == std::variant_size_v<decltype(FlowNodeKind::value)>);

} // namespace

void apply(FlowRunHighlight& highlight, const FlowTraceEvent& event) {
    const auto step =
        std::ranges::find_if(steps, [&](const Step& known) { return known.kind == event.kind; });
    if (step != steps.end()) {
        step->take(highlight, event);
    }
}

void finish(FlowRunHighlight& highlight, bool succeeded) {
    highlight.isLive = false;
    highlight.succeeded = succeeded;
    if (!succeeded && !highlight.failedNodeID) {
        highlight.failedNodeID =
            highlight.activeNodeID ? highlight.activeNodeID : highlight.currentNodeID;
    }
    highlight.activeNodeID.reset();
}

FlowRunHighlight::NodeState state(const FlowRunHighlight& highlight, Uuid nodeID) {
    using enum FlowRunHighlight::NodeState;
    if (highlight.failedNodeID == nodeID) {
        return failed;
    }
    if (highlight.activeNodeID == nodeID) {
        return active;
    }
    const auto value = highlight.values.find(nodeID);
    return value != highlight.values.end() && value->second.step > 0 ? visited : notReached;
}

std::string bannerText(const FlowRunHighlight& highlight) {
    const std::size_t count = highlight.visitedNodeIDs.size();
    const std::string number = std::to_string(count);
    if (highlight.isLive) {
        return count == 0 ? "Starting the run…" : "Running · step " + number;
    }
    if (!highlight.succeeded.value_or(false)) {
        return count == 0 ? "Run failed before the flow started" : "Run failed at step " + number;
    }
    return "Run path · " + number + (count == 1 ? " step" : " steps");
}

std::optional<RunBubble> runBubble(const FlowRunHighlight& highlight, Uuid nodeID) {
    const auto found = highlight.values.find(nodeID);
    if (found == highlight.values.end()) {
        return std::nullopt;
    }
    const FlowNodeRunValue& value = found->second;
    RunBubble bubble{"Step " + std::to_string(value.step), {}};
    const auto add = [&](const char* label, const std::optional<std::string>& text) {
        if (text) {
            bubble.rows.push_back({label, *text});
        }
    };
    const FlowNode* node = nodeWithID(highlight, nodeID);
    add("Input", value.input);
    add(node ? outputLabels[node->kind.value.index()] : "Output", value.output);
    add("Retrieved", value.retrieval);
    if (value.tokenEstimate) {
        bubble.rows.push_back(
            {"Prompt size", "~" + std::to_string(*value.tokenEstimate) + " tokens"});
    }
    add("Error", value.error);
    return bubble;
}

} // namespace ombrel

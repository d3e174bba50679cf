#include "core/AppState.h"

#include <algorithm>
#include <string>
#include <utility>

namespace ombrel {

const Flow& AppState::addFlow() {
    const std::string number = std::to_string(flows->size() + 1);
    return addAndShow<NavigatorSelection::Flow>(flows, Flow("New Flow " + number));
}

const Flow* AppState::duplicateFlow(Uuid id) {
    const Flow* original = flow(id);
    if (!original) {
        return nullptr;
    }
    Flow copy = *original;
    copy.id = Uuid::random();
    copy.name += " copy";
    return &addAndShow<NavigatorSelection::Flow>(flows, std::move(copy));
}

void AppState::deleteFlow(Uuid id) {
    removeAndHide<NavigatorSelection::Flow>(flows, id);
    scheduleCheckpoint();
}

void AppState::updateFlow(const Flow& flow) {
    editFirst(flows, flow.id, [&](Flow& stored) { stored = flow; });
}

void AppState::addFlowNode(FlowNodeKind kind, Uuid flowID, double x, double y) {
    editFirst(flows, flowID, [&](Flow& edited) {
        edited.nodes.push_back({Uuid::random(), std::move(kind), {x, y}});
    });
}

void AppState::moveFlowNode(Uuid nodeID, Uuid flowID, double x, double y) {
    editFirst(flows, flowID, [&](Flow& edited) {
        if (FlowNode* node = findByID(edited.nodes, nodeID)) {
            node->position = {x, y};
        }
    });
}

void AppState::connectFlowNodes(Uuid fromNodeID, std::optional<std::string> fromPort, Uuid toNodeID,
                                Uuid flowID) {
    editFirst(flows, flowID, [&](Flow& edited) {
        std::erase_if(edited.edges, [&](const FlowEdge& edge) {
            return edge.fromNodeID == fromNodeID && edge.fromPort == fromPort;
        });
        edited.edges.push_back({Uuid::random(), fromNodeID, std::move(fromPort), toNodeID});
    });
}

void AppState::deleteFlowNode(Uuid nodeID, Uuid flowID) {
    if (*canvasSelection == CanvasSelection{CanvasSelection::Node{nodeID}}) {
        canvasSelection = std::nullopt;
    }
    editFirst(flows, flowID, [&](Flow& edited) {
        std::erase_if(edited.nodes, [&](const FlowNode& node) { return node.id == nodeID; });
        std::erase_if(edited.edges, [&](const FlowEdge& edge) {
            return edge.fromNodeID == nodeID || edge.toNodeID == nodeID;
        });
    });
}

void AppState::deleteFlowEdge(Uuid edgeID, Uuid flowID) {
    const Flow* current = flow(flowID);
    if (!current) {
        return;
    }
    if (*canvasSelection == CanvasSelection{CanvasSelection::Edge{edgeID}}) {
        canvasSelection = std::nullopt;
    }
    if (findByID(current->edges, edgeID)) {
        editFirst(flows, flowID, [&](Flow& edited) {
            std::erase_if(edited.edges, [&](const FlowEdge& edge) { return edge.id == edgeID; });
        });
    }
}

std::vector<std::string> AppState::flowNamesUsingAgent(Uuid agentID) const {
    std::vector<std::string> names;
    for (const Flow& user : *flows) {
        const bool uses = std::ranges::any_of(user.nodes, [&](const FlowNode& node) {
            const auto* agentNode = std::get_if<FlowNodeKind::Agent>(&node.kind.value);
            return agentNode && agentNode->agentID == agentID;
        });
        if (uses) {
            names.push_back(user.name);
        }
    }
    return names;
}

} // namespace ombrel

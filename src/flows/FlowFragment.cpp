#include "flows/FlowFragment.h"

#include <map>

namespace ombrel {

namespace {

bool isStart(const FlowNode& node) {
    return std::holds_alternative<FlowNodeKind::Start>(node.kind.value);
}

} // namespace

FlowFragment FlowFragment::of(const Flow& flow, const std::set<Uuid>& nodeIDs) {
    FlowFragment fragment;
    std::set<Uuid> copied;
    for (const FlowNode& node : flow.nodes) {
        if (nodeIDs.contains(node.id) && !isStart(node)) {
            fragment.nodes.push_back(node);
            copied.insert(node.id);
        }
    }
    for (const FlowEdge& edge : flow.edges) {
        if (copied.contains(edge.fromNodeID) && copied.contains(edge.toNodeID)) {
            fragment.edges.push_back(edge);
        }
    }
    return fragment;
}

std::vector<Uuid> FlowFragment::addTo(Flow& flow, double dx, double dy) const {
    std::vector<Uuid> added;
    std::map<Uuid, Uuid> newIDs;
    for (FlowNode node : nodes) {
        if (isStart(node)) {
            continue;
        }
        const Uuid id = Uuid::random();
        newIDs[node.id] = id;
        added.push_back(id);
        node.id = id;
        node.position.x += dx;
        node.position.y += dy;
        flow.nodes.push_back(std::move(node));
    }
    for (FlowEdge edge : edges) {
        const auto from = newIDs.find(edge.fromNodeID);
        const auto to = newIDs.find(edge.toNodeID);
        if (from != newIDs.end() && to != newIDs.end()) {
            flow.edges.push_back({Uuid::random(), from->second, edge.fromPort, to->second});
        }
    }
    return added;
}

} // namespace ombrel

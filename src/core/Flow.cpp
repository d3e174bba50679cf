#include "core/Flow.h"

#include "core/FindByID.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace ombrel {

Flow::Flow(std::string flowName) : id(Uuid::random()), name(std::move(flowName)) {
    AgentProperty request;
    request.id = Uuid::random();
    request.name = "request";
    request.kind.value = PropertyKind::String{};
    request.description = "The flow's input";
    startInput.push_back(std::move(request));
    nodes.push_back({Uuid::random(), {FlowNodeKind::Start{}}, {80, 160}});
}

const FlowNode* Flow::node(std::optional<Uuid> nodeID) const {
    return nodeID ? findByID(nodes, *nodeID) : nullptr;
}

std::vector<FlowEdge> Flow::outgoingEdges(Uuid nodeID) const {
    std::vector<FlowEdge> result;
    std::ranges::copy_if(edges, std::back_inserter(result),
                         [&](const FlowEdge& edge) { return edge.fromNodeID == nodeID; });
    return result;
}

const FlowNode* Flow::startNode() const {
    const auto found = std::ranges::find_if(nodes, [](const FlowNode& node) {
        return std::holds_alternative<FlowNodeKind::Start>(node.kind.value);
    });
    return found == nodes.end() ? nullptr : &*found;
}

} // namespace ombrel

#include "flows/CanvasMove.h"

#include <algorithm>
#include <cmath>

namespace ombrel {

namespace {

constexpr double reachToTheSide = 95;
constexpr double reachUpAndDown = 50;

// The nearest line that was seen yet.
struct Nearest {
    double reach;
    std::optional<double> line;

    void look(double candidate, double at) {
        const double distance = std::abs(candidate - at);
        if (distance <= reach && (!line || distance < std::abs(*line - at))) {
            line = candidate;
        }
    }
};

} // namespace

CanvasPoint CanvasMove::livePosition(const FlowNode& node) const {
    if (!nodes.contains(node.id)) {
        return node.position;
    }
    return {node.position.x + translation.width, node.position.y + translation.height};
}

std::optional<Uuid> connectionTarget(std::span<const FlowNode> nodes, Uuid fromNodeID,
                                     CanvasPoint drop, const CanvasMove& move) {
    const auto hit = std::ranges::find_if(nodes, [&](const FlowNode& node) {
        const CanvasPoint centre = move.livePosition(node);
        return node.id != fromNodeID && std::abs(drop.x - centre.x) <= reachToTheSide &&
               std::abs(drop.y - centre.y) <= reachUpAndDown;
    });
    return hit == nodes.end() ? std::nullopt : std::optional(hit->id);
}

AlignmentGuides alignedMove(std::span<const FlowNode> nodes, Uuid lead, const CanvasMove& move,
                            double reach) {
    AlignmentGuides guides{move.translation, std::nullopt, std::nullopt};
    const auto leader = std::ranges::find(nodes, lead, &FlowNode::id);
    if (leader == nodes.end()) {
        return guides;
    }
    const CanvasPoint at = move.livePosition(*leader);
    Nearest x{reach, std::nullopt};
    Nearest y{reach, std::nullopt};
    for (const FlowNode& node : nodes) {
        if (!move.nodes.contains(node.id)) {
            x.look(node.position.x, at.x);
            y.look(node.position.y, at.y);
        }
    }
    if (x.line) {
        guides.x = x.line;
        guides.translation.width = *x.line - leader->position.x;
    }
    if (y.line) {
        guides.y = y.line;
        guides.translation.height = *y.line - leader->position.y;
    }
    return guides;
}

} // namespace ombrel

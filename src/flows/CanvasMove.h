#pragma once

#include "core/FlowNode.h"
#include "flows/CanvasView.h"

#include <optional>
#include <set>
#include <span>

namespace ombrel {

// Nodes that are being moved, all by the same translation.
struct CanvasMove {
    std::set<Uuid> nodes;
    CanvasSize translation;

    // Where the node is seen now: at its stored position, moved when it is one of these.
    CanvasPoint livePosition(const FlowNode& node) const;
};

// The node that a wire from a node connects to when it is dropped at the point: the first, in the
// order of the nodes, whose live centre lies within 95 to the side and 50 up or down of it,
// inclusive, except for the source itself.
std::optional<Uuid> connectionTarget(std::span<const FlowNode> nodes, Uuid fromNodeID,
                                     CanvasPoint drop, const CanvasMove& move = {});

// A line along which the centres of nodes stand, seen while a node is moved onto it.
struct AlignmentGuides {
    CanvasSize translation; // of the move: as asked, or to the lines that are near
    std::optional<double> x;
    std::optional<double> y;
    bool operator==(const AlignmentGuides&) const = default;
};

// Draws a move to the centres of the nodes that stay, where `lead` (one of the nodes that move)
// comes within `reach` of them; elsewhere the translation stays as it is. The nearest line wins,
// the first of two that are as near.
AlignmentGuides alignedMove(std::span<const FlowNode> nodes, Uuid lead, const CanvasMove& move,
                            double reach);

} // namespace ombrel

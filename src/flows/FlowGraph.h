#pragma once

#include "core/Flow.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace ombrel {

// The drawing of a flow, ready for walking: everything that Flow looks for by going through its
// nodes and edges is found at once. Every id that a node or an end of an edge has is a place,
// whether or not there is a node with it. Making one takes time linear in the size of the drawing.
// The flow has to outlive it and stay as it is.
class FlowGraph {
  public:
    using Place = std::uint32_t;
    static constexpr Place nowhere = UINT32_MAX;

    struct Arrow {
        const FlowEdge* edge;
        Place to;
    };

    explicit FlowGraph(const Flow& flow);

    std::size_t placeCount() const { return m_places.size(); }
    // The first node with the place's id, or null.
    const FlowNode* node(Place place) const { return m_places[place].node; }
    // The place of the i-th node of the flow.
    Place placeOfNode(std::size_t i) const { return m_nodePlaces[i]; }
    // Where the i-th edge of the flow leads.
    Place target(std::size_t i) const { return m_targets[i]; }
    // The place of the first Start node, or nowhere.
    Place start() const { return m_start; }
    // The edges that leave, in the flow's order.
    std::span<const Arrow> outgoing(Place place) const {
        return std::span(m_arrows).subspan(m_places[place].firstArrow, m_places[place].arrowCount);
    }
    std::size_t incomingCount(Place place) const { return m_places[place].incomingCount; }
    // Where the first edge that leads to the place comes from, or nowhere.
    Place firstSource(Place place) const { return m_places[place].firstSource; }

  private:
    struct Links {
        const FlowNode* node = nullptr;
        std::uint32_t firstArrow = 0;
        std::uint32_t arrowCount = 0;
        std::uint32_t incomingCount = 0;
        Place firstSource = nowhere;
    };

    std::vector<Links> m_places;
    std::vector<Place> m_nodePlaces;
    std::vector<Place> m_targets;
    std::vector<Arrow> m_arrows;
    Place m_start = nowhere;
};

} // namespace ombrel

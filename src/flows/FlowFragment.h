#pragma once

#include "core/Flow.h"

#include <set>
#include <vector>

namespace ombrel {

// Some nodes of a flow and the connections among them, as they are copied.
struct FlowFragment {
    std::vector<FlowNode> nodes;
    std::vector<FlowEdge> edges;

    static constexpr auto keys() {
        return std::tuple(required("nodes", &FlowFragment::nodes),
                          required("edges", &FlowFragment::edges));
    }
    bool operator==(const FlowFragment&) const = default;

    // Of the flow's nodes with these ids. Starts are left out: a flow has one.
    static FlowFragment of(const Flow& flow, const std::set<Uuid>& nodeIDs);
    // Adds a copy with new ids, moved; the ids of the nodes that are new, in order.
    std::vector<Uuid> addTo(Flow& flow, double dx, double dy) const;
};

} // namespace ombrel

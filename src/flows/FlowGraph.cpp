#include "flows/FlowGraph.h"

#include <unordered_map>

namespace ombrel {

FlowGraph::FlowGraph(const Flow& flow) {
    std::unordered_map<Uuid, Place> placeOfID;
    placeOfID.reserve(flow.nodes.size());
    m_places.reserve(flow.nodes.size());
    const auto placeOf = [&](const Uuid& id) {
        const auto [entry, isNew] = placeOfID.emplace(id, static_cast<Place>(m_places.size()));
        if (isNew) {
            m_places.emplace_back();
        }
        return entry->second;
    };

    m_nodePlaces.reserve(flow.nodes.size());
    for (const FlowNode& node : flow.nodes) {
        const Place place = m_nodePlaces.emplace_back(placeOf(node.id));
        if (!m_places[place].node) {
            m_places[place].node = &node;
        }
        if (m_start == nowhere && std::holds_alternative<FlowNodeKind::Start>(node.kind.value)) {
            m_start = place;
        }
    }

    std::vector<Place> sources;
    sources.reserve(flow.edges.size());
    m_targets.reserve(flow.edges.size());
    for (const FlowEdge& edge : flow.edges) {
        const Place from = sources.emplace_back(placeOf(edge.fromNodeID));
        const Place to = m_targets.emplace_back(placeOf(edge.toNodeID));
        ++m_places[from].arrowCount;
        if (++m_places[to].incomingCount == 1) {
            m_places[to].firstSource = from;
        }
    }
    std::uint32_t arrows = 0;
    for (Links& links : m_places) {
        links.firstArrow = arrows;
        arrows += links.arrowCount;
        links.arrowCount = 0;
    }
    m_arrows.resize(flow.edges.size());
    for (std::size_t i = 0; i < flow.edges.size(); ++i) {
        Links& links = m_places[sources[i]];
        m_arrows[links.firstArrow + links.arrowCount++] = {&flow.edges[i], m_targets[i]};
    }
}

} // namespace ombrel

#include "flows/FlowLayout.h"

#include "flows/FlowGraph.h"

#include <optional>

namespace ombrel {

namespace {

constexpr CanvasPoint origin{80, 160};
constexpr double columnWidth = 260;
constexpr double rowHeight = 150;

} // namespace

std::vector<CanvasPoint> flowLayout(const Flow& flow) {
    const FlowGraph graph(flow);
    std::vector<std::optional<CanvasPoint>> points(graph.placeCount());
    double nextRow = 0;

    struct Visit {
        FlowGraph::Place place;
        double column;
        std::optional<double> row; // none: the next one that is free
    };
    // Depth first, so that what follows a node stands together.
    const auto layOutFrom = [&](FlowGraph::Place first) {
        std::vector<Visit> visits{{first, 0, std::nullopt}};
        while (!visits.empty()) {
            const Visit visit = visits.back();
            visits.pop_back();
            if (points[visit.place]) {
                continue;
            }
            const double row = visit.row ? *visit.row : nextRow++;
            points[visit.place] = {origin.x + visit.column * columnWidth,
                                   origin.y + row * rowHeight};
            const auto arrows = graph.outgoing(visit.place);
            for (std::size_t i = arrows.size(); i > 0; --i) {
                visits.push_back({arrows[i - 1].to, visit.column + 1,
                                  i == 1 ? std::optional(row) : std::nullopt});
            }
        }
    };
    if (graph.start() != FlowGraph::nowhere) {
        layOutFrom(graph.start());
    }
    std::vector<CanvasPoint> layout;
    for (std::size_t i = 0; i < flow.nodes.size(); ++i) {
        layOutFrom(graph.placeOfNode(i));
        layout.push_back(*points[graph.placeOfNode(i)]);
    }
    return layout;
}

} // namespace ombrel

#include "core/FlowPalette.h"

namespace ombrel {

CanvasPoint palettePosition(std::size_t nodeCount) {
    const std::size_t column = nodeCount % 4;
    const std::size_t row = nodeCount / 4;
    return {static_cast<double>(column) * 220 + 140, static_cast<double>(row) * 150 + 140};
}

FlowNodeKind paletteBranch() {
    return {FlowNodeKind::Branch{"", WireBranchOperator::equals, ""}};
}

FlowNodeKind paletteEnd() {
    return {FlowNodeKind::End{"result", true}};
}

} // namespace ombrel

#include "core/FlowPalette.h"

namespace ombrel {

CanvasPoint palettePosition(std::size_t nodeCount) {
    return {static_cast<double>(nodeCount % 4) * 220 + 140,
            static_cast<double>(nodeCount / 4) * 150 + 140};
}

FlowNodeKind paletteBranch() {
    return {FlowNodeKind::Branch{"", WireBranchOperator::equals, ""}};
}

FlowNodeKind paletteEnd() {
    return {FlowNodeKind::End{"result", true}};
}

} // namespace ombrel

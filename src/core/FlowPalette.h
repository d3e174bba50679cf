#pragma once

#include "core/FlowNode.h"

#include <cstddef>

namespace ombrel {

// Where the palette puts a new node on a canvas that holds `nodeCount` nodes: four columns, filled
// row by row, whatever lies there.
CanvasPoint palettePosition(std::size_t nodeCount);

// What the palette's Branch and End entries add.
FlowNodeKind paletteBranch();
FlowNodeKind paletteEnd();

} // namespace ombrel

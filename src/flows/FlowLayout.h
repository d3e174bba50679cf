#pragma once

#include "core/Flow.h"

#include <vector>

namespace ombrel {

// A place on the canvas for every node of the flow: columns by the number of steps from Start,
// where a node's first successor stands in its row and each further one in a row of its own. Nodes
// that Start does not lead to come below. The first Start stands where a new flow has it.
std::vector<CanvasPoint> flowLayout(const Flow& flow);

} // namespace ombrel

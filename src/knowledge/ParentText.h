#pragma once

#include "core/DocumentChunk.h"

#include <cstdint>

namespace ombrel {

// The chunks of one document, each with `parentText` = the texts of its group joined with a blank
// line. A group is a run of neighbours under one breadcrumb that together have at most `budget`
// tokens; a chunk over the budget is a group of its own. The same array when nothing changes.
ChunkArray assignParentText(ChunkArray chunks, std::int64_t budget);

// The chunks without `parentText`. The same array when nothing changes.
ChunkArray clearParentText(ChunkArray chunks);

} // namespace ombrel

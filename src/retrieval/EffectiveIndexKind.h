#pragma once

#include "core/IndexKind.h"
#include "core/IndexedChunks.h"

namespace ombrel {

// The kind of index under which the chunks of a knowledge base can be searched when `selected` is
// the kind of its recipe: `spotlight` is searched by keyword, and so are `vector` and `hybrid` as
// long as there are no chunks or one of them lacks its embedding.
IndexKind effectiveIndexKind(IndexKind selected, const IndexedChunks& pairs);

} // namespace ombrel

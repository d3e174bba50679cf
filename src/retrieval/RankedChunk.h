#pragma once

#include "core/DocumentChunk.h"
#include "core/SourceDocument.h"

namespace ombrel {

// A chunk that a search found, with its raw score. The pointers are into what the index holds:
// good as long as that index, or a copy of it, lives.
struct RankedChunk {
    const SourceDocument* document = nullptr;
    const DocumentChunk* chunk = nullptr;
    double score = 0;
};

} // namespace ombrel

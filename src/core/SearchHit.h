#pragma once

#include "core/DocumentChunk.h"
#include "core/SourceDocument.h"

namespace ombrel {

// One result of a search. The scores are between 0 and 1: each is divided by the best of its own
// list, and 0 where the chunk is not in that list.
struct SearchHit {
    SourceDocument document;
    DocumentChunk chunk;
    double keywordScore = 0;
    double vectorScore = 0;
    double fusedScore = 0;

    bool operator==(const SearchHit&) const = default;
};

} // namespace ombrel

#pragma once

#include "core/PlaygroundResult.h"
#include "core/SearchHit.h"

#include <cstdint>

namespace ombrel {

// The row that a result shows for a hit, under a new id. Ranks count from 1.
RetrievedChunk retrievedRow(const SearchHit& hit, std::int64_t rank, bool inPrompt);

} // namespace ombrel

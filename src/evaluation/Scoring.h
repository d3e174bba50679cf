#pragma once

#include "core/SearchHit.h"
#include "core/TestQuestion.h"

#include <vector>

namespace ombrel {

// Scores a search for the question, best hit first: writes `lastGotBreadcrumb`, `lastRank` and
// `status`, for which the whole list counts, and gives the reciprocal rank, 0 without a match.
double scoreHits(TestQuestion& question, const std::vector<SearchHit>& hits);

} // namespace ombrel

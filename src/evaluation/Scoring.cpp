#include "evaluation/Scoring.h"

#include "evaluation/Breadcrumb.h"

#include <algorithm>
#include <cstdint>
#include <optional>

namespace ombrel {

double scoreHits(TestQuestion& question, const std::vector<SearchHit>& hits) {
    const auto match = std::ranges::find_if(hits, [&](const SearchHit& hit) {
        return breadcrumbsMatch(hit.chunk.breadcrumb, question.expectedBreadcrumb);
    });
    question.lastGotBreadcrumb.reset();
    if (!hits.empty()) {
        question.lastGotBreadcrumb = hits.front().chunk.breadcrumb;
    }
    if (match == hits.end()) {
        question.lastRank.reset();
        question.status = QuestionStatus::failing;
        return 0;
    }
    const std::int64_t rank = match - hits.begin() + 1;
    question.lastRank = rank;
    question.status = QuestionStatus::passing;
    return 1.0 / static_cast<double>(rank);
}

} // namespace ombrel

#include "retrieval/RetrievedRow.h"

#include "platform/Text.h"

#include <cstddef>

namespace ombrel {

RetrievedChunk retrievedRow(const SearchHit& hit, std::int64_t rank, bool inPrompt) {
    constexpr std::size_t snippetCharacters = 160;
    RetrievedChunk row;
    row.id = Uuid::random();
    row.rank = rank;
    row.breadcrumb = hit.chunk.breadcrumb;
    row.snippet = firstCharacters(hit.chunk.text, snippetCharacters);
    row.keywordScore = hit.keywordScore;
    row.vectorScore = hit.vectorScore;
    row.fusedScore = hit.fusedScore;
    row.inPrompt = inPrompt;
    row.usedParent = hit.chunk.parentText.has_value();
    return row;
}

} // namespace ombrel

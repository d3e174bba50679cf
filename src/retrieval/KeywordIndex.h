#pragma once

#include "core/IndexedChunks.h"
#include "retrieval/RankedChunk.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace ombrel {

// Okapi BM25 (k1 = 1.5, b = 0.75) over the search texts of some chunks. What is computed from a
// chunk array stays with the array, so that an index over arrays that were indexed before is
// assembled from what is there. Immutable, cheap to copy, readable from any thread.
class KeywordIndex {
  public:
    using Entry = RankedChunk;

    explicit KeywordIndex(const IndexedChunks& chunks);

    // The terms of a text in order: lower case, cut at every character that is neither a letter
    // nor a number. Terms are the same when they are canonically equivalent.
    static std::vector<std::string> tokenize(std::string_view text);

    // The chunks with a score above 0, best first, at most `topK`; at equal scores in the order
    // of the input. Scores are the raw sums.
    std::vector<Entry> search(std::string_view query, std::int64_t topK) const;

    // The number of chunks.
    std::size_t size() const;
    // The mean number of terms in a chunk; 0 when there are no chunks.
    double averageLength() const;
    // The number of chunks that have the term.
    std::int64_t documentFrequency(std::string_view term) const;

  private:
    struct State;
    std::shared_ptr<const State> m_state;
};

} // namespace ombrel

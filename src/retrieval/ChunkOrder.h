#pragma once

#include "core/IndexedChunks.h"
#include "retrieval/RankedChunk.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace ombrel {

// The chunks of a corpus numbered in the order that decides ties. Immutable.
class ChunkOrder {
  public:
    // A chunk's place in the order and its score.
    struct Scored {
        std::size_t position = 0;
        double score = 0;
    };

    explicit ChunkOrder(const IndexedChunks& corpus);

    const IndexedChunks& corpus() const { return m_corpus; }
    std::size_t size() const { return m_starts.back(); }
    // Where the chunks of a document start.
    std::size_t start(std::size_t document) const { return m_starts[document]; }

    // The first `topK` by score, descending; at equal scores the earlier position stands first.
    // No score is NaN.
    std::vector<RankedChunk> best(std::vector<Scored> found, std::int64_t topK) const;

  private:
    IndexedChunks m_corpus;
    std::vector<std::size_t> m_starts; // one more than there are documents
};

} // namespace ombrel

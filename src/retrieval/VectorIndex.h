#pragma once

#include "core/IndexedChunks.h"
#include "platform/LanguageRecognizer.h"
#include "platform/SentenceEmbedder.h"
#include "retrieval/RankedChunk.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace ombrel {

// Cosine similarity between a query's vector and the embeddings of some chunks. What is computed
// from a chunk array stays with the array, so that an index over arrays that were indexed before
// is assembled from what is there. Immutable, cheap to copy, readable from any thread.
class VectorIndex {
  public:
    using Entry = RankedChunk;

    VectorIndex(const IndexedChunks& chunks, const LanguageRecognizer& languages);

    // The language whose embedding is to be asked for queries' vectors: that of the first chunk's
    // text; English when none is recognised.
    const std::string& language() const;

    // The chunks with a similarity above 0, best first, at most `topK`; at equal similarities in
    // the order of the input.
    std::vector<Entry> search(const Vector& queryVector, std::int64_t topK) const;

    // The number of chunks.
    std::size_t size() const;

    // From -1 to 1; 0 for vectors of different length, empty ones and those of norm 0.
    static double cosineSimilarity(const Vector& a, const Vector& b);

  private:
    struct State;
    std::shared_ptr<const State> m_state;
};

} // namespace ombrel

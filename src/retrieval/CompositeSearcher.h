#pragma once

#include "core/IndexKind.h"
#include "core/IndexedChunks.h"
#include "core/SearchHit.h"
#include "platform/Platform.h"
#include "platform/SentenceEmbedder.h"
#include "platform/Task.h"
#include "retrieval/KeywordIndex.h"
#include "retrieval/VectorIndex.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ombrel {

// The one entry to searching: a snapshot of some chunks under an index kind. Immutable and cheap
// to copy; every thread may read it, but `search`, `queryVector` and `queryVectors` ask the
// embedding service and belong to the main thread.
class CompositeSearcher {
  public:
    CompositeSearcher(IndexKind indexKind, std::optional<KeywordIndex> keywordIndex,
                      std::optional<VectorIndex> vectorIndex,
                      std::shared_ptr<SentenceEmbedder> embedder);

    IndexKind indexKind() const { return m_indexKind; }
    const std::optional<KeywordIndex>& keywordIndex() const { return m_keywordIndex; }
    const std::optional<VectorIndex>& vectorIndex() const { return m_vectorIndex; }

    // Best first, at most `topK`; empty where the kind, the chunks or the query give nothing.
    // `spotlight` never gives anything.
    Task<std::vector<SearchHit>> search(std::string query, std::int64_t topK) const;

    // What `search` gives when the embedding service gives `queryVector` for the query. The kinds
    // `keyword` and `spotlight` do not look at the vector. Any thread.
    std::vector<SearchHit> searchWithVector(std::string_view query,
                                            const std::optional<Vector>& queryVector,
                                            std::int64_t topK) const;

    // The vector of a query in the language of the vector index; nothing, without asking the
    // service, when there is no vector index or it has no chunks.
    Task<std::optional<Vector>> queryVector(std::string query) const;
    // The same for many queries, in their order, with as few requests as the service likes.
    Task<std::vector<std::optional<Vector>>> queryVectors(std::vector<std::string> queries) const;

  private:
    IndexKind m_indexKind;
    std::optional<KeywordIndex> m_keywordIndex;
    std::optional<VectorIndex> m_vectorIndex;
    std::shared_ptr<SentenceEmbedder> m_embedder;
};

// The searcher of a kind over the chunks: it has the indexes that the kind needs.
CompositeSearcher buildSearcher(IndexKind indexKind, const IndexedChunks& chunks,
                                const Platform& platform);

// Merges lists that each are ranked already into the best `topK`. A chunk gains 1 / (60 + rank)
// from each list that it is in; the first hit of a chunk stays, with its `fusedScore` replaced by
// the sum over the best sum. Chunks with exactly equal sums stay in the order of first occurrence.
std::vector<SearchHit> mergeByRank(const std::vector<std::vector<SearchHit>>& lists,
                                   std::int64_t topK);

} // namespace ombrel

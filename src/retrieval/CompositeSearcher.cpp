#include "retrieval/CompositeSearcher.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <limits>
#include <unordered_map>
#include <utility>

namespace ombrel {

namespace {

// What a rank, counted from 1, is worth.
double rankWorth(std::size_t rank) {
    return 1 / (60.0 + static_cast<double>(rank));
}

double normalised(double score, double best) {
    return best > 0 ? score / best : 0;
}

double bestScore(const std::vector<RankedChunk>& ranked) {
    return ranked.empty() ? 1 : ranked.front().score;
}

// Rows keyed by chunk, in the order in which the chunks came.
template <class Row>
class RowsByChunk {
  public:
    Row& operator[](const Uuid& chunk) {
        const auto [entry, isNew] = m_places.try_emplace(chunk, m_rows.size());
        return isNew ? m_rows.emplace_back() : m_rows[entry->second];
    }
    // The first `topK` by their sum, descending.
    std::vector<Row> best(std::int64_t topK) && {
        std::ranges::stable_sort(m_rows, std::greater(), &Row::sum);
        const auto limit = static_cast<std::uint64_t>(std::max<std::int64_t>(topK, 0));
        if (m_rows.size() > limit) {
            m_rows.erase(m_rows.begin() + static_cast<std::ptrdiff_t>(limit), m_rows.end());
        }
        return std::move(m_rows);
    }

  private:
    std::vector<Row> m_rows;
    std::unordered_map<Uuid, std::size_t> m_places;
};

std::vector<SearchHit> fuse(const std::vector<RankedChunk>& keywordHits,
                            const std::vector<RankedChunk>& vectorHits, std::int64_t topK) {
    struct Row {
        const RankedChunk* found = nullptr;
        double keywordScore = 0;
        double vectorScore = 0;
        std::size_t keywordRank = 0; // 0: not in the list
        std::size_t vectorRank = 0;
        double sum = 0;
    };
    RowsByChunk<Row> rows;
    const double bestKeyword = bestScore(keywordHits);
    for (std::size_t p = 0; p < keywordHits.size(); ++p) {
        Row& row = rows[keywordHits[p].chunk->id];
        row.found = &keywordHits[p];
        row.keywordScore = normalised(keywordHits[p].score, bestKeyword);
        row.keywordRank = p + 1;
        row.sum = rankWorth(row.keywordRank);
    }
    const double bestVector = bestScore(vectorHits);
    for (std::size_t p = 0; p < vectorHits.size(); ++p) {
        Row& row = rows[vectorHits[p].chunk->id];
        row.found = &vectorHits[p];
        row.vectorScore = normalised(vectorHits[p].score, bestVector);
        row.vectorRank = p + 1;
        row.sum = (row.keywordRank > 0 ? rankWorth(row.keywordRank) : 0) + rankWorth(p + 1);
    }
    std::vector<SearchHit> hits;
    const std::vector<Row> kept = std::move(rows).best(topK);
    for (const Row& row : kept) {
        hits.push_back({*row.found->document, *row.found->chunk, row.keywordScore, row.vectorScore,
                        row.sum / kept.front().sum});
    }
    return hits;
}

// The hits of one index, its scores divided by the best of them and written to `score`.
std::vector<SearchHit> hitsOf(const std::vector<RankedChunk>& ranked, double SearchHit::*score) {
    std::vector<SearchHit> hits;
    hits.reserve(ranked.size());
    for (const RankedChunk& found : ranked) {
        SearchHit& hit = hits.emplace_back(SearchHit{*found.document, *found.chunk, 0, 0, 0});
        hit.*score = hit.fusedScore = normalised(found.score, bestScore(ranked));
    }
    return hits;
}

// The coroutines hold a copy of the searcher, so that it need not outlive them.
Task<std::vector<std::optional<Vector>>> askForVectors(CompositeSearcher searcher,
                                                       std::shared_ptr<SentenceEmbedder> embedder,
                                                       std::vector<std::string> queries) {
    std::vector<std::optional<Vector>> vectors(queries.size());
    const std::optional<VectorIndex>& index = searcher.vectorIndex();
    if (!index || index->size() == 0 || !embedder->supports(index->language())) {
        co_return vectors;
    }
    const std::size_t batchSize = std::max<std::size_t>(embedder->batchSize(), 1);
    for (std::size_t begin = 0; begin < queries.size(); begin += batchSize) {
        const std::size_t end = std::min(queries.size(), begin + batchSize);
        std::vector<std::string> texts(queries.begin() + static_cast<std::ptrdiff_t>(begin),
                                       queries.begin() + static_cast<std::ptrdiff_t>(end));
        auto asked = embedder->vectors(index->language(), std::move(texts));
        std::vector<std::optional<Vector>> given = co_await asked;
        for (std::size_t i = 0; i < std::min(given.size(), end - begin); ++i) {
            vectors[begin + i] = std::move(given[i]);
        }
    }
    co_return vectors;
}

Task<std::optional<Vector>> askForVector(CompositeSearcher searcher, std::string query) {
    std::vector<std::string> queries;
    queries.push_back(std::move(query));
    auto asked = searcher.queryVectors(std::move(queries));
    std::vector<std::optional<Vector>> vectors = co_await asked;
    co_return std::move(vectors.front());
}

Task<std::vector<SearchHit>> searchIn(CompositeSearcher searcher, std::string query,
                                      std::int64_t topK) {
    auto asked = searcher.queryVector(query);
    const std::optional<Vector> vector = co_await asked;
    co_return searcher.searchWithVector(query, vector, topK);
}

} // namespace

CompositeSearcher::CompositeSearcher(IndexKind indexKind, std::optional<KeywordIndex> keywordIndex,
                                     std::optional<VectorIndex> vectorIndex,
                                     std::shared_ptr<SentenceEmbedder> embedder)
    : m_indexKind(indexKind), m_keywordIndex(std::move(keywordIndex)),
      m_vectorIndex(std::move(vectorIndex)), m_embedder(std::move(embedder)) {}

Task<std::optional<Vector>> CompositeSearcher::queryVector(std::string query) const {
    return askForVector(*this, std::move(query));
}

Task<std::vector<std::optional<Vector>>>
CompositeSearcher::queryVectors(std::vector<std::string> queries) const {
    return askForVectors(*this, m_embedder, std::move(queries));
}

Task<std::vector<SearchHit>> CompositeSearcher::search(std::string query, std::int64_t topK) const {
    return searchIn(*this, std::move(query), topK);
}

std::vector<SearchHit> CompositeSearcher::searchWithVector(std::string_view query,
                                                           const std::optional<Vector>& queryVector,
                                                           std::int64_t topK) const {
    const auto byKeyword = [&](std::int64_t count) {
        return m_keywordIndex ? m_keywordIndex->search(query, count) : std::vector<RankedChunk>();
    };
    const auto byVector = [&](std::int64_t count) {
        return m_vectorIndex && queryVector ? m_vectorIndex->search(*queryVector, count)
                                            : std::vector<RankedChunk>();
    };
    switch (m_indexKind) {
    case IndexKind::spotlight:
        return {};
    case IndexKind::keyword:
        return hitsOf(byKeyword(topK), &SearchHit::keywordScore);
    case IndexKind::vector:
        return hitsOf(byVector(topK), &SearchHit::vectorScore);
    case IndexKind::hybrid: {
        if (!m_keywordIndex || !m_vectorIndex) {
            return {};
        }
        constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();
        const std::int64_t widerK = topK > most / 3 ? most : topK * 3;
        return fuse(byKeyword(widerK), byVector(widerK), topK);
    }
    }
    return {};
}

CompositeSearcher buildSearcher(IndexKind indexKind, const IndexedChunks& chunks,
                                const Platform& platform) {
    std::optional<KeywordIndex> keywordIndex;
    std::optional<VectorIndex> vectorIndex;
    if (indexKind == IndexKind::keyword || indexKind == IndexKind::hybrid) {
        keywordIndex.emplace(chunks);
    }
    if (indexKind == IndexKind::vector || indexKind == IndexKind::hybrid) {
        vectorIndex.emplace(chunks, *platform.languages);
    }
    return CompositeSearcher(indexKind, std::move(keywordIndex), std::move(vectorIndex),
                             platform.embedder);
}

std::vector<SearchHit> mergeByRank(const std::vector<std::vector<SearchHit>>& lists,
                                   std::int64_t topK) {
    struct Row {
        const SearchHit* first = nullptr;
        double sum = 0;
    };
    RowsByChunk<Row> rows;
    for (const std::vector<SearchHit>& list : lists) {
        for (std::size_t p = 0; p < list.size(); ++p) {
            Row& row = rows[list[p].chunk.id];
            if (!row.first) {
                row.first = &list[p];
            }
            row.sum += rankWorth(p + 1);
        }
    }
    std::vector<SearchHit> hits;
    const std::vector<Row> kept = std::move(rows).best(topK);
    for (const Row& row : kept) {
        SearchHit& hit = hits.emplace_back(*row.first);
        hit.fusedScore = normalised(row.sum, kept.front().sum);
    }
    return hits;
}

} // namespace ombrel

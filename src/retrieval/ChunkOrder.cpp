#include "retrieval/ChunkOrder.h"

#include <algorithm>
#include <iterator>

namespace ombrel {

ChunkOrder::ChunkOrder(const IndexedChunks& corpus) : m_corpus(corpus) {
    m_starts.reserve(corpus.size() + 1);
    m_starts.push_back(0);
    for (const IndexedDocument& entry : corpus) {
        m_starts.push_back(m_starts.back() + entry.chunks.size());
    }
}

std::vector<RankedChunk> ChunkOrder::best(std::vector<Scored> found, std::int64_t topK) const {
    if (topK <= 0) {
        return {};
    }
    const std::size_t count = std::min<std::uint64_t>(found.size(), topK);
    std::ranges::partial_sort(found, found.begin() + static_cast<std::ptrdiff_t>(count),
                              [](const Scored& a, const Scored& b) {
                                  return a.score != b.score ? a.score > b.score
                                                            : a.position < b.position;
                              });
    std::vector<RankedChunk> ranked(count);
    for (std::size_t i = 0; i < count; ++i) {
        const auto after = std::ranges::upper_bound(m_starts, found[i].position);
        const auto document = static_cast<std::size_t>(after - m_starts.begin()) - 1;
        const IndexedDocument& entry = m_corpus[document];
        ranked[i] = {&entry.document, &entry.chunks[found[i].position - m_starts[document]],
                     found[i].score};
    }
    return ranked;
}

} // namespace ombrel

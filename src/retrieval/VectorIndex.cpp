#include "retrieval/VectorIndex.h"

#include "retrieval/ChunkOrder.h"
#include "retrieval/Greatest.h"
#include "retrieval/PackedVectors.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <string_view>
#include <utility>

namespace ombrel {

struct VectorIndex::State {
    explicit State(const IndexedChunks& chunks) : order(chunks) {}

    ChunkOrder order;
    // One for each document of the corpus; null for one that never had chunks.
    std::vector<std::shared_ptr<const PackedVectors>> packed;
    std::string language;
};

VectorIndex::VectorIndex(const IndexedChunks& chunks, const LanguageRecognizer& languages) {
    auto state = std::make_shared<State>(chunks);
    state->packed.reserve(chunks.size());
    for (const IndexedDocument& entry : chunks) {
        state->packed.push_back(PackedVectors::of(entry.chunks));
    }
    const DocumentChunk* const first = firstChunk(chunks);
    state->language = languages.dominantLanguage(first ? first->text : std::string_view())
                          .value_or(std::string(fallbackLanguage));
    m_state = std::move(state);
}

const std::string& VectorIndex::language() const {
    return m_state->language;
}

std::size_t VectorIndex::size() const {
    return m_state->order.size();
}

double VectorIndex::cosineSimilarity(const Vector& a, const Vector& b) {
    if (a.size() != b.size() || a.empty()) {
        return 0;
    }
    const double normA = dotProduct(a.data(), a.data(), a.size());
    const double normB = dotProduct(b.data(), b.data(), b.size());
    if (!(normA > 0) || !(normB > 0)) {
        return 0;
    }
    return dotProduct(a.data(), b.data(), a.size()) / (std::sqrt(normA) * std::sqrt(normB));
}

std::vector<VectorIndex::Entry> VectorIndex::search(const Vector& queryVector,
                                                    std::int64_t topK) const {
    const State& state = *m_state;
    if (topK <= 0 || state.order.size() == 0) {
        return {};
    }
    const IndexedChunks& corpus = state.order.corpus();
    const std::size_t limit = std::min<std::uint64_t>(state.order.size(), topK);
    std::vector<ChunkOrder::Scored> scored;
    const auto add = [&](std::size_t document, std::uint32_t chunk, double similarity) {
        if (similarity > 0) {
            scored.push_back({state.order.start(document) + chunk, similarity});
        }
    };
    const auto compare = [&](std::size_t document, std::uint32_t chunk) {
        const Vector& embedding = *corpus[document].chunks[chunk].embedding;
        add(document, chunk, cosineSimilarity(queryVector, embedding));
    };

    // A chunk is a candidate as long as no `limit` others are surely nearer.
    struct Candidate {
        std::size_t document = 0;
        std::size_t place = 0;
        float most = 0;
    };
    std::vector<Candidate> candidates;
    Greatest greatest(limit);
    std::vector<PackedVectors::Bounds> bounds;
    const PackedVectors::Query query(queryVector);
    for (std::size_t document = 0; document < corpus.size(); ++document) {
        const PackedVectors* const packed = state.packed[document].get();
        if (!packed) {
            continue;
        }
        for (const std::uint32_t chunk : packed->others()) {
            compare(document, chunk);
        }
        if (packed->dimension() != queryVector.size()) {
            continue; // similarity 0
        }
        if (!query.isPacked()) {
            for (const std::uint32_t chunk : packed->chunks()) {
                compare(document, chunk);
            }
            continue;
        }
        packed->bound(query, bounds);
        for (std::size_t place = 0; place < bounds.size(); ++place) {
            if (bounds[place].most > std::max(greatest.least(), 0.0F)) {
                greatest.offer(bounds[place].least);
                candidates.push_back({document, place, bounds[place].most});
            }
        }
    }

    const double queryNorm =
        std::sqrt(dotProduct(queryVector.data(), queryVector.data(), queryVector.size()));
    const float least = std::max(greatest.least(), 0.0F);
    for (const Candidate& candidate : candidates) {
        if (candidate.most < least) {
            continue;
        }
        const PackedVectors& packed = *state.packed[candidate.document];
        const std::uint32_t chunk = packed.chunks()[candidate.place];
        const Vector& embedding = *corpus[candidate.document].chunks[chunk].embedding;
        const double dot = dotProduct(queryVector.data(), embedding.data(), embedding.size());
        add(candidate.document, chunk, dot / (queryNorm * packed.norm(candidate.place)));
    }
    return state.order.best(std::move(scored), topK);
}

} // namespace ombrel

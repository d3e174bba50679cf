#include "core/IndexedChunks.h"

#include <algorithm>

namespace ombrel {

std::size_t chunkCount(const IndexedChunks& pairs) {
    std::size_t count = 0;
    for (const auto& entry : pairs) {
        count += entry.chunks.size();
    }
    return count;
}

const DocumentChunk* firstChunk(const IndexedChunks& pairs) {
    for (const auto& entry : pairs) {
        if (!entry.chunks.empty()) {
            return &entry.chunks[0];
        }
    }
    return nullptr;
}

bool allHaveEmbeddings(const IndexedChunks& pairs) {
    return firstChunk(pairs) && std::ranges::all_of(pairs, [](const IndexedDocument& entry) {
               return std::ranges::all_of(entry.chunks.values(), [](const DocumentChunk& chunk) {
                   return chunk.embedding.has_value();
               });
           });
}

} // namespace ombrel

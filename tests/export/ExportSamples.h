#pragma once

#include "core/AppState.h"
#include "core/IndexedChunks.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace ombrel::test {

inline DocumentChunk chunkOf(std::string text, std::optional<std::vector<double>> embedding = {}) {
    DocumentChunk chunk;
    chunk.id = Uuid::random();
    chunk.breadcrumb = {"Guide", "Start"};
    chunk.text = std::move(text);
    chunk.tokenCount = 7;
    chunk.embedding = std::move(embedding);
    return chunk;
}

inline IndexedDocument documentOf(std::string name, std::vector<DocumentChunk> chunks) {
    IndexedDocument entry;
    entry.document.id = Uuid::random();
    entry.document.name = std::move(name);
    entry.document.chunkCount = static_cast<std::int64_t>(chunks.size());
    entry.chunks = std::move(chunks);
    return entry;
}

// Adds the document to the current index.
inline void addTo(AppState& state, const IndexedDocument& entry) {
    auto index = state.editCurrentIndex();
    index->sources.push_back(entry.document);
    index->chunksByDocument[entry.document.id] = entry.chunks;
}

} // namespace ombrel::test

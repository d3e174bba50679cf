#pragma once

#include "core/IndexedChunks.h"
#include "platform/SentenceEmbedder.h"

#include <optional>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace ombrel::test {

inline DocumentChunk makeChunk(std::string text, std::optional<Vector> embedding = std::nullopt) {
    DocumentChunk chunk;
    chunk.id = Uuid::random();
    chunk.text = std::move(text);
    chunk.embedding = std::move(embedding);
    return chunk;
}

inline IndexedDocument makeDocument(std::vector<DocumentChunk> chunks) {
    IndexedDocument entry;
    entry.document.id = Uuid::random();
    entry.document.name = "Document";
    entry.chunks = std::move(chunks);
    return entry;
}

// One document of chunks with these texts.
inline IndexedChunks makeCorpus(const std::vector<std::string>& texts) {
    std::vector<DocumentChunk> chunks;
    for (const std::string& text : texts) {
        chunks.push_back(makeChunk(text));
    }
    return {makeDocument(std::move(chunks))};
}

// One document of chunks with these embeddings.
inline IndexedChunks makeCorpus(const std::vector<std::optional<Vector>>& embeddings) {
    std::vector<DocumentChunk> chunks;
    for (const std::optional<Vector>& embedding : embeddings) {
        chunks.push_back(makeChunk("text", embedding));
    }
    return {makeDocument(std::move(chunks))};
}

using Random = std::mt19937_64;

// A number below `bound`.
inline std::size_t below(Random& random, std::size_t bound) {
    return random() % bound;
}

} // namespace ombrel::test

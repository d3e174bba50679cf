#include "knowledge/IndexReport.h"

#include <algorithm>

namespace ombrel {

std::vector<IndexTile> indexTiles(const AppState& state) {
    const RAGIndex& index = state.currentIndex();
    const IndexKind kind = state.currentVariant().settings.index;
    std::size_t chunks = 0;
    std::int64_t embedded = 0;
    std::int64_t groups = 0;
    for (const IndexedDocument& entry : index.indexedChunks()) {
        chunks += entry.chunks.size();
        embedded += std::ranges::count_if(entry.chunks.values(), [](const DocumentChunk& chunk) {
            return chunk.embedding.has_value();
        });
        groups += parentGroupCount(entry.chunks);
    }
    const bool isEmbedded = chunks > 0 && static_cast<std::size_t>(embedded) == chunks;
    return {{"Chunks", std::to_string(chunks),
             "across " + std::to_string(index.sources.size()) + " document(s)"},
            {"Index", std::string(rawValue(kind)), std::string(subtitle(kind))},
            {"Embedded", std::to_string(embedded), isEmbedded ? "fully embedded" : "needs a build"},
            {"Parent groups", std::to_string(groups), "chunks with a larger parent"}};
}

std::int64_t parentGroupCount(const std::vector<DocumentChunk>& chunks) {
    // A group ends where its chunks' texts, with a blank line between, are as long as its text:
    // lengths tell groups of equal texts apart, and no text has to be read.
    constexpr std::size_t blankLine = 2;
    std::int64_t count = 0;
    bool isInGroup = false;
    std::size_t whole = 0;   // the length of the group's text
    std::size_t covered = 0; // how much of it the chunks so far make up
    for (const DocumentChunk& chunk : chunks) {
        if (!chunk.parentText) {
            isInGroup = false;
            continue;
        }
        const std::size_t next = covered + blankLine + chunk.text.size();
        if (isInGroup && chunk.parentText->size() == whole && next <= whole) {
            covered = next;
        } else {
            count += 1;
            isInGroup = true;
            whole = chunk.parentText->size();
            covered = chunk.text.size();
        }
    }
    return count;
}

std::string sectionTotals(const SourceDocument& source) {
    return std::to_string(source.chunkCount) + " chunks \u00b7 " +
           std::to_string(source.tokenCount) + " tok";
}

} // namespace ombrel

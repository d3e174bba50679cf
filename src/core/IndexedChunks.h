#pragma once

#include "core/DocumentChunk.h"
#include "core/SourceDocument.h"

#include <cstddef>
#include <vector>

namespace ombrel {

// A document with the chunks that searching it goes through.
struct IndexedDocument {
    SourceDocument document;
    ChunkArray chunks;
};

// The (document, chunk) pairs of an index, document by document in display order, chunks in array
// order. This order decides all ties. Cheap: it shares the chunk arrays.
using IndexedChunks = std::vector<IndexedDocument>;

std::size_t chunkCount(const IndexedChunks& pairs);
// The first chunk of all, or nothing.
const DocumentChunk* firstChunk(const IndexedChunks& pairs);
// Whether there are chunks and every one has an embedding (an empty one counts).
bool allHaveEmbeddings(const IndexedChunks& pairs);

} // namespace ombrel

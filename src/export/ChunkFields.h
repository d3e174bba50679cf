#pragma once

#include "core/DocumentChunk.h"

#include <cstdint>
#include <string_view>

namespace ombrel {

// The head of Chunks.swift, in each form: what the file is, and the declaration of `RAGChunk` up to
// its closing brace.
extern const std::string_view chunkDeclaration;

// The tokens that sending the chunk to the model costs.
std::int64_t packTokenCount(const DocumentChunk& chunk);

} // namespace ombrel

#pragma once

#include "core/IndexedChunks.h"

#include <string>

namespace ombrel {

// Chunks.swift with all strings and numbers packed into one string literal, which is decoded when
// the chunks are first used. Takes every text and number, and linear time to compile.
std::string compactChunksSource(const IndexedChunks& pairs);

} // namespace ombrel

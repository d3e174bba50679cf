#pragma once

#include "core/BuildSettings.h"
#include "core/IndexedChunks.h"

#include <string>
#include <string_view>

// The text of each file of a generated package, whole, in UTF-8.
namespace ombrel {

// Package.swift.
std::string manifestSource(std::string_view packageName);

// Chunks.swift with one array literal.
std::string chunksSource(const IndexedChunks& pairs);

// KeywordIndex.swift: the algorithm of retrieval/KeywordIndex.h over the package's own chunks.
std::string_view keywordIndexSource();
// VectorIndex.swift: that of retrieval/VectorIndex.h.
std::string_view vectorIndexSource();

// {packageName}.swift, the public interface. `language` is a BCP 47 identifier.
std::string interfaceSource(std::string_view packageName, const BuildSettings& settings,
                            std::string_view language);

} // namespace ombrel

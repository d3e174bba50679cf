#pragma once

#include "core/IndexedChunks.h"

#include <optional>
#include <string>

namespace ombrel {

// Tells in one line why a Swift compiler would not take the chunks as an array literal, or would
// take more than a minute for it; nothing when all is well. The compact form, which the line names,
// takes them all.
std::optional<std::string> arrayLiteralWarning(const IndexedChunks& pairs);

// The seconds of processor time that a release build needs for the array literal: a rough estimate
// from measurements on one machine (Swift 6.3, one core of a server).
double estimatedCompileSeconds(const IndexedChunks& pairs);

} // namespace ombrel

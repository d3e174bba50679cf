#pragma once

#include "core/BuildSettings.h"
#include "core/SourceDocument.h"

#include <string>
#include <string_view>

// What the faces of the system say about sources.
namespace ombrel {

inline constexpr std::string_view dropAreaText = "Drop folders or files \u2014 Markdown, text, PDF";
inline constexpr std::string_view importProblemTitle = "Import problem";
inline constexpr std::string_view pasteNote =
    "Chunked with the current Settings \u2014 same pipeline as an imported file.";

// "Markdown", "PDF · 12 pp".
std::string sourceTypeText(const SourceDocument& source);
// "avg 310 tokens / chunk": the mean without its fraction; 0 without chunks.
std::string averageChunkText(const SourceDocument& source);
// What a status that isn't ready means for searching, and what the user can do; empty for `ready`.
// The status was found under `settings` or earlier ones.
std::string statusAdvice(const SourceDocument& source, const BuildSettings& settings);

} // namespace ombrel

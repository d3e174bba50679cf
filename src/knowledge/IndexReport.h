#pragma once

#include "core/AppState.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// What the user is told about what a build produced, of the current index with the settings in
// force. Main thread.
namespace ombrel {

inline constexpr std::string_view noSourcesNote =
    "No sources yet \u2014 add documents in Sources first.";
inline constexpr std::string_view noChunksNote = "No chunks yet.";

struct IndexTile {
    std::string title;
    std::string value;
    std::string subtitle;
    bool operator==(const IndexTile&) const = default;
};
// The four figures, in order.
std::vector<IndexTile> indexTiles(const AppState& state);

// How many groups the chunks of a document stand in, of those that have the text of a group.
std::int64_t parentGroupCount(const std::vector<DocumentChunk>& chunks);

// "12 chunks · 3400 tok".
std::string sectionTotals(const SourceDocument& source);

} // namespace ombrel

#pragma once

#include "core/AppState.h"
#include "core/RAGIndex.h"
#include "knowledge/Build.h"
#include "platform/Date.h"

#include <string>
#include <string_view>

// What the faces of the system say about the build.
namespace ombrel {

inline constexpr std::string_view buildHelp =
    "Build \u2014 re-chunk sources and apply enrichment (\u2318B)";
inline constexpr std::string_view staleBuildHelp =
    "Settings changed since the last build \u2014 click to rebuild (\u2318B)";
inline constexpr std::string_view staleSettingsNote =
    "These changes haven't been built yet \u2014 click Build in the toolbar (\u2318B), or see the "
    "Index tab for what's still live.";
inline constexpr std::string_view staleIndexNote =
    "Settings have changed since the last build \u2014 everything below still reflects the "
    "previous build.";
inline constexpr std::string_view enrichmentCostNote =
    "Contextual notes and Generated questions need Apple Intelligence and run one model call per "
    "chunk \u2014 Parent\u2013child applies instantly.";
inline constexpr std::string_view missingEmbeddingsNote =
    "This index needs embeddings for the current chunks \u2014 click Build in the toolbar.";
inline constexpr std::string_view applyToExistingChunksLabel = "Apply to existing chunks";

// The help of the "Build" button.
std::string_view buildButtonHelp(const AppState& state);

// The build status beside the tabs: how far a running step of the build is, else whether and when
// the project was built. `now` is what relative dates count from.
std::string buildStatusText(const AppState& state, Date now);

// "Enriching chunks — 3 of 12".
std::string enrichingText(Progress progress);

// How long ago `then` was: "just now", "1 minute ago", "3 hours ago", "12 days ago". A moment that
// is yet to come was just now.
std::string relativeDate(Date then, Date now);

} // namespace ombrel

#pragma once

#include "core/AppState.h"
#include "knowledge/ChunkEnrichment.h"
#include "knowledge/ParentText.h"
#include "platform/Task.h"

#include <memory>

// What follows when chunks have been made: enrichment, embeddings, and the record of the build.
// Main thread; the tasks end when everything that they started has ended.
namespace ombrel {

// Whether the settings in force differ from those of the last build of the project in what shapes
// the built knowledge. True before the first build.
bool settingsChangedSinceBuild(const AppState& state);

// Brings the chunks of the current index into line with the enrichments of the settings in force,
// asking the model for what is missing, one chunk after the other (`isEnriching`,
// `enrichProgress`), and ends with `finishBuild`. Does nothing while a pass runs on the index.
// Chunks that are replaced, or whose index is switched away from, while the model answers take
// nothing.
Task<void> applyEnrichment(std::shared_ptr<AppState> state);

// Fills in embeddings and records the build as succeeded.
Task<void> finishBuild(std::shared_ptr<AppState> state);

// Computes the embedding of every chunk of the current index that has none, if the settings in
// force use vectors (`embedProgress`). Suspends while the service works; a chunk that changes
// meanwhile takes nothing. A chunk for which the service gives nothing stays without.
Task<void> fillEmbeddings(std::shared_ptr<AppState> state);

} // namespace ombrel

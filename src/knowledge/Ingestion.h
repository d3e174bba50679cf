#pragma once

#include "core/AppState.h"
#include "knowledge/DocumentIngestion.h"
#include "platform/Task.h"
#include "platform/Uuid.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

// How sources come into the current RAG index and are read again. Main thread. What the user has
// to know of a failure is in `RAGIndex::importError` afterwards. Reading suspends now and then, so
// that the window stays alive, and `RAGIndex::importProgress` counts the files; the documents go
// to the index that was current at the start, and reading stops when that one is deleted. Each of
// the tasks ends when the enrichment and the build that it started have ended.
namespace ombrel {

// Imports files and folders, in the order given. A file that is a source already is replaced.
Task<void> importFiles(std::shared_ptr<AppState> state, std::vector<std::filesystem::path> urls);

// Imports files that `discoverFiles` gave into the index with the id, which need not be the current
// one any more; nothing happens when it is gone.
Task<void> importDiscovered(std::shared_ptr<AppState> state, Uuid indexID,
                            std::vector<std::filesystem::path> files);

// Reads every source again under the settings in force: the "Build" and "Re-scan Sources"
// commands. Enrichment of chunks that come out the same is kept.
Task<void> rescanAll(std::shared_ptr<AppState> state);

// Adds a pasted text, or replaces the source with `existingID`. With `deferFinish` neither the
// build nor a checkpoint follows.
Task<void> addPastedText(std::shared_ptr<AppState> state, std::optional<Uuid> existingID,
                         std::string title, std::string text, bool deferFinish);

// Removes the source and its chunks. No build follows.
void removeSource(AppState& state, Uuid id);

} // namespace ombrel

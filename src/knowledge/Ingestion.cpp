#include "knowledge/Ingestion.h"

#include "core/FindByID.h"
#include "knowledge/Build.h"
#include "knowledge/TurnBudget.h"
#include "platform/MainExecutor.h"
#include "platform/Text.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace ombrel {

namespace {

namespace fs = std::filesystem;
using Ingested = DocumentIngestion::Ingested;

// Says how many files have been read; false when the index is gone.
bool setProgress(AppState& state, Uuid indexID, std::size_t completed, std::size_t total) {
    return state.editIndex(indexID, [&](RAGIndex& index) {
        index.importProgress =
            Progress{static_cast<std::int64_t>(completed), static_cast<std::int64_t>(total)};
    });
}

void addImported(RAGIndex& index, Ingested read) {
    std::erase_if(index.sources, [&](const SourceDocument& source) {
        return source.fileURL == read.document.fileURL;
    });
    index.chunksByDocument[read.document.id] = std::move(read.chunks);
    index.selectedSourceID = read.document.id;
    index.sources.push_back(std::move(read.document));
}

// Puts the document and its chunks in the place of what was read before; false when its source is
// gone.
bool replaceSource(RAGIndex& index, Ingested read) {
    SourceDocument* place = findByID(index.sources, read.document.id);
    if (!place) {
        return false;
    }
    ChunkArray& chunks = index.chunksByDocument[read.document.id];
    chunks = carryOverEnrichment(std::move(read.chunks), chunks);
    *place = std::move(read.document);
    return true;
}

// The end of reading on an index that still exists. What was read into an index that is no longer
// the current one is built when the user comes back and builds it: a build is always one of the
// current index.
Task<void> endReading(std::shared_ptr<AppState> state, Uuid indexID,
                      std::optional<std::string> lastError) {
    state->editIndex(indexID, [](RAGIndex& index) { index.importProgress.reset(); });
    state->editCurrentIndex()->importError = std::move(lastError);
    state->scheduleCheckpoint();
    if (state->currentIndex().id == indexID) {
        co_await applyEnrichment(state);
    }
}

} // namespace

Task<void> importFiles(std::shared_ptr<AppState> state, std::vector<fs::path> urls) {
    std::vector<fs::path> files;
    for (const fs::path& url : urls) {
        std::ranges::move(discoverFiles(url), std::back_inserter(files));
    }
    co_await importDiscovered(state, state->currentIndex().id, std::move(files));
}

Task<void> importDiscovered(std::shared_ptr<AppState> state, Uuid indexID,
                            std::vector<fs::path> files) {
    const RAGIndex* target = state->ragIndex(indexID);
    if (!target) {
        co_return;
    }
    const BuildSettings settings = target->currentSettings();
    const Platform platform = state->platform();
    std::optional<std::string> lastError;
    TurnBudget turn(*platform.executor);
    for (std::size_t i = 0; i < files.size(); ++i) {
        if (!setProgress(*state, indexID, i, files.size())) {
            co_return;
        }
        Result<Ingested> read =
            co_await DocumentIngestion::readDocument(platform, files[i], settings, std::nullopt);
        if (read) {
            state->editIndex(indexID,
                             [&](RAGIndex& index) { addImported(index, std::move(*read)); });
        } else {
            lastError = "Couldn't read " + repairUtf8(files[i].filename().string()) + ": " +
                        read.error().message;
        }
        co_await turn.giveWay();
    }
    if (state->ragIndex(indexID)) {
        co_await endReading(state, indexID, std::move(lastError));
    }
}

Task<void> rescanAll(std::shared_ptr<AppState> state) {
    const Uuid indexID = state->currentIndex().id;
    const BuildSettings settings = state->currentVariant().settings;
    const Platform platform = state->platform();
    const std::vector<SourceDocument> sources = state->currentIndex().sources;
    std::optional<std::string> lastError;
    TurnBudget turn(*platform.executor);
    for (std::size_t i = 0; i < sources.size(); ++i) {
        const SourceDocument& source = sources[i];
        if (!setProgress(*state, indexID, i, sources.size())) {
            co_return;
        }
        if (source.fileURL) {
            Result<Ingested> read = co_await DocumentIngestion::readDocument(
                platform, *source.fileURL, settings, source.id);
            if (read) {
                state->editIndex(indexID,
                                 [&](RAGIndex& index) { replaceSource(index, std::move(*read)); });
            } else {
                lastError = "Couldn't re-scan " + source.name + ": " + read.error().message;
            }
        } else if (source.pastedText) {
            state->editIndex(indexID, [&](RAGIndex& index) {
                if (replaceSource(
                        index, DocumentIngestion::readPastedText(
                                   source.name, source.pastedText->text(), settings, source.id))) {
                    index.selectedSourceID = source.id;
                }
            });
        }
        co_await turn.giveWay();
    }
    if (state->ragIndex(indexID)) {
        co_await endReading(state, indexID, std::move(lastError));
    }
}

Task<void> addPastedText(std::shared_ptr<AppState> state, std::optional<Uuid> existingID,
                         std::string title, std::string text, bool deferFinish) {
    Ingested read = DocumentIngestion::readPastedText(title, text, state->currentVariant().settings,
                                                      existingID);
    {
        auto index = state->editCurrentIndex();
        const Uuid id = read.document.id;
        // A source that is gone by now comes back: what the user typed is never dropped.
        if (findByID(index->sources, id)) {
            replaceSource(*index, std::move(read));
        } else {
            index->chunksByDocument[id] = std::move(read.chunks);
            index->sources.push_back(std::move(read.document));
        }
        index->selectedSourceID = id;
    }
    if (!deferFinish) {
        state->scheduleCheckpoint();
        co_await applyEnrichment(state);
    }
}

void removeSource(AppState& state, Uuid id) {
    {
        auto index = state.editCurrentIndex();
        std::erase_if(index->sources,
                      [&](const SourceDocument& source) { return source.id == id; });
        index->chunksByDocument.erase(id);
        if (index->selectedSourceID == id) {
            index->selectedSourceID.reset();
            if (!index->sources.empty()) {
                index->selectedSourceID = index->sources.front().id;
            }
        }
    }
    state.scheduleCheckpoint();
}

} // namespace ombrel

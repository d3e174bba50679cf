#include "knowledge/Build.h"

#include "knowledge/TurnBudget.h"
#include "platform/LanguageRecognizer.h"
#include "platform/MainExecutor.h"
#include "platform/SentenceEmbedder.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace ombrel {

namespace {

// What the settings want of each chunk.
struct EnrichmentPlan {
    bool wantNotes = false;
    bool wantQuestions = false;
    bool wantParents = false;
    std::int64_t parentBudget = 1; // tokens
    std::int64_t questionCount = 1;

    explicit EnrichmentPlan(const BuildSettings& settings)
        : wantNotes(settings.enrichments.contains(Enrichment::contextualNotes)),
          wantQuestions(settings.enrichments.contains(Enrichment::generatedQuestions)),
          wantParents(settings.enrichments.contains(Enrichment::parentChild)) {
        constexpr std::int64_t largest = std::numeric_limits<std::int64_t>::max() / 4;
        const std::int64_t target =
            std::clamp(truncated(settings.targetChunkSize), -largest, largest);
        parentBudget = std::max<std::int64_t>(target * 4, 1);
        questionCount = std::max<std::int64_t>(truncated(settings.generatedQuestionsPerChunk), 1);
    }

    bool needsNote(const DocumentChunk& chunk) const { return wantNotes && !chunk.contextualNote; }
    bool needsQuestions(const DocumentChunk& chunk) const {
        return wantQuestions && (!chunk.generatedQuestions || count(chunk) < questionCount);
    }
    bool hasUnwantedNote(const DocumentChunk& chunk) const {
        return !wantNotes && chunk.contextualNote;
    }
    bool hasUnwantedQuestions(const DocumentChunk& chunk) const {
        return count(chunk) > (wantQuestions ? questionCount : 0);
    }

    static std::int64_t count(const DocumentChunk& chunk) {
        return chunk.generatedQuestions
                   ? static_cast<std::int64_t>(chunk.generatedQuestions->size())
                   : 0;
    }
};

// The chunks without the enrichment that is not wanted, and with their parents as wanted. The same
// array when nothing changes.
ChunkArray aligned(ChunkArray chunks, const EnrichmentPlan& plan) {
    chunks = plan.wantParents ? assignParentText(std::move(chunks), plan.parentBudget)
                              : clearParentText(std::move(chunks));
    for (std::size_t i = 0; i < chunks.size(); ++i) {
        const bool dropNote = plan.hasUnwantedNote(chunks[i]);
        const bool dropQuestions = plan.hasUnwantedQuestions(chunks[i]);
        if (!dropNote && !dropQuestions) {
            continue;
        }
        DocumentChunk& chunk = chunks.edit()[i];
        chunk.embedding.reset();
        if (dropNote) {
            chunk.contextualNote.reset();
        }
        if (dropQuestions && !plan.wantQuestions) {
            chunk.generatedQuestions.reset();
        } else if (dropQuestions && chunk.generatedQuestions) {
            chunk.generatedQuestions->resize(static_cast<std::size_t>(plan.questionCount));
        }
    }
    return chunks;
}

void alignCurrentIndex(AppState& state, const EnrichmentPlan& plan) {
    std::vector<std::pair<Uuid, ChunkArray>> changed;
    for (const auto& [documentID, chunks] : state.currentIndex().chunksByDocument) {
        ChunkArray wanted = aligned(chunks, plan);
        if (wanted.identity() != chunks.identity()) {
            changed.emplace_back(documentID, std::move(wanted));
        }
    }
    if (changed.empty()) {
        return;
    }
    auto index = state.editCurrentIndex();
    for (auto& [documentID, chunks] : changed) {
        index->chunksByDocument[documentID] = std::move(chunks);
    }
}

// Where a chunk stood when it was last seen.
struct ChunkPlace {
    Uuid documentID;
    Uuid chunkID;
    std::size_t position = 0;
};

// The chunk in the index, wherever it stands by now; null when it is gone. `place.position` is set
// to where it was found.
const DocumentChunk* findChunk(const RAGIndex& index, ChunkPlace& place) {
    const auto entry = index.chunksByDocument.find(place.documentID);
    if (entry == index.chunksByDocument.end()) {
        return nullptr;
    }
    const std::vector<DocumentChunk>& chunks = entry->second;
    if (place.position >= chunks.size() || chunks[place.position].id != place.chunkID) {
        const auto found = std::ranges::find(chunks, place.chunkID, &DocumentChunk::id);
        if (found == chunks.end()) {
            return nullptr;
        }
        place.position = static_cast<std::size_t>(found - chunks.begin());
    }
    return &chunks[place.position];
}

// Write access to a chunk that `findChunk` has just found.
DocumentChunk& editFound(RAGIndex& index, const ChunkPlace& place) {
    return index.chunksByDocument.find(place.documentID)->second.edit()[place.position];
}

// A chunk that the model is to write about, as it was when the pass began.
struct PendingItem {
    std::size_t document = 0; // in the pairs that the pass began with
    std::size_t chunk = 0;
};

std::vector<PendingItem> pendingItems(const IndexedChunks& pairs, const EnrichmentPlan& plan) {
    std::vector<PendingItem> pending;
    for (std::size_t document = 0; document < pairs.size(); ++document) {
        const std::vector<DocumentChunk>& chunks = pairs[document].chunks;
        for (std::size_t chunk = 0; chunk < chunks.size(); ++chunk) {
            if (plan.needsNote(chunks[chunk]) || plan.needsQuestions(chunks[chunk])) {
                pending.push_back({document, chunk});
            }
        }
    }
    return pending;
}

void storeEnrichment(AppState& state, ChunkPlace place, std::optional<std::string> note,
                     std::vector<std::string> questions) {
    if (!note && questions.empty()) {
        return;
    }
    if (!findChunk(state.currentIndex(), place)) {
        return;
    }
    auto index = state.editCurrentIndex();
    DocumentChunk& chunk = editFound(*index, place);
    if (note) {
        chunk.contextualNote = std::move(note);
    }
    if (!questions.empty()) {
        chunk.generatedQuestions = std::move(questions);
    }
    chunk.embedding.reset();
}

// Asks the model about each item, in order.
Task<void> runPass(std::shared_ptr<AppState> state, Uuid indexID, EnrichmentPlan plan,
                   IndexedChunks pairs, std::vector<PendingItem> pending) {
    const auto total = static_cast<std::int64_t>(pending.size());
    const std::shared_ptr<OnDeviceModel> model = state->platform().model;
    TurnBudget turn(*state->platform().executor);
    state->editIndex(indexID, [&](RAGIndex& index) {
        index.isEnriching = true;
        index.enrichProgress = Progress{0, total};
    });
    for (std::size_t i = 0; i < pending.size(); ++i) {
        const IndexedDocument& source = pairs[pending[i].document];
        const DocumentChunk& chunk = source.chunks[pending[i].chunk];
        std::optional<std::string> note;
        if (plan.needsNote(chunk)) {
            note = co_await contextualNote(model, chunk, source.document.name);
        }
        std::vector<std::string> questions;
        if (plan.needsQuestions(chunk)) {
            questions = co_await generateQuestions(model, chunk, plan.questionCount);
        }
        storeEnrichment(*state, {source.document.id, chunk.id, pending[i].chunk}, std::move(note),
                        std::move(questions));
        state->editIndex(indexID, [&](RAGIndex& index) {
            index.enrichProgress = Progress{static_cast<std::int64_t>(i) + 1, total};
        });
        co_await turn.giveWay();
    }
    state->editIndex(indexID, [](RAGIndex& index) {
        index.isEnriching = false;
        index.enrichProgress.reset();
    });
}

// A document with chunks to embed.
struct Unembedded {
    std::string language;
    std::vector<ChunkPlace> places;
};

std::vector<ChunkPlace> placesWithoutEmbedding(Uuid documentID,
                                               const std::vector<DocumentChunk>& chunks) {
    std::vector<ChunkPlace> places;
    for (std::size_t i = 0; i < chunks.size(); ++i) {
        if (!chunks[i].embedding) {
            places.push_back({documentID, chunks[i].id, i});
        }
    }
    return places;
}

// The language of a document, told from its first three chunks.
std::string documentLanguage(const std::vector<DocumentChunk>& chunks,
                             const LanguageRecognizer& languages) {
    std::string sample;
    for (std::size_t i = 0; i < std::min<std::size_t>(chunks.size(), 3); ++i) {
        sample += i == 0 ? "" : "\n";
        sample += chunks[i].text;
    }
    return languages.dominantLanguage(sample).value_or(std::string(fallbackLanguage));
}

// What is to be embedded in the current index, by language in order of appearance, so that
// documents of a chunk or two share a request.
std::vector<Unembedded> unembeddedChunks(const AppState& state) {
    std::vector<Unembedded> all;
    for (const auto& [documentID, chunks] : state.currentIndex().chunksByDocument) {
        std::vector<ChunkPlace> places = placesWithoutEmbedding(documentID, chunks);
        if (places.empty()) {
            continue;
        }
        std::string language = documentLanguage(chunks, *state.platform().languages);
        if (!state.platform().embedder->supports(language)) {
            continue;
        }
        auto same = std::ranges::find(all, language, &Unembedded::language);
        if (same == all.end()) {
            same = all.insert(all.end(), Unembedded{std::move(language), {}});
        }
        std::ranges::move(places, std::back_inserter(same->places));
    }
    return all;
}

// One request to the embedding service: texts, and whose they are.
struct Batch {
    std::vector<ChunkPlace> places;
    std::vector<std::string> texts;
};

// The next chunks from `next` on that still are in the current index without an embedding.
Batch takeBatch(const AppState& state, std::vector<ChunkPlace>& places, std::size_t& next) {
    const std::size_t size = std::max<std::size_t>(state.platform().embedder->batchSize(), 1);
    Batch batch;
    for (; next < places.size() && batch.texts.size() < size; ++next) {
        const DocumentChunk* chunk = findChunk(state.currentIndex(), places[next]);
        if (chunk && !chunk->embedding) {
            batch.places.push_back(places[next]);
            batch.texts.push_back(chunk->searchText());
        }
    }
    return batch;
}

// Stores the vectors on the chunks that are still what was embedded.
void storeVectors(AppState& state, Batch batch, std::vector<std::optional<Vector>> vectors) {
    auto index = state.editCurrentIndex();
    for (std::size_t i = 0; i < std::min(batch.places.size(), vectors.size()); ++i) {
        std::optional<Vector>& vector = vectors[i];
        const DocumentChunk* chunk = findChunk(*index, batch.places[i]);
        if (vector && chunk && !chunk->embedding && chunk->searchText() == batch.texts[i]) {
            editFound(*index, batch.places[i]).embedding = std::move(*vector);
        }
    }
}

} // namespace

bool settingsChangedSinceBuild(const AppState& state) {
    const std::optional<BuildSettings>& built = state.project->lastBuiltSettings;
    return !built || !state.currentVariant().settings.matchesBuild(*built);
}

Task<void> applyEnrichment(std::shared_ptr<AppState> state) {
    if (state->currentIndex().isEnriching) {
        co_return;
    }
    const Uuid indexID = state->currentIndex().id;
    const EnrichmentPlan plan(state->currentVariant().settings);
    alignCurrentIndex(*state, plan);
    IndexedChunks pairs = state->indexedChunks();
    std::vector<PendingItem> pending = pendingItems(pairs, plan);
    if (!pending.empty()) {
        co_await runPass(state, indexID, plan, std::move(pairs), std::move(pending));
    }
    co_await finishBuild(state);
}

Task<void> finishBuild(std::shared_ptr<AppState> state) {
    co_await fillEmbeddings(state);
    {
        auto project = state->project.edit();
        project->lastBuildFinishedAt = Date::now();
        project->lastBuiltDescription = "Build Succeeded";
        project->lastBuiltSettings = state->currentVariant().settings;
    }
    state->scheduleCheckpoint();
}

Task<void> fillEmbeddings(std::shared_ptr<AppState> state) {
    const IndexKind kind = state->currentVariant().settings.index;
    if (kind != IndexKind::vector && kind != IndexKind::hybrid) {
        co_return;
    }
    const Uuid indexID = state->currentIndex().id;
    const std::shared_ptr<SentenceEmbedder> embedder = state->platform().embedder;
    std::vector<Unembedded> all = unembeddedChunks(*state);
    Progress progress;
    for (const Unembedded& group : all) {
        progress.total += static_cast<std::int64_t>(group.places.size());
    }
    TurnBudget turn(*state->platform().executor);
    const auto show = [&](std::optional<Progress> shown) {
        state->editIndex(indexID, [&](RAGIndex& index) { index.embedProgress = shown; });
    };
    std::int64_t before = 0; // chunks of the languages that are done
    for (Unembedded& group : all) {
        std::size_t next = 0;
        while (next < group.places.size()) {
            progress.completed = before + static_cast<std::int64_t>(next);
            show(progress);
            Batch batch = takeBatch(*state, group.places, next);
            if (batch.texts.empty()) {
                continue;
            }
            std::vector<std::optional<Vector>> vectors =
                co_await embedder->vectors(group.language, batch.texts);
            storeVectors(*state, std::move(batch), std::move(vectors));
            co_await turn.giveWay();
        }
        before += static_cast<std::int64_t>(group.places.size());
    }
    if (progress.total > 0) {
        show(std::nullopt);
    }
}

} // namespace ombrel

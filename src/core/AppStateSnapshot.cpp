#include "core/AppState.h"

#include "platform/MainExecutor.h"

#include <chrono>
#include <filesystem>
#include <system_error>
#include <utility>

namespace ombrel {

namespace {

constexpr auto checkpointDelay = std::chrono::milliseconds(400);

PersistedSourceDocument persisted(const SourceDocument& source) {
    PersistedSourceDocument result;
    result.id = source.id;
    result.name = source.name;
    result.type = source.type;
    result.pageCount = source.pageCount;
    result.chunkCount = source.chunkCount;
    result.tokenCount = source.tokenCount;
    result.status = source.status;
    if (source.fileURL) {
        result.bookmarkData = Data{source.fileURL->native()};
    }
    result.pastedText = source.pastedText;
    return result;
}

// The file that a bookmark leads to, if it is still there. A project file can hold any bytes.
std::optional<std::filesystem::path> resolved(const Data& bookmark) {
    std::filesystem::path path(bookmark.bytes);
    std::error_code ignored;
    if (bookmark.bytes.find('\0') != std::string::npos || !path.is_absolute() ||
        !std::filesystem::exists(path, ignored)) {
        return std::nullopt;
    }
    return path;
}

SourceDocument restored(const PersistedSourceDocument& source) {
    SourceDocument result;
    result.id = source.id;
    result.name = source.name;
    result.type = source.type;
    result.pageCount = source.pageCount;
    result.chunkCount = source.chunkCount;
    result.tokenCount = source.tokenCount;
    result.status = source.status;
    if (source.bookmarkData) {
        result.fileURL = resolved(*source.bookmarkData);
    }
    result.pastedText = source.pastedText;
    return result;
}

PersistedRAGIndex persisted(const RAGIndex& index) {
    PersistedRAGIndex result;
    result.id = index.id;
    result.name = index.name;
    result.sources.reserve(index.sources.size());
    for (const auto& source : index.sources) {
        result.sources.push_back(persisted(source));
    }
    result.chunksByDocument = index.chunksByDocument;
    result.variants = index.variants;
    result.selectedVariantID = index.selectedVariantID;
    result.selectedSourceID = index.selectedSourceID;
    result.testQuestions = index.testQuestions;
    result.playgroundQuestion = index.playgroundQuestion;
    return result;
}

RAGIndex restored(const PersistedRAGIndex& index) {
    RAGIndex result(index.id, index.name);
    result.sources.reserve(index.sources.size());
    for (const auto& source : index.sources) {
        result.sources.push_back(restored(source));
    }
    result.chunksByDocument = index.chunksByDocument;
    if (!index.variants.empty()) { // else the new index keeps its own
        result.variants = index.variants;
        result.selectedVariantID = index.selectedVariantID;
    }
    result.selectedSourceID = index.selectedSourceID;
    result.testQuestions = index.testQuestions;
    result.playgroundQuestion = index.playgroundQuestion;
    return result;
}

} // namespace

PersistedProject AppState::makeSnapshot() const {
    PersistedProject snapshot;
    snapshot.project = *project;
    snapshot.ragIndexes.reserve(ragIndexes->size());
    for (const auto& index : *ragIndexes) {
        snapshot.ragIndexes.push_back(persisted(index));
    }
    snapshot.selectedRAGIndexID = *selectedRAGIndexID;
    snapshot.agents = *agents;
    snapshot.tools = *tools;
    snapshot.selectedNavigatorItem = selectedNavigatorItem();
    snapshot.flows = *flows;
    return snapshot;
}

void AppState::applySnapshot(const PersistedProject& snapshot) {
    // All is written before anybody is told.
    auto header = project.edit();
    auto indexes = ragIndexes.edit();
    auto selected = selectedRAGIndexID.edit();
    auto allAgents = agents.edit();
    auto allTools = tools.edit();
    auto allFlows = flows.edit();

    *header = snapshot.project;
    indexes->clear();
    indexes->reserve(snapshot.ragIndexes.size());
    for (const auto& index : snapshot.ragIndexes) {
        indexes->push_back(restored(index));
    }
    if (indexes->empty()) {
        indexes->emplace_back(Uuid::random(), defaultIndexName);
    }
    const bool isThere = findByID(*indexes, snapshot.selectedRAGIndexID);
    *selected = isThere ? snapshot.selectedRAGIndexID : indexes->front().id;
    *allAgents = snapshot.agents;
    *allTools = snapshot.tools;
    *allFlows = snapshot.flows;

    auto shown = snapshot.selectedNavigatorItem;
    if (std::holds_alternative<NavigatorSelection::Rag>(shown.value)) {
        shown = {NavigatorSelection::Rag{*selected}};
    }
    setSelectedNavigatorItem(shown);
}

void AppState::load(const PersistedProject& snapshot) {
    applySnapshot(snapshot);
    lastSnapshot = snapshot;
}

void AppState::scheduleCheckpoint() {
    cancelCheckpoint();
    m_checkpoint = m_platform.executor->postAfter(checkpointDelay, [weak = weak_from_this()] {
        if (const auto state = weak.lock()) {
            state->m_checkpoint.reset();
            state->checkpoint();
        }
    });
}

void AppState::flushCheckpoint() {
    if (m_checkpoint) {
        cancelCheckpoint();
        checkpoint();
    }
}

void AppState::cancelCheckpoint() {
    if (m_checkpoint) {
        m_platform.executor->cancel(*m_checkpoint);
        m_checkpoint.reset();
    }
}

void AppState::checkpoint() {
    PersistedProject snapshot = makeSnapshot();
    if (lastSnapshot && undoManager) {
        auto previous = std::make_shared<const PersistedProject>(*std::move(lastSnapshot));
        lastSnapshot = std::move(snapshot);
        undoManager->registerUndo([weak = weak_from_this(), previous] {
            if (const auto state = weak.lock()) {
                state->lastSnapshot = *previous;
                state->applySnapshot(*previous);
            }
        });
    } else {
        lastSnapshot = std::move(snapshot);
    }
}

AppState::~AppState() {
    cancelCheckpoint();
}

} // namespace ombrel

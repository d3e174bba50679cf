#pragma once

#include "core/Agent.h"
#include "core/DocumentChunk.h"
#include "core/Flow.h"
#include "core/NavigatorSelection.h"
#include "core/Project.h"
#include "core/SharedText.h"
#include "core/SourceDocument.h"
#include "core/TestQuestion.h"
#include "core/ToolDefinition.h"
#include "core/Variant.h"
#include "platform/Data.h"
#include "platform/Uuid.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace ombrel {

// A source as it is stored: how to find the file again in place of where it is.
struct PersistedSourceDocument {
    Uuid id;
    std::string name;
    SourceType type = SourceType::text;
    std::optional<std::int64_t> pageCount;
    std::int64_t chunkCount = 0;
    std::int64_t tokenCount = 0;
    SourceStatus status;
    std::optional<Data> bookmarkData; // the absolute path
    std::optional<SharedText> pastedText;

    static constexpr auto keys() {
        return std::tuple(required("id", &PersistedSourceDocument::id),
                          required("name", &PersistedSourceDocument::name),
                          required("type", &PersistedSourceDocument::type),
                          optional("pageCount", &PersistedSourceDocument::pageCount),
                          required("chunkCount", &PersistedSourceDocument::chunkCount),
                          required("tokenCount", &PersistedSourceDocument::tokenCount),
                          required("status", &PersistedSourceDocument::status),
                          optional("bookmarkData", &PersistedSourceDocument::bookmarkData),
                          optional("pastedText", &PersistedSourceDocument::pastedText));
    }
    bool operator==(const PersistedSourceDocument&) const = default;
};

// All of a RAG index that is saved.
struct PersistedRAGIndex {
    Uuid id;
    std::string name;
    std::vector<PersistedSourceDocument> sources;
    std::map<Uuid, ChunkArray> chunksByDocument; // stored as an array: key, value, key, value
    std::vector<Variant> variants;
    Uuid selectedVariantID;
    std::optional<Uuid> selectedSourceID;
    std::vector<TestQuestion> testQuestions;
    std::string playgroundQuestion;

    static constexpr auto keys() {
        return std::tuple(required("id", &PersistedRAGIndex::id),
                          required("name", &PersistedRAGIndex::name),
                          required("sources", &PersistedRAGIndex::sources),
                          required("chunksByDocument", &PersistedRAGIndex::chunksByDocument),
                          required("variants", &PersistedRAGIndex::variants),
                          required("selectedVariantID", &PersistedRAGIndex::selectedVariantID),
                          optional("selectedSourceID", &PersistedRAGIndex::selectedSourceID),
                          required("testQuestions", &PersistedRAGIndex::testQuestions),
                          required("playgroundQuestion", &PersistedRAGIndex::playgroundQuestion));
    }
    bool operator==(const PersistedRAGIndex&) const = default;
};

// The record of the project file, and the undo snapshot: the one definition of what a project's
// saved state is. `keys` is the form that is written; reading is more forgiving, and knows the keys
// of version 1 (see `readSnapshot`).
struct PersistedProject {
    static constexpr std::int64_t currentFormatVersion = 2;

    std::int64_t formatVersion = currentFormatVersion;
    Project project;
    std::vector<PersistedRAGIndex> ragIndexes;
    Uuid selectedRAGIndexID;
    std::vector<Agent> agents;
    std::vector<ToolDefinition> tools;
    NavigatorSelection selectedNavigatorItem;
    std::vector<Flow> flows;

    static constexpr auto keys() {
        return std::tuple(
            required("formatVersion", &PersistedProject::formatVersion),
            required("project", &PersistedProject::project),
            required("ragIndexes", &PersistedProject::ragIndexes),
            required("selectedRAGIndexID", &PersistedProject::selectedRAGIndexID),
            required("agents", &PersistedProject::agents),
            required("tools", &PersistedProject::tools),
            required("selectedNavigatorItem", &PersistedProject::selectedNavigatorItem),
            required("flows", &PersistedProject::flows));
    }
    bool operator==(const PersistedProject&) const = default;
};

} // namespace ombrel

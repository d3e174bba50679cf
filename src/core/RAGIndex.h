#pragma once

#include "core/DocumentChunk.h"
#include "core/IndexedChunks.h"
#include "core/PlaygroundResult.h"
#include "core/SourceDocument.h"
#include "core/TestQuestion.h"
#include "core/Variant.h"
#include "platform/Uuid.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace ombrel {

// How far a piece of long work is.
struct Progress {
    std::int64_t completed = 0;
    std::int64_t total = 0;
    bool operator==(const Progress&) const = default;
};

// The name of the index that a project has from the start, or gets when it has none.
inline constexpr const char* defaultIndexName = "Default";

// One knowledge base. `variants` is never empty and `selectedVariantID` names one of them.
struct RAGIndex {
    RAGIndex(Uuid id, std::string name);

    Uuid id;
    std::string name;
    std::vector<SourceDocument> sources; // in display order
    std::optional<Uuid> selectedSourceID;
    std::map<Uuid, ChunkArray> chunksByDocument; // by SourceDocument::id
    std::vector<Variant> variants;
    Uuid selectedVariantID;
    std::vector<TestQuestion> testQuestions;
    std::string playgroundQuestion;

    // Transient: never saved, at their start values after every load and undo.
    std::optional<std::string> importError; // of the last failed import
    std::optional<Uuid> selectedFailingQuestionID;
    std::optional<PlaygroundResult> playgroundResult;
    bool isAsking = false;
    bool isWarmingUp = false;
    std::optional<std::string> warmUpStatus;
    bool isDrafting = false;
    std::optional<Progress> draftProgress;
    bool isEnriching = false;
    std::optional<Progress> enrichProgress;
    bool isEvaluating = false;
    std::optional<Progress> evaluateProgress;
    std::optional<Progress> importProgress; // files, while an import or a re-scan reads them
    std::optional<Progress> embedProgress;  // chunks, while a build computes vectors

    // The settings of the first variant with the selected id; the defaults when there is none.
    BuildSettings currentSettings() const;
    // What searching it goes through: each source that has chunks with them, in display order.
    IndexedChunks indexedChunks() const;

    // Makes nothing run on the index: a copy of one on which work runs has none of its own.
    void forgetRunningWork();

    bool operator==(const RAGIndex&) const = default;
};

} // namespace ombrel

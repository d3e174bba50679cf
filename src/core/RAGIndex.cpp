#include "core/RAGIndex.h"

#include "core/FindByID.h"

#include <utility>

namespace ombrel {

RAGIndex::RAGIndex(Uuid indexID, std::string indexName)
    : id(indexID), name(std::move(indexName)), variants(1), selectedVariantID(Uuid::random()) {
    variants.front().id = selectedVariantID;
    variants.front().name = "Default";
}

BuildSettings RAGIndex::currentSettings() const {
    const Variant* variant = findByID(variants, selectedVariantID);
    return variant ? variant->settings : BuildSettings();
}

IndexedChunks RAGIndex::indexedChunks() const {
    IndexedChunks pairs;
    pairs.reserve(sources.size());
    for (const SourceDocument& source : sources) {
        const auto entry = chunksByDocument.find(source.id);
        if (entry != chunksByDocument.end()) {
            pairs.push_back({source, entry->second});
        }
    }
    return pairs;
}

void RAGIndex::forgetRunningWork() {
    isAsking = isWarmingUp = isDrafting = isEnriching = isEvaluating = false;
    draftProgress = enrichProgress = evaluateProgress = importProgress = embedProgress =
        std::nullopt;
}

} // namespace ombrel

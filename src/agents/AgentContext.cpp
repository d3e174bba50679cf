#include "agents/AgentContext.h"

#include "core/FindByID.h"
#include "platform/Text.h"
#include "retrieval/CompositeSearcher.h"
#include "retrieval/EffectiveIndexKind.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace ombrel {

Task<std::vector<AgentRetrievedContext>> retrieveAgentContext(Platform platform, Agent agent,
                                                              std::vector<RAGIndex> ragIndexes,
                                                              std::string input) {
    std::vector<AgentRetrievedContext> entries;
    if (trimWhitespacesAndNewlines(input).empty()) {
        co_return entries;
    }
    for (const AgentRAGAttachment& attachment : agent.ragAttachments) {
        const RAGIndex* index = findByID(ragIndexes, attachment.ragIndexID);
        if (!index) {
            continue;
        }
        AgentRetrievedContext entry{Uuid::random(), index->name, {}};
        const IndexedChunks pairs = index->indexedChunks();
        if (firstChunk(pairs)) {
            const IndexKind kind = effectiveIndexKind(index->currentSettings().index, pairs);
            const CompositeSearcher searcher = buildSearcher(kind, pairs, platform);
            const std::int64_t limit = std::max<std::int64_t>(attachment.topK, 1);
            auto searching = searcher.search(input, limit);
            const std::vector<SearchHit> hits = co_await std::move(searching);
            for (const SearchHit& hit : hits) {
                if (hit.fusedScore >= attachment.threshold) {
                    entry.chunks.push_back({Uuid::random(), breadcrumbText(hit.chunk.breadcrumb),
                                            hit.chunk.packText(), hit.fusedScore});
                }
            }
        }
        entries.push_back(std::move(entry));
    }
    co_return entries;
}

std::string instructionsWithContext(std::string_view instructions,
                                    const std::vector<AgentRetrievedContext>& retrieved) {
    std::vector<std::string> pieces;
    for (const AgentRetrievedContext& entry : retrieved) {
        for (const RetrievedContextChunk& chunk : entry.chunks) {
            pieces.push_back("[" + std::to_string(pieces.size() + 1) + "] " + chunk.breadcrumb +
                             ": " + chunk.text);
        }
    }
    std::string text(instructions);
    if (!pieces.empty()) {
        text += "\n\nContext:\n" + join(pieces, "\n\n");
    }
    return text;
}

} // namespace ombrel

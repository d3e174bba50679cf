#include "retrieval/PlaygroundTexts.h"

#include "platform/FixedPoint.h"
#include "platform/Text.h"
#include "retrieval/QueryPipeline.h"

#include <algorithm>

namespace ombrel {

namespace {

std::string millisecondsText(std::int64_t milliseconds) {
    return std::to_string(milliseconds) + " ms";
}

} // namespace

std::optional<std::string> reasonBanner(const AppState& state, const BuildSettings& settings) {
    if (settings.index == IndexKind::spotlight) {
        return "Live retrieval currently covers Keyword, Vector, and Hybrid \u2014 Spotlight isn't "
               "implemented yet. Switch Settings to try it.";
    }
    const IndexedChunks pairs = state.indexedChunks();
    if (chunkCount(pairs) == 0) {
        return "No sources imported yet \u2014 add documents in Sources first.";
    }
    if (settings.index != IndexKind::keyword && !allHaveEmbeddings(pairs)) {
        return "This index needs embeddings for the current chunks \u2014 click Build in the "
               "toolbar first.";
    }
    return std::nullopt;
}

bool isAskEnabled(const AppState& state) {
    const RAGIndex& index = state.currentIndex();
    return !index.isAsking && !index.playgroundQuestion.empty() && canAsk(state);
}

bool isWarmUpEnabled(const AppState& state) {
    const RAGIndex& index = state.currentIndex();
    return !index.isAsking && !index.isWarmingUp;
}

std::string_view queryRowTitle(QueryTransform transform) {
    switch (transform) {
    case QueryTransform::rewrite:
        return "Rewritten query";
    case QueryTransform::multiQuery:
        return "Query variants, merged by rank";
    case QueryTransform::hyde:
        return "Drafted hypothetical answer, searched as-is";
    case QueryTransform::tool:
        return "Search queries issued by the model";
    case QueryTransform::direct:
        break;
    }
    return "Search query";
}

std::vector<TimingStage> timingStages(const PlaygroundResult& result) {
    return {{"Rewrite", result.rewriteMS, millisecondsText(result.rewriteMS)},
            {"Search", result.searchMS, millisecondsText(result.searchMS)},
            {"Pack", result.packMS, millisecondsText(result.packMS)},
            {"Answer", truncated(result.answerSeconds * 1000),
             fixedPoint(result.answerSeconds, 2) + " s"}};
}

std::string totalTimeText(const PlaygroundResult& result) {
    return "Total " + fixedPoint(totalSeconds(result), 2) + " s";
}

std::vector<ContextSegment> contextSegments(const PlaygroundResult& result) {
    const auto packed = std::ranges::count_if(result.retrieved, &RetrievedChunk::inPrompt);
    return {{"Instructions", result.instructionsTokens},
            {"Context " + std::to_string(packed) + " chunks", result.contextTokens},
            {"Question", result.questionTokens},
            {"Answer reserve", result.answerReserveTokens}};
}

std::string contextBarText(const PlaygroundResult& result, const BuildSettings& settings) {
    std::int64_t used = 0;
    for (const ContextSegment& segment : contextSegments(result)) {
        used += segment.tokens;
    }
    return std::to_string(used) + " of " + std::to_string(truncated(settings.contextBudget)) +
           " tokens";
}

std::string_view promptLabel(const RetrievedChunk& row) {
    return row.inPrompt ? "In prompt" : "Over budget";
}

std::vector<std::string> scoreLabels(const RetrievedChunk& row) {
    return {"keyword " + fixedPoint(row.keywordScore, 2),
            "vector " + fixedPoint(row.vectorScore, 2), "fused " + fixedPoint(row.fusedScore, 2)};
}

std::vector<std::string> answerBreakdownLines(const AnswerBreakdown& breakdown) {
    std::string prompt = "Processing prompt \u00b7 " + millisecondsText(breakdown.promptMS) +
                         " \u00b7 " + std::to_string(breakdown.inputTokens) + " input tokens";
    if (breakdown.cachedInputTokens > 0) {
        prompt += " (" + std::to_string(breakdown.cachedInputTokens) + " cached)";
    }
    return {std::move(prompt), "Generating reply \u00b7 " +
                                   millisecondsText(breakdown.generationMS) + " \u00b7 " +
                                   std::to_string(breakdown.outputTokens) + " output tokens"};
}

std::string answerHeader(const PlaygroundResult& result, const BuildSettings& settings) {
    if (!result.isLive) {
        return "Example data";
    }
    return "Live \u00b7 " + lowercased(rawValue(settings.index)) + " search + on-device model";
}

} // namespace ombrel

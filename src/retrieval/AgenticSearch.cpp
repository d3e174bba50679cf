#include "retrieval/AgenticSearch.h"

#include "core/TokenEstimate.h"
#include "platform/OnDeviceModel.h"
#include "platform/Text.h"
#include "retrieval/RAGSearchTool.h"
#include "retrieval/RetrievedRow.h"
#include "retrieval/StageClock.h"

#include <limits>
#include <memory>
#include <string_view>
#include <unordered_set>
#include <utility>

namespace ombrel {

namespace {

constexpr std::string_view agenticInstructions =
    "Answer the person's question using the search_knowledge_base tool to find relevant passages "
    "from the indexed content. Call the tool as many times as needed with focused, specific "
    "queries \u2014 search again with a different query if the first results aren't enough. Base "
    "your answer only on what the tool returns. If nothing relevant turns up after searching, say "
    "you don't know.";

std::vector<SearchHit> withoutRepeats(std::vector<SearchHit> hits) {
    std::unordered_set<Uuid> seen;
    std::erase_if(hits, [&](const SearchHit& hit) { return !seen.insert(hit.chunk.id).second; });
    return hits;
}

std::string promptListing(const std::vector<std::string>& queries) {
    std::string text = "Tool (agentic) \u2014 the model issued " + std::to_string(queries.size()) +
                       " search call(s):";
    if (queries.empty()) {
        text += "\n(the model answered without searching)";
    }
    for (std::size_t i = 0; i < queries.size(); ++i) {
        text += "\n" + std::to_string(i + 1) + ". " + queries[i];
    }
    return text;
}

} // namespace

Task<AgenticOutcome> runAgenticQuery(Platform platform, std::string question, IndexedChunks pairs,
                                     BuildSettings settings) {
    const auto log = std::make_shared<RetrievalLog>();
    const auto tool = std::make_shared<RAGSearchTool>(
        buildSearcher(settings.index, pairs, platform), truncated(settings.topK), log);
    const StageClock clock(platform);
    AgenticOutcome outcome;
    const ModelAvailability availability = platform.model->availability();
    if (!availability.isAvailable()) {
        outcome.answer = "On-device model unavailable (" + *availability.unavailableReason +
                         ") \u2014 enable Apple Intelligence to run the agentic query.";
    } else {
        std::vector<std::shared_ptr<Tool>> tools;
        tools.push_back(tool);
        const std::shared_ptr<LanguageModelSession> session =
            platform.model->makeSession(std::string(agenticInstructions), std::move(tools));
        Result<std::string> answer = co_await session->respond(std::move(question));
        outcome.answer = answer ? std::move(*answer)
                                : "The on-device model failed to answer: " + answer.error().message;
    }
    outcome.elapsedMS = clock.milliseconds();
    outcome.queries = log->queries;
    outcome.hits = withoutRepeats(log->hits);
    co_return outcome;
}

Task<PlaygroundResult> runAgenticPlayground(Platform platform, std::string question,
                                            IndexedChunks pairs, BuildSettings settings) {
    PlaygroundResult result;
    result.question = question;
    result.instructionsTokens = estimateTokens(agenticInstructions);
    result.questionTokens = estimateTokens(question);
    AgenticOutcome outcome = co_await runAgenticQuery(std::move(platform), std::move(question),
                                                      std::move(pairs), settings);
    result.rewrittenQuery =
        outcome.queries.empty() ? result.question : join(outcome.queries, " | ");
    result.fullPrompt = promptListing(outcome.queries);
    result.answer = std::move(outcome.answer);
    result.searchMS = outcome.elapsedMS;
    for (const SearchHit& hit : outcome.hits) {
        const auto rank = static_cast<std::int64_t>(result.retrieved.size()) + 1;
        result.retrieved.push_back(retrievedRow(hit, rank, true));
        if (__builtin_add_overflow(result.contextTokens, hit.chunk.tokenCount,
                                   &result.contextTokens)) {
            result.contextTokens = std::numeric_limits<std::int64_t>::max();
        }
    }
    co_return result;
}

} // namespace ombrel

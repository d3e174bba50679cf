#include "retrieval/QueryPipeline.h"

#include "core/TestQuestion.h"
#include "core/TokenEstimate.h"
#include "platform/FixedPoint.h"
#include "platform/Text.h"
#include "retrieval/AgenticSearch.h"
#include "retrieval/RetrievedRow.h"
#include "retrieval/StageClock.h"

#include <algorithm>
#include <chrono>
#include <string_view>
#include <utility>

namespace ombrel {

namespace {

constexpr std::string_view answerInstructions =
    "Answer the question using only the provided context. If the answer isn't in the context, say "
    "you don't know.";
constexpr std::string_view rewriteInstructions =
    "Rewrite the person's question into a short, effective search query for a keyword and semantic "
    "search index over a knowledge base. Keep the key terms, drop filler words, and don't turn it "
    "into a full sentence. Reply with only the rewritten query, no preamble or quotation marks.";
constexpr std::string_view hydeInstructions =
    "Given a person's question, write a short passage (2-4 sentences) as if it were an excerpt "
    "from documentation that directly answers it. State it plainly as fact, in the voice of the "
    "source material \u2014 don't hedge, and don't mention that it's hypothetical or that you're "
    "guessing. Reply with only the passage text, no preamble or quotation marks.";

constexpr std::int64_t multiQueryCount = 3;
constexpr std::int64_t answerReserve = 800; // tokens, a guess at the length of an answer

// What a new session answers to the question, or nothing when the model can't.
Task<std::optional<std::string>> answerOf(std::shared_ptr<OnDeviceModel> model,
                                          std::string instructions, std::string question) {
    if (!model->availability().isAvailable()) {
        co_return std::nullopt;
    }
    const std::shared_ptr<LanguageModelSession> session =
        model->makeSession(std::move(instructions));
    Result<std::string> answer = co_await session->respond(std::move(question));
    std::optional<std::string> content;
    if (answer) {
        content = std::move(*answer);
    }
    co_return content;
}

// The trimmed answer, or the question where there is none.
Task<std::string> answerOrQuestion(std::shared_ptr<OnDeviceModel> model, std::string instructions,
                                   std::string question) {
    const std::optional<std::string> answer =
        co_await answerOf(std::move(model), std::move(instructions), question);
    if (answer) {
        const std::string_view trimmed = trimWhitespacesAndNewlines(*answer);
        if (!trimmed.empty()) {
            question = std::string(trimmed);
        }
    }
    co_return question;
}

// Hits packed into a prompt.
struct Packed {
    std::string pieces; // as they stand in the prompt
    std::int64_t count = 0;
    std::int64_t tokens = 0;
    std::vector<RetrievedChunk> rows;
};

// Takes every hit that still fits, in rank order, so that a smaller one can follow one that is
// left out.
Packed pack(const std::vector<SearchHit>& hits, std::int64_t budget) {
    Packed packed;
    std::int64_t rank = 0;
    for (const SearchHit& hit : hits) {
        const DocumentChunk& chunk = hit.chunk;
        ++rank;
        const std::int64_t tokens =
            chunk.parentText ? estimateTokens(*chunk.parentText) : chunk.tokenCount;
        std::int64_t used = 0;
        const bool fits = !__builtin_add_overflow(packed.tokens, tokens, &used) && used <= budget;
        if (fits) {
            packed.tokens = used;
            packed.pieces += packed.count == 0 ? "" : "\n\n";
            packed.pieces += "[" + std::to_string(rank) + "] " + breadcrumbText(chunk.breadcrumb) +
                             ": " + chunk.packText();
            ++packed.count;
        }
        packed.rows.push_back(retrievedRow(hit, rank, fits));
    }
    return packed;
}

} // namespace

bool canAsk(const AppState& state) {
    return state.currentVariant().settings.index != IndexKind::spotlight &&
           chunkCount(state.indexedChunks()) > 0;
}

Task<void> ask(std::shared_ptr<AppState> state, AnswerObserver observer) {
    if (!canAsk(*state)) {
        co_return;
    }
    const Uuid indexID = state->currentIndex().id;
    state->editIndex(indexID, [](RAGIndex& index) {
        index.isAsking = true;
        index.warmUpStatus.reset();
    });
    const Platform platform = state->platform();
    std::string question = state->currentIndex().playgroundQuestion;
    IndexedChunks pairs = state->indexedChunks();
    const BuildSettings settings = state->currentVariant().settings;
    PlaygroundResult result;
    if (settings.transform == QueryTransform::tool) {
        result = co_await runAgenticPlayground(platform, std::move(question), std::move(pairs),
                                               settings);
    } else {
        result = co_await runQuery(platform, std::move(question), std::move(pairs), settings,
                                   std::move(observer));
    }
    Variant variant = state->currentVariant();
    variant.recordedLatencies.push_back(totalSeconds(result));
    state->editCurrentIndex()->playgroundResult = std::move(result);
    state->updateVariant(variant);
    // On the index where it was set, so that it never stays set on one that was switched away from.
    state->editIndex(indexID, [](RAGIndex& index) { index.isAsking = false; });
}

Task<PlaygroundResult> runQuery(Platform platform, std::string question, IndexedChunks pairs,
                                BuildSettings settings, AnswerObserver observer) {
    const std::int64_t topK = truncated(settings.topK);
    const CompositeSearcher searcher = buildSearcher(settings.index, pairs, platform);
    PlaygroundResult result;
    result.question = question;

    const StageClock transformClock(platform);
    std::vector<std::string> queries =
        co_await transformedQueries(platform.model, settings.transform, std::move(question));
    if (settings.transform != QueryTransform::direct) {
        result.rewriteMS = transformClock.milliseconds();
    }
    result.rewrittenQuery = join(queries, " | ");

    const StageClock searchClock(platform);
    std::vector<SearchHit> hits =
        co_await searchQueries(searcher, std::move(queries), settings.transform, topK);
    result.searchMS = searchClock.milliseconds();

    PlaygroundResult answered = co_await packAndAnswer(platform, std::move(result), std::move(hits),
                                                       settings, std::move(observer));
    co_return answered;
}

Task<PlaygroundResult> packAndAnswer(Platform platform, PlaygroundResult begun,
                                     std::vector<SearchHit> hits, BuildSettings settings,
                                     AnswerObserver observer) {
    PlaygroundResult result = std::move(begun);
    const StageClock packClock(platform);
    result.instructionsTokens = estimateTokens(answerInstructions);
    result.questionTokens = estimateTokens(result.question);
    result.answerReserveTokens = answerReserve;
    const std::int64_t taken = result.instructionsTokens + result.questionTokens + answerReserve;
    const std::int64_t contextBudget = truncated(settings.contextBudget);
    Packed packed = pack(hits, contextBudget > taken ? contextBudget - taken : 0);
    result.contextTokens = packed.tokens;
    result.retrieved = std::move(packed.rows);
    result.fullPrompt = "Context:\n" + packed.pieces + "\n\nQuestion: " + result.question;
    result.packMS = packClock.milliseconds();

    const StageClock answerClock(platform);
    GeneratedAnswer answer = co_await generateAnswer(platform, result.fullPrompt, packed.count > 0,
                                                     packed.count, std::move(observer));
    result.answerSeconds = answerClock.seconds();
    result.answer = std::move(answer.text);
    result.answerBreakdown = answer.breakdown;
    result.isLive = true;
    co_return result;
}

Task<std::string> transformRewrite(std::shared_ptr<OnDeviceModel> model, std::string question) {
    return answerOrQuestion(std::move(model), std::string(rewriteInstructions),
                            std::move(question));
}

Task<std::string> transformHyDE(std::shared_ptr<OnDeviceModel> model, std::string question) {
    return answerOrQuestion(std::move(model), std::string(hydeInstructions), std::move(question));
}

Task<std::vector<std::string>> transformMultiQuery(std::shared_ptr<OnDeviceModel> model,
                                                   std::string question, std::int64_t count) {
    std::string instructions =
        "Given a person's question, write up to " + std::to_string(count) +
        " different short search queries that could each independently find the answer in a "
        "knowledge base \u2014 vary the wording and angle of each one rather than repeating the "
        "question. Reply with only the queries, one per line, no numbering, no preamble.";
    const std::optional<std::string> answer =
        co_await answerOf(std::move(model), std::move(instructions), question);
    std::vector<std::string> queries;
    if (answer) {
        for (const std::string_view line : splitNewlines(*answer)) {
            const std::string_view query = trimBlanksAndTabs(line);
            if (!query.empty() && static_cast<std::int64_t>(queries.size()) < count) {
                queries.emplace_back(query);
            }
        }
    }
    if (queries.empty()) {
        queries.push_back(std::move(question));
    }
    co_return queries;
}

Task<std::vector<std::string>> transformedQueries(std::shared_ptr<OnDeviceModel> model,
                                                  QueryTransform transform, std::string question) {
    std::vector<std::string> queries;
    switch (transform) {
    case QueryTransform::rewrite: {
        std::string query = co_await transformRewrite(std::move(model), std::move(question));
        queries.push_back(std::move(query));
        break;
    }
    case QueryTransform::hyde: {
        std::string passage = co_await transformHyDE(std::move(model), std::move(question));
        queries.push_back(std::move(passage));
        break;
    }
    case QueryTransform::multiQuery:
        queries =
            co_await transformMultiQuery(std::move(model), std::move(question), multiQueryCount);
        break;
    case QueryTransform::direct:
    case QueryTransform::tool:
        queries.push_back(std::move(question));
        break;
    }
    co_return queries;
}

Task<std::vector<SearchHit>> searchQueries(CompositeSearcher searcher,
                                           std::vector<std::string> queries,
                                           QueryTransform transform, std::int64_t topK) {
    std::vector<std::vector<SearchHit>> lists;
    for (const std::string& query : queries) {
        std::vector<SearchHit> list = co_await searcher.search(query, topK);
        lists.push_back(std::move(list));
    }
    co_return transform == QueryTransform::multiQuery ? mergeByRank(lists, topK)
                                                      : std::move(lists.front());
}

Task<GeneratedAnswer> generateAnswer(Platform platform, std::string prompt, bool hasContext,
                                     std::int64_t packedCount, AnswerObserver observer) {
    GeneratedAnswer answer;
    if (!hasContext) {
        answer.text =
            "Nothing in the indexed content matched this question closely enough to answer.";
        co_return answer;
    }
    const std::string retrieved = "Retrieved " + std::to_string(packedCount) + " chunk(s)";
    const ModelAvailability availability = platform.model->availability();
    if (const std::optional<std::string>& reason = availability.unavailableReason) {
        answer.text = retrieved + ". On-device model unavailable (" + *reason +
                      ") \u2014 enable Apple Intelligence to generate a real answer.";
        co_return answer;
    }
    const std::shared_ptr<LanguageModelSession> session =
        platform.model->makeSession(std::string(answerInstructions));
    const StageClock clock(platform);
    std::optional<std::int64_t> promptMS;
    std::optional<ModelUsage> usage;
    std::function<void(const ModelSnapshot&)> onSnapshot = [&](const ModelSnapshot& snapshot) {
        if (!promptMS) {
            promptMS = clock.milliseconds();
        }
        answer.text = snapshot.content;
        if (snapshot.usage) {
            usage = snapshot.usage;
        }
        if (observer) {
            observer(snapshot);
        }
    };
    const Result<std::optional<ModelSnapshot>> streamed =
        co_await session->streamResponse(std::move(prompt), std::move(onSnapshot));
    if (!streamed) {
        answer.text =
            retrieved + ", but the on-device model failed to answer: " + streamed.error().message;
        co_return answer;
    }
    const std::int64_t total = clock.milliseconds();
    AnswerBreakdown breakdown;
    breakdown.promptMS = promptMS.value_or(total);
    breakdown.generationMS = std::max<std::int64_t>(total - breakdown.promptMS, 0);
    if (usage) {
        breakdown.inputTokens = usage->inputTokens;
        breakdown.cachedInputTokens = usage->cachedInputTokens;
        breakdown.outputTokens = usage->outputTokens;
    }
    answer.breakdown = breakdown;
    co_return answer;
}

Task<void> warmUp(std::shared_ptr<AppState> state) {
    const Uuid indexID = state->currentIndex().id;
    const Platform platform = state->platform();
    state->editIndex(indexID, [](RAGIndex& index) {
        index.isWarmingUp = true;
        index.warmUpStatus.reset();
    });
    std::string status;
    if (!platform.model->availability().isAvailable()) {
        status = "Apple Intelligence isn't available here \u2014 nothing to warm up.";
    } else {
        const StageClock clock(platform);
        const std::shared_ptr<LanguageModelSession> session =
            platform.model->makeSession(std::string(answerInstructions));
        co_await session->prewarm();
        std::string prompt = "Reply with only the word OK.";
        const Result<std::string> reply = co_await session->respond(std::move(prompt));
        status = reply ? "Model warmed up in " + fixedPoint(clock.seconds(), 1) +
                             "s \u2014 the next question should start answering sooner."
                       : "Warm-up failed: " + reply.error().message;
    }
    state->editIndex(indexID, [&](RAGIndex& index) {
        index.warmUpStatus = std::move(status);
        index.isWarmingUp = false;
    });
}

double totalSeconds(const PlaygroundResult& result) {
    return result.answerSeconds +
           static_cast<double>(result.rewriteMS + result.searchMS + result.packMS) / 1000.0;
}

bool saveAsTestCase(AppState& state) {
    const std::optional<PlaygroundResult>& result = state.currentIndex().playgroundResult;
    if (!result || result->retrieved.empty()) {
        return false;
    }
    TestQuestion question;
    question.id = Uuid::random();
    question.question = result->question;
    question.expectedBreadcrumb = result->retrieved.front().breadcrumb;
    state.editCurrentIndex()->testQuestions.push_back(std::move(question));
    state.scheduleCheckpoint();
    return true;
}

} // namespace ombrel

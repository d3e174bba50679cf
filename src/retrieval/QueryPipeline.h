#pragma once

#include "core/AppState.h"
#include "core/BuildSettings.h"
#include "core/IndexedChunks.h"
#include "core/PlaygroundResult.h"
#include "core/SearchHit.h"
#include "platform/OnDeviceModel.h"
#include "platform/Platform.h"
#include "platform/Task.h"
#include "retrieval/CompositeSearcher.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

// From a question to an answer that shows every stage. Main thread; suspends at model calls and
// while a query is embedded. Nothing here fails: the words of what went wrong become the answer.
namespace ombrel {

// Called for each streamed snapshot of an answer, before the next is awaited.
using AnswerObserver = std::function<void(const ModelSnapshot&)>;

// Whether the current index can be asked: its kind has an engine and it has chunks.
bool canAsk(const AppState& state);

// Asks `playgroundQuestion` of the current index with the settings in force, copied at the start
// (`isAsking` meanwhile). The result goes to `playgroundResult` of the index, and the seconds that
// it took to the latencies of the variant, that are current at the end. Does nothing when the
// index can't be asked. Under the transform `tool` the model searches by itself and nothing is
// streamed.
Task<void> ask(std::shared_ptr<AppState> state, AnswerObserver observer = {});

// The same without a workspace: transform, search, pack, answer. Times are taken on the platform's
// executor. Under the transform `tool`, which has no plan, it searches for the question as asked.
Task<PlaygroundResult> runQuery(Platform platform, std::string question, IndexedChunks pairs,
                                BuildSettings settings, AnswerObserver observer = {});

// The last two stages of `runQuery`: packs the hits, which are in rank order, under
// `settings.contextBudget`, and answers. `begun` holds the question and what the stages before
// found out.
Task<PlaygroundResult> packAndAnswer(Platform platform, PlaygroundResult begun,
                                     std::vector<SearchHit> hits, BuildSettings settings,
                                     AnswerObserver observer);

// The transforms. A model that is unavailable, fails or writes nothing gives the question itself.
Task<std::string> transformRewrite(std::shared_ptr<OnDeviceModel> model, std::string question);
Task<std::string> transformHyDE(std::shared_ptr<OnDeviceModel> model, std::string question);
// At most `count` queries, never none.
Task<std::vector<std::string>> transformMultiQuery(std::shared_ptr<OnDeviceModel> model,
                                                   std::string question, std::int64_t count);

// What a question is searched as under a transform: never no query. `direct`, and `tool`, which has
// no plan, search for the question itself.
Task<std::vector<std::string>> transformedQueries(std::shared_ptr<OnDeviceModel> model,
                                                  QueryTransform transform, std::string question);
// The hits of what `transformedQueries` gave: of `multiQuery` the lists of all, merged by rank.
Task<std::vector<SearchHit>> searchQueries(CompositeSearcher searcher,
                                           std::vector<std::string> queries,
                                           QueryTransform transform, std::int64_t topK);

struct GeneratedAnswer {
    std::string text;
    std::optional<AnswerBreakdown> breakdown; // of an answer that was streamed to its end
};
// `packedCount` pieces of context are in the prompt; without `hasContext` the model is not asked.
Task<GeneratedAnswer> generateAnswer(Platform platform, std::string prompt, bool hasContext,
                                     std::int64_t packedCount, AnswerObserver observer);

// The seconds of all stages: what a variant records as the latency of an ask.
double totalSeconds(const PlaygroundResult& result);

// Loads the model, so that the first question needn't (`isWarmingUp`, `warmUpStatus` of the index
// that is current at the start).
Task<void> warmUp(std::shared_ptr<AppState> state);

// Adds the question of the last result to the test questions, with the section that was found
// first as the expected one. False, and nothing changes, when there is no such section.
bool saveAsTestCase(AppState& state);

} // namespace ombrel

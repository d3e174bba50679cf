#pragma once

#include "core/BuildSettings.h"
#include "core/IndexedChunks.h"
#include "core/PlaygroundResult.h"
#include "core/SearchHit.h"
#include "platform/Platform.h"
#include "platform/Task.h"

#include <cstdint>
#include <string>
#include <vector>

// Answering where the model itself decides whether to search, for what and how often. Main thread;
// suspends while the model answers. Nothing here fails: the words of what went wrong become the
// answer, and what was found before stays.
namespace ombrel {

// What came of one question.
struct AgenticOutcome {
    // Of all searches, in their order, each chunk once with the scores of its first find. May be
    // more than the settings' `topK`.
    std::vector<SearchHit> hits;
    std::string answer;
    std::vector<std::string> queries; // every search, repeats kept
    std::int64_t elapsedMS = 0;
};

// Has the model answer with `RAGSearchTool` over the chunks. Of the settings only `index` and
// `topK` count.
Task<AgenticOutcome> runAgenticQuery(Platform platform, std::string question, IndexedChunks pairs,
                                     BuildSettings settings);

// The same as the record of an ask. The whole exchange counts as searching.
Task<PlaygroundResult> runAgenticPlayground(Platform platform, std::string question,
                                            IndexedChunks pairs, BuildSettings settings);

} // namespace ombrel

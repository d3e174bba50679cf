#pragma once

#include "core/AppState.h"
#include "core/BuildSettings.h"
#include "core/PlaygroundResult.h"
#include "core/QueryTransform.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// What the faces of the system say about a question and its answer.
namespace ombrel {

inline constexpr std::string_view noResultYet = "Ask a question to see retrieval and the answer.";
inline constexpr std::string_view usedParentNote =
    "Parent\u2013child: matched here, sent the whole parent section";
inline constexpr std::string_view answerBreakdownHeading = "Answer breakdown";
inline constexpr std::string_view answerBreakdownNote =
    "Usually most of the wait is the model reading the prompt, not writing the reply.";
inline constexpr std::string_view contextBarHeading = "Context window";
inline constexpr std::string_view warmUpHelp =
    "Pre-load the on-device model now, before asking a real question, so the first real answer "
    "doesn't pay the cold-start cost.";

// Why asking the current index under these settings gives nothing or less than it could; nothing
// when all is well.
std::optional<std::string> reasonBanner(const AppState& state, const BuildSettings& settings);

// Whether the "Ask" control is enabled, and the "Warm Up" one.
bool isAskEnabled(const AppState& state);
bool isWarmUpEnabled(const AppState& state);

// The title above what was searched for.
std::string_view queryRowTitle(QueryTransform transform);

struct TimingStage {
    std::string name;              // "Search"
    std::int64_t milliseconds = 0; // the length of its bar
    std::string label;             // "12 ms", of the answer "3.45 s"
};
// Rewrite, search, pack, answer.
std::vector<TimingStage> timingStages(const PlaygroundResult& result);
// "Total 3.47 s".
std::string totalTimeText(const PlaygroundResult& result);

struct ContextSegment {
    std::string label;
    std::int64_t tokens = 0;
};
// What the context window is made of: instructions, context, question, answer reserve.
std::vector<ContextSegment> contextSegments(const PlaygroundResult& result);
// "{tokens of all segments} of {context budget} tokens".
std::string contextBarText(const PlaygroundResult& result, const BuildSettings& settings);

// "In prompt" or "Over budget".
std::string_view promptLabel(const RetrievedChunk& row);
// "keyword 0.83", "vector 0.10" and "fused 0.52".
std::vector<std::string> scoreLabels(const RetrievedChunk& row);
std::vector<std::string> answerBreakdownLines(const AnswerBreakdown& breakdown);
std::string answerHeader(const PlaygroundResult& result, const BuildSettings& settings);

} // namespace ombrel

#pragma once

#include "core/Record.h"
#include "platform/Uuid.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace ombrel {

// Where the time of an answer went, in milliseconds, and the tokens that the model counted.
struct AnswerBreakdown {
    std::int64_t promptMS = 0; // until the first piece of the answer
    std::int64_t generationMS = 0;
    std::int64_t inputTokens = 0;
    std::int64_t cachedInputTokens = 0;
    std::int64_t outputTokens = 0;

    static constexpr auto keys() {
        return std::tuple(required("promptMS", &AnswerBreakdown::promptMS),
                          required("generationMS", &AnswerBreakdown::generationMS),
                          required("inputTokens", &AnswerBreakdown::inputTokens),
                          required("cachedInputTokens", &AnswerBreakdown::cachedInputTokens),
                          required("outputTokens", &AnswerBreakdown::outputTokens));
    }
    bool operator==(const AnswerBreakdown&) const = default;
};

// One row of what a question retrieved.
struct RetrievedChunk {
    Uuid id;               // of the row, not of the chunk
    std::int64_t rank = 0; // from 1
    std::vector<std::string> breadcrumb;
    std::string snippet; // the first 160 characters of the chunk's text
    double keywordScore = 0;
    double vectorScore = 0;
    double fusedScore = 0;
    bool inPrompt = false;
    bool usedParent = false; // the chunk has a parent text

    static constexpr auto keys() {
        return std::tuple(required("id", &RetrievedChunk::id),
                          required("rank", &RetrievedChunk::rank),
                          required("breadcrumb", &RetrievedChunk::breadcrumb),
                          required("snippet", &RetrievedChunk::snippet),
                          required("keywordScore", &RetrievedChunk::keywordScore),
                          required("vectorScore", &RetrievedChunk::vectorScore),
                          required("fusedScore", &RetrievedChunk::fusedScore),
                          required("inPrompt", &RetrievedChunk::inPrompt),
                          required("usedParent", &RetrievedChunk::usedParent));
    }
    bool operator==(const RetrievedChunk&) const = default;
};

// The record of one ask. Never saved in the project file.
struct PlaygroundResult {
    std::string question; // as typed
    std::string rewrittenQuery;
    std::string fullPrompt;
    std::vector<RetrievedChunk> retrieved; // in rank order, those that did not fit included
    std::string answer;                    // or the message of what went wrong
    std::int64_t rewriteMS = 0;
    std::int64_t searchMS = 0;
    std::int64_t packMS = 0;
    double answerSeconds = 0;
    std::int64_t instructionsTokens = 0;
    std::int64_t contextTokens = 0;
    std::int64_t questionTokens = 0;
    std::int64_t answerReserveTokens = 800;
    bool isLive = true;
    std::optional<AnswerBreakdown> answerBreakdown;

    static constexpr auto keys() {
        return std::tuple(required("question", &PlaygroundResult::question),
                          required("rewrittenQuery", &PlaygroundResult::rewrittenQuery),
                          required("fullPrompt", &PlaygroundResult::fullPrompt),
                          required("retrieved", &PlaygroundResult::retrieved),
                          required("answer", &PlaygroundResult::answer),
                          required("rewriteMS", &PlaygroundResult::rewriteMS),
                          required("searchMS", &PlaygroundResult::searchMS),
                          required("packMS", &PlaygroundResult::packMS),
                          required("answerSeconds", &PlaygroundResult::answerSeconds),
                          required("instructionsTokens", &PlaygroundResult::instructionsTokens),
                          required("contextTokens", &PlaygroundResult::contextTokens),
                          required("questionTokens", &PlaygroundResult::questionTokens),
                          required("answerReserveTokens", &PlaygroundResult::answerReserveTokens),
                          required("isLive", &PlaygroundResult::isLive),
                          optional("answerBreakdown", &PlaygroundResult::answerBreakdown));
    }
    bool operator==(const PlaygroundResult&) const = default;
};

} // namespace ombrel

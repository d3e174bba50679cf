#include "retrieval/PlaygroundTexts.h"

#include "tests/core/Workspace.h"

#include <gtest/gtest.h>

namespace ombrel {
namespace {

using Texts = std::vector<std::string>;

class PlaygroundTexts : public testing::Test {
  protected:
    void addChunk() {
        SourceDocument source;
        source.id = Uuid::random();
        DocumentChunk chunk;
        chunk.text = "text";
        auto index = state->editCurrentIndex();
        index->chunksByDocument[source.id] = std::vector<DocumentChunk>{chunk};
        index->sources.push_back(source);
    }
    std::optional<std::string> banner(IndexKind kind) const {
        BuildSettings settings;
        settings.index = kind;
        return reasonBanner(*state, settings);
    }

    test::Workspace workspace;
    std::shared_ptr<AppState> state = workspace.state;
};

TEST_F(PlaygroundTexts, GiveTheFirstReasonThatHolds) {
    const std::string spotlight =
        "Live retrieval currently covers Keyword, Vector, and Hybrid \u2014 Spotlight isn't "
        "implemented yet. Switch Settings to try it.";
    const std::string noChunks = "No sources imported yet \u2014 add documents in Sources first.";
    const std::string noEmbeddings = "This index needs embeddings for the current chunks \u2014 "
                                     "click Build in the toolbar first.";
    EXPECT_EQ(banner(IndexKind::spotlight), spotlight);
    EXPECT_EQ(banner(IndexKind::keyword), noChunks);
    EXPECT_EQ(banner(IndexKind::hybrid), noChunks);
    addChunk();
    EXPECT_EQ(banner(IndexKind::spotlight), spotlight);
    EXPECT_EQ(banner(IndexKind::keyword), std::nullopt);
    EXPECT_EQ(banner(IndexKind::vector), noEmbeddings);
    EXPECT_EQ(banner(IndexKind::hybrid), noEmbeddings);
    state->editCurrentIndex()->chunksByDocument.begin()->second.edit()[0].embedding = {1.0};
    EXPECT_EQ(banner(IndexKind::hybrid), std::nullopt);
}

TEST_F(PlaygroundTexts, EnableAskingWithAnyQuestionWhileNothingIsAsked) {
    addChunk();
    EXPECT_FALSE(isAskEnabled(*state));
    state->editCurrentIndex()->playgroundQuestion = " ";
    EXPECT_TRUE(isAskEnabled(*state));
    state->editCurrentIndex()->isWarmingUp = true;
    EXPECT_TRUE(isAskEnabled(*state));
    EXPECT_FALSE(isWarmUpEnabled(*state));
    state->editCurrentIndex()->isWarmingUp = false;
    EXPECT_TRUE(isWarmUpEnabled(*state));
    state->editCurrentIndex()->isAsking = true;
    EXPECT_FALSE(isAskEnabled(*state));
    EXPECT_FALSE(isWarmUpEnabled(*state));
    state->editCurrentIndex()->isAsking = false;
    state->editCurrentIndex()->sources.clear();
    EXPECT_FALSE(isAskEnabled(*state));
}

TEST_F(PlaygroundTexts, TitleTheQueryRowByTheTransform) {
    EXPECT_EQ(queryRowTitle(QueryTransform::direct), "Search query");
    EXPECT_EQ(queryRowTitle(QueryTransform::rewrite), "Rewritten query");
    EXPECT_EQ(queryRowTitle(QueryTransform::multiQuery), "Query variants, merged by rank");
    EXPECT_EQ(queryRowTitle(QueryTransform::hyde), "Drafted hypothetical answer, searched as-is");
    EXPECT_EQ(queryRowTitle(QueryTransform::tool), "Search queries issued by the model");
}

TEST_F(PlaygroundTexts, ListTheStagesWithTheirTimes) {
    PlaygroundResult result;
    result.rewriteMS = 120;
    result.searchMS = 4;
    result.packMS = 0;
    result.answerSeconds = 3.4567;
    Texts lines;
    for (const TimingStage& stage : timingStages(result)) {
        lines.push_back(stage.name + "|" + std::to_string(stage.milliseconds) + "|" + stage.label);
    }
    EXPECT_EQ(lines,
              (Texts{"Rewrite|120|120 ms", "Search|4|4 ms", "Pack|0|0 ms", "Answer|3456|3.46 s"}));
    EXPECT_EQ(totalTimeText(result), "Total 3.58 s");
}

TEST_F(PlaygroundTexts, ListWhatTheContextWindowHolds) {
    PlaygroundResult result;
    result.instructionsTokens = 27;
    result.contextTokens = 500;
    result.questionTokens = 5;
    result.retrieved.resize(3);
    result.retrieved[0].inPrompt = true;
    result.retrieved[2].inPrompt = true;
    BuildSettings settings;
    settings.contextBudget = 3000.7;
    Texts lines;
    for (const ContextSegment& segment : contextSegments(result)) {
        lines.push_back(segment.label + "|" + std::to_string(segment.tokens));
    }
    EXPECT_EQ(lines, (Texts{"Instructions|27", "Context 2 chunks|500", "Question|5",
                            "Answer reserve|800"}));
    EXPECT_EQ(contextBarText(result, settings), "1332 of 3000 tokens");
    EXPECT_EQ(promptLabel(result.retrieved[0]), "In prompt");
    EXPECT_EQ(promptLabel(result.retrieved[1]), "Over budget");
}

TEST_F(PlaygroundTexts, TellWhereTheTimeOfTheAnswerWent) {
    EXPECT_EQ(answerBreakdownLines({1200, 340, 900, 0, 42}),
              (Texts{"Processing prompt \u00b7 1200 ms \u00b7 900 input tokens",
                     "Generating reply \u00b7 340 ms \u00b7 42 output tokens"}));
    EXPECT_EQ(answerBreakdownLines({1200, 340, 900, 800, 42}).at(0),
              "Processing prompt \u00b7 1200 ms \u00b7 900 input tokens (800 cached)");
}

TEST_F(PlaygroundTexts, LabelTheScoresOfAHit) {
    RetrievedChunk row;
    row.keywordScore = 1;
    row.fusedScore = 0.516;
    EXPECT_EQ(scoreLabels(row), (Texts{"keyword 1.00", "vector 0.00", "fused 0.52"}));
}

TEST_F(PlaygroundTexts, HeadTheAnswerByTheIndexKind) {
    PlaygroundResult result;
    BuildSettings settings;
    EXPECT_EQ(answerHeader(result, settings), "Live \u00b7 hybrid search + on-device model");
    result.isLive = false;
    EXPECT_EQ(answerHeader(result, settings), "Example data");
}

} // namespace
} // namespace ombrel

#include "evaluation/Scoring.h"

#include "tests/evaluation/EvaluationWorkspace.h"

#include <gtest/gtest.h>

namespace ombrel {
namespace {

using test::Texts;

std::vector<SearchHit> hitsOf(const std::vector<Texts>& breadcrumbs) {
    std::vector<SearchHit> hits;
    for (const Texts& breadcrumb : breadcrumbs) {
        hits.push_back({SourceDocument(), test::makeChunk("text", breadcrumb), 0, 0, 0});
    }
    return hits;
}

TestQuestion expecting(Texts breadcrumb) {
    return newTestQuestion("When?", std::move(breadcrumb), false);
}

TEST(ScoreHits, PassesWithTheThirdHit) {
    TestQuestion question = expecting({"C"});
    EXPECT_DOUBLE_EQ(scoreHits(question, hitsOf({{"A"}, {"B"}, {"C"}})), 1.0 / 3);
    EXPECT_EQ(question.lastRank, 3);
    EXPECT_EQ(question.status, QuestionStatus::passing);
    EXPECT_EQ(question.lastGotBreadcrumb, Texts{"A"});
}

TEST(ScoreHits, FailsWithoutHitsAndForgetsTheLastResult) {
    TestQuestion question = expecting({"C"});
    question.lastGotBreadcrumb = Texts{"A"};
    question.lastRank = 2;
    question.status = QuestionStatus::passing;
    EXPECT_EQ(scoreHits(question, {}), 0.0);
    EXPECT_EQ(question.lastRank, std::nullopt);
    EXPECT_EQ(question.lastGotBreadcrumb, std::nullopt);
    EXPECT_EQ(question.status, QuestionStatus::failing);
}

TEST(ScoreHits, FailsWhenNoHitMatches) {
    TestQuestion question = expecting({"C"});
    EXPECT_EQ(scoreHits(question, hitsOf({{"A"}, {"C", "D"}, {"c"}})), 0.0);
    EXPECT_EQ(question.lastRank, std::nullopt);
    EXPECT_EQ(question.lastGotBreadcrumb, Texts{"A"});
    EXPECT_EQ(question.status, QuestionStatus::failing);
}

TEST(ScoreHits, TakesTheFirstOfTwoChunksOfTheSection) {
    TestQuestion question = expecting({"C"});
    EXPECT_EQ(scoreHits(question, hitsOf({{"A"}, {"C"}, {"C"}})), 0.5);
    EXPECT_EQ(question.lastRank, 2);
}

TEST(ScoreHits, HasNoCutAtFive) {
    TestQuestion question = expecting({"H"});
    EXPECT_EQ(scoreHits(question, hitsOf({{"A"}, {"B"}, {"C"}, {"D"}, {"E"}, {"F"}, {"G"}, {"H"}})),
              0.125);
    EXPECT_EQ(question.status, QuestionStatus::passing);
}

TEST(ScoreHits, MatchesAnEmptyBreadcrumb) {
    TestQuestion question = expecting({});
    EXPECT_EQ(scoreHits(question, hitsOf({{}})), 1.0);
    EXPECT_EQ(question.lastGotBreadcrumb, Texts{});
}

} // namespace
} // namespace ombrel

#include "evaluation/EvaluationTexts.h"

#include "tests/evaluation/EvaluationWorkspace.h"

#include <gtest/gtest.h>

namespace ombrel {
namespace {

using test::EvaluationWorkspace;
using test::makeChunk;
using test::Texts;

TEST(EvaluationBanner, NamesTheFirstReasonThatHolds) {
    const EvaluationWorkspace workspace;
    workspace.setIndex(IndexKind::spotlight);
    EXPECT_EQ(evaluationBanner(*workspace.state),
              "Keyword, Vector, and Hybrid have a real implementation — Spotlight doesn't yet. "
              "Switch Settings to run this for real.");
    workspace.setIndex(IndexKind::hybrid);
    EXPECT_EQ(evaluationBanner(*workspace.state),
              "No sources imported yet — add documents in Sources first.");
    workspace.addChunks({makeChunk("bus", {"A"})});
    EXPECT_EQ(evaluationBanner(*workspace.state),
              "This index needs embeddings for the current chunks — click Build in the toolbar "
              "first.");
    workspace.setIndex(IndexKind::keyword);
    EXPECT_EQ(evaluationBanner(*workspace.state), std::nullopt);
}

TEST(RunEvaluationControl, NeedsAnEngineQuestionsAndChunks) {
    const EvaluationWorkspace workspace;
    workspace.addChunks({makeChunk("bus", {"A"})});
    EXPECT_FALSE(isRunEvaluationEnabled(*workspace.state));
    workspace.ask("bus", {"A"});
    EXPECT_TRUE(isRunEvaluationEnabled(*workspace.state));
    workspace.setIndex(IndexKind::spotlight);
    EXPECT_FALSE(isRunEvaluationEnabled(*workspace.state));
    workspace.setIndex(IndexKind::vector); // embeddings are not asked for
    EXPECT_TRUE(isRunEvaluationEnabled(*workspace.state));
    workspace->editCurrentIndex()->sources.clear();
    EXPECT_FALSE(isRunEvaluationEnabled(*workspace.state));
}

TEST(EvaluationCards, ShowScoresAndCounts) {
    const EvaluationWorkspace workspace;
    workspace.ask("a", {"A"});
    workspace.ask("b", {"A"});
    workspace.ask("c", {"A"});
    std::vector<EvaluationCard> cards = evaluationCards(*workspace.state);
    ASSERT_EQ(cards.size(), 4U);
    EXPECT_EQ(cards[0].title, "Recall@5");
    EXPECT_EQ(cards[0].value, "Not evaluated yet");
    EXPECT_EQ(cards[1].title, "MRR");
    EXPECT_EQ(cards[1].value, "Not evaluated yet");
    Variant variant = workspace->currentVariant();
    variant.recallAt5 = 2.0 / 3;
    variant.mrr = 0.5;
    workspace->updateVariant(variant);
    {
        auto index = workspace->editCurrentIndex();
        index->testQuestions[0].status = QuestionStatus::passing;
        index->testQuestions[1].status = QuestionStatus::failing;
    }
    cards = evaluationCards(*workspace.state);
    EXPECT_EQ(cards[0].value, "0.67");
    EXPECT_EQ(cards[0].detail, "across 3 questions");
    EXPECT_EQ(cards[1].value, "0.50");
    EXPECT_EQ(cards[1].detail, "across 3 questions");
    EXPECT_EQ(cards[2].title, "Questions");
    EXPECT_EQ(cards[2].value, "3");
    EXPECT_EQ(cards[2].detail, "1 passing");
    EXPECT_EQ(cards[3].title, "Failing");
    EXPECT_EQ(cards[3].value, "1");
    EXPECT_EQ(cards[3].detail, "drill in below");
}

TEST(VariantTable, ShowsScoresAndTheMedianLatency) {
    const EvaluationWorkspace workspace;
    workspace.ask("a", {"A"});
    workspace.ask("b", {"A"});
    EXPECT_EQ(variantTableTitle(workspace->currentIndex()), "Variants on the same 2 questions");
    EXPECT_EQ(variantTableHeadings(), (Texts{"VARIANT", "RECALL@5", "MRR", "LATENCY"}));
    Variant variant;
    variant.name = "Default";
    variant.settings.index = IndexKind::hybrid;
    EXPECT_EQ(variantTableRow(variant), (Texts{"Hybrid · Default", "–", "–", "–"}));
    variant.recallAt5 = 0.825;
    variant.mrr = 1;
    variant.recordedLatencies = {1, 2, 3, 4};
    EXPECT_EQ(variantTableRow(variant), (Texts{"Hybrid · Default", "0.82", "1.00", "3.0 s (n=4)"}));
}

TEST(QuestionList, CountsQuestionsAndFailures) {
    const EvaluationWorkspace workspace;
    workspace.ask("a", {"A"});
    workspace.ask("b", {"A"});
    workspace->editCurrentIndex()->testQuestions[1].status = QuestionStatus::failing;
    EXPECT_EQ(questionListTitle(workspace->currentIndex()), "Test questions · 2 (1 failing)");
    EXPECT_EQ(noTestQuestionsYet, "No test questions yet — add one above, or use \"Save as test "
                                  "case\" in Playground.");
}

TEST(FailingDetail, ShowsTheSelectedQuestionElseTheFirstFailingOne) {
    const EvaluationWorkspace workspace;
    EXPECT_FALSE(failingDetail(*workspace.state));
    workspace.ask("a", {"A", "B"});
    workspace.ask("b", {"C"});
    EXPECT_FALSE(failingDetail(*workspace.state));
    {
        auto index = workspace->editCurrentIndex();
        index->testQuestions[1].status = QuestionStatus::failing;
        index->testQuestions[1].lastGotBreadcrumb = Texts{"D", "E"};
    }
    workspace.setTopK(7.5);
    std::optional<FailingDetail> detail = failingDetail(*workspace.state);
    ASSERT_TRUE(detail);
    EXPECT_EQ(detail->question, "b");
    EXPECT_EQ(detail->expected, "C");
    EXPECT_EQ(detail->got, "D > E");
    EXPECT_EQ(detail->line, "Expected chunk wasn't in the top-7 results.");
    workspace->editCurrentIndex()->selectedFailingQuestionID = workspace.questions()[0].id;
    detail = failingDetail(*workspace.state);
    ASSERT_TRUE(detail);
    EXPECT_EQ(detail->question, "a");
    EXPECT_EQ(detail->expected, "A > B");
    EXPECT_EQ(detail->got, "— (not evaluated yet)");
    EXPECT_EQ(detail->line, "Not evaluated yet — click Run Evaluation.");
    // A question that is gone selects nothing.
    workspace->editCurrentIndex()->selectedFailingQuestionID = Uuid::random();
    detail = failingDetail(*workspace.state);
    ASSERT_TRUE(detail);
    EXPECT_EQ(detail->question, "b");
}

TEST(FailingDetail, HasNoLineForAQuestionThatPasses) {
    const EvaluationWorkspace workspace;
    workspace.ask("a", {"A"});
    {
        auto index = workspace->editCurrentIndex();
        index->testQuestions[0].status = QuestionStatus::passing;
        index->testQuestions[0].lastRank = 2;
        index->selectedFailingQuestionID = index->testQuestions[0].id;
    }
    const std::optional<FailingDetail> detail = failingDetail(*workspace.state);
    ASSERT_TRUE(detail);
    EXPECT_EQ(detail->line, "");
}

TEST(QuestionStatusText, TellsTheRankOfAQuestionThatPasses) {
    TestQuestion question;
    EXPECT_EQ(questionStatusText(question), "Not evaluated");
    question.status = QuestionStatus::failing;
    EXPECT_EQ(questionStatusText(question), "Failing");
    question.status = QuestionStatus::passing;
    question.lastRank = 3;
    EXPECT_EQ(questionStatusText(question), "Passing \u00b7 rank 3");
}

TEST(ImportResult, CountsQuestionsAndSkippedRows) {
    EXPECT_EQ(importResultText({3, 0}), "Imported 3 question(s).");
    EXPECT_EQ(importResultText({0, 2}), "Imported 0 question(s), skipped 2 row(s) that didn't "
                                        "match \"question,breadcrumb\".");
    EXPECT_EQ(importResultText({0, 0}), std::nullopt);
}

TEST(MeasuredLatency, IsTheUpperMedian) {
    Variant variant;
    EXPECT_EQ(measuredLatencyText(variant), "No live runs yet");
    variant.recordedLatencies = {4, 1, 3, 2};
    EXPECT_EQ(variant.medianLatency(), 3.0);
    EXPECT_EQ(measuredLatencyText(variant), "3.0s over 4 run(s)");
}

} // namespace
} // namespace ombrel

#include "evaluation/RetrievalEvaluation.h"

#include "tests/evaluation/EvaluationWorkspace.h"

#include <gtest/gtest.h>

#include <chrono>

namespace ombrel {
namespace {

using test::EvaluationWorkspace;
using test::makeChunk;
using test::ModelAnswer;
using test::Texts;

class RetrievalEvaluation : public testing::Test {
  protected:
    void run() { test::run(*workspace.platform.executor, runEvaluation(workspace.state)); }
    std::shared_ptr<bool> start() {
        return test::start(*workspace.platform.executor, runEvaluation(workspace.state));
    }
    const Variant& variant() const { return workspace->currentVariant(); }
    const TestQuestion& question(std::size_t i) const { return workspace.questions().at(i); }

    EvaluationWorkspace workspace;
};

TEST_F(RetrievalEvaluation, ScoresQuestionsAndWritesTheMeansToTheVariant) {
    workspace.addChunks({makeChunk("the last bus", {"Travel"}), makeChunk("lunch", {"Food"})});
    workspace.ask("bus", {"Travel"});
    workspace.ask("lunch", {"Travel"});
    run();
    EXPECT_EQ(question(0).status, QuestionStatus::passing);
    EXPECT_EQ(question(0).lastRank, 1);
    EXPECT_EQ(question(0).lastGotBreadcrumb, Texts{"Travel"});
    EXPECT_EQ(question(1).status, QuestionStatus::failing);
    EXPECT_EQ(question(1).lastRank, std::nullopt);
    EXPECT_EQ(question(1).lastGotBreadcrumb, Texts{"Food"});
    EXPECT_EQ(variant().recallAt5, 0.5);
    EXPECT_EQ(variant().mrr, 0.5);
    EXPECT_FALSE(workspace->currentIndex().isEvaluating);
    EXPECT_EQ(workspace->currentIndex().evaluateProgress, std::nullopt);
}

TEST_F(RetrievalEvaluation, GivesTheThirdHitAThird) {
    workspace.addRankedChunks(5);
    workspace.ask("bus", {"3"});
    run();
    EXPECT_EQ(question(0).lastRank, 3);
    EXPECT_EQ(question(0).lastGotBreadcrumb, Texts{"1"});
    EXPECT_EQ(variant().recallAt5, 1.0);
    EXPECT_DOUBLE_EQ(variant().mrr.value(), 1.0 / 3);
}

TEST_F(RetrievalEvaluation, FailsAQuestionWithoutHits) {
    workspace.addRankedChunks(2);
    workspace.ask("zebra", {"1"});
    run();
    EXPECT_EQ(question(0).status, QuestionStatus::failing);
    EXPECT_EQ(question(0).lastGotBreadcrumb, std::nullopt);
    EXPECT_EQ(variant().recallAt5, 0.0);
    EXPECT_EQ(variant().mrr, 0.0);
}

TEST_F(RetrievalEvaluation, FailsTheFourthHitUnderATopKOfThree) {
    workspace.addRankedChunks(5);
    workspace.setTopK(3.9);
    workspace.ask("bus", {"4"});
    run();
    EXPECT_EQ(question(0).status, QuestionStatus::failing);
    workspace.setTopK(4);
    run();
    EXPECT_EQ(question(0).lastRank, 4);
}

TEST_F(RetrievalEvaluation, CountsTheEighthHitUnderATopKOfTen) {
    workspace.addRankedChunks(12);
    workspace.setTopK(10);
    workspace.ask("bus", {"8"});
    run();
    EXPECT_EQ(question(0).status, QuestionStatus::passing);
    EXPECT_EQ(variant().recallAt5, 1.0);
    EXPECT_EQ(variant().mrr, 0.125);
}

TEST_F(RetrievalEvaluation, MatchesEitherOfTwoChunksOfASection) {
    workspace.addChunks({makeChunk("bus", {"Travel"}), makeChunk("tram", {"Travel"})});
    workspace.ask("bus", {"Travel"});
    workspace.ask("tram", {"Travel"});
    run();
    EXPECT_EQ(variant().recallAt5, 1.0);
}

TEST_F(RetrievalEvaluation, DoesNotMatchAnotherCase) {
    workspace.addChunks({makeChunk("bus", {"Travel"})});
    workspace.ask("bus", {"travel"});
    run();
    EXPECT_EQ(question(0).status, QuestionStatus::failing);
}

TEST_F(RetrievalEvaluation, IsOneUndoableChange) {
    workspace.addRankedChunks(1);
    workspace.ask("bus", {"1"});
    EXPECT_TRUE(workspace.schedules([&] { run(); }));
}

TEST_F(RetrievalEvaluation, DoesNothingWhereThereIsNothingToScore) {
    const auto doesNothing = [&] {
        EXPECT_FALSE(canEvaluate(*workspace.state));
        const bool schedules = workspace.schedules([&] { run(); });
        return !schedules && !variant().recallAt5;
    };
    EXPECT_TRUE(doesNothing());
    workspace.ask("bus", {"1"});
    EXPECT_TRUE(doesNothing()); // no chunks
    workspace.addRankedChunks(1);
    workspace.setIndex(IndexKind::spotlight);
    EXPECT_TRUE(doesNothing());
    workspace.setIndex(IndexKind::keyword);
    workspace->editCurrentIndex()->isEvaluating = true;
    EXPECT_TRUE(doesNothing());
    workspace->editCurrentIndex()->isEvaluating = false;
    clearTestQuestions(*workspace.state);
    EXPECT_TRUE(doesNothing());
}

TEST_F(RetrievalEvaluation, RunsDirectAtOnceWithoutShowingProgress) {
    workspace.addRankedChunks(3);
    workspace.ask("bus", {"1"});
    std::vector<bool> seen;
    const Subscription subscription = workspace->ragIndexes.observe([&] {
        const RAGIndex& index = workspace->currentIndex();
        seen.push_back(index.isEvaluating || index.evaluateProgress.has_value());
    });
    run();
    EXPECT_FALSE(seen.empty());
    EXPECT_EQ(std::ranges::count(seen, true), 0);
    EXPECT_EQ(workspace.platform.model->sessionCount, 0U);
}

TEST_F(RetrievalEvaluation, AsksForTheVectorsOfAllQuestionsInBatches) {
    workspace.setIndex(IndexKind::hybrid);
    DocumentChunk chunk = makeChunk("bus", {"Travel"});
    chunk.embedding = test::bagOfWords("bus");
    workspace.addChunks({chunk});
    workspace.platform.embedder->batch = 2;
    for (const char* text : {"bus", "coach", "bus stop"}) {
        workspace.ask(text, {"Travel"});
    }
    run();
    ASSERT_EQ(workspace.platform.embedder->calls.size(), 2U);
    EXPECT_EQ(workspace.platform.embedder->calls[0].texts, (Texts{"bus", "coach"}));
    EXPECT_EQ(workspace.platform.embedder->calls[1].texts, (Texts{"bus stop"}));
    EXPECT_EQ(question(0).status, QuestionStatus::passing);
    EXPECT_EQ(question(2).status, QuestionStatus::passing);
}

TEST_F(RetrievalEvaluation, FailsQuestionsWithoutAVector) {
    workspace.setIndex(IndexKind::vector);
    DocumentChunk chunk = makeChunk("bus", {"Travel"});
    chunk.embedding = test::bagOfWords("bus");
    workspace.addChunks({chunk});
    workspace.ask("bus", {"Travel"});
    workspace.ask("?!", {"Travel"});
    run();
    EXPECT_EQ(question(0).status, QuestionStatus::passing);
    EXPECT_EQ(question(1).status, QuestionStatus::failing);
    EXPECT_EQ(question(1).lastGotBreadcrumb, std::nullopt);
}

TEST_F(RetrievalEvaluation, LetsQuestionsBeRemovedWhileVectorsAreComputed) {
    workspace.setIndex(IndexKind::vector);
    DocumentChunk chunk = makeChunk("bus", {"Travel"});
    chunk.embedding = test::bagOfWords("bus");
    workspace.addChunks({chunk});
    workspace.ask("tram", {"Travel"});
    workspace.ask("bus", {"Travel"});
    workspace.platform.embedder->gate.close();
    const auto isDone = start();
    EXPECT_FALSE(*isDone);
    removeTestQuestion(*workspace.state, question(0).id);
    workspace.platform.embedder->gate.open();
    workspace.platform.executor->runAll();
    EXPECT_TRUE(*isDone);
    ASSERT_EQ(workspace.questions().size(), 1U);
    EXPECT_EQ(question(0).status, QuestionStatus::passing);
}

TEST_F(RetrievalEvaluation, SearchesForTheRewrittenQuestion) {
    workspace.addChunks({makeChunk("bus", {"Travel"}), makeChunk("lunch", {"Food"})});
    workspace.setTransform(QueryTransform::rewrite);
    workspace.ask("How do I leave?", {"Travel"});
    workspace.platform.model->queue.push_back(" bus ");
    run();
    EXPECT_EQ(question(0).lastRank, 1);
    EXPECT_EQ(workspace.platform.model->prompts(), Texts{"How do I leave?"});
}

TEST_F(RetrievalEvaluation, SearchesForTheHypotheticalPassage) {
    workspace.addChunks({makeChunk("bus", {"Travel"}), makeChunk("lunch", {"Food"})});
    workspace.setTransform(QueryTransform::hyde);
    workspace.ask("How do I leave?", {"Travel"});
    workspace.platform.model->queue.push_back("There is a bus.");
    run();
    EXPECT_EQ(question(0).lastRank, 1);
}

TEST_F(RetrievalEvaluation, MergesTheListsOfThreeQueries) {
    workspace.addChunks({makeChunk("bus", {"A"}), makeChunk("tram", {"B"}),
                         makeChunk("boat", {"C"}), makeChunk("bike", {"D"})});
    workspace.setTransform(QueryTransform::multiQuery);
    workspace.setTopK(3);
    workspace.ask("How?", {"C"});
    workspace.ask("How else?", {"D"});
    workspace.platform.model->queue = {"bus\ntram\nboat\nbike", "bus\ntram\nboat\nbike"};
    run();
    EXPECT_EQ(question(0).lastRank, 3);
    // The fourth query is not searched for.
    EXPECT_EQ(question(1).status, QuestionStatus::failing);
    EXPECT_EQ(variant().recallAt5, 0.5);
}

TEST_F(RetrievalEvaluation, TakesTheHitsOfTheModelsOwnSearchesWithoutALimit) {
    workspace.addChunks({makeChunk("bus", {"A"}), makeChunk("tram", {"B"})});
    workspace.setTransform(QueryTransform::tool);
    workspace.setTopK(1);
    workspace.ask("How?", {"B"});
    ModelAnswer answer("By tram.");
    answer.toolCalls = {{"search_knowledge_base", "{\"query\":\"bus\"}"},
                        {"search_knowledge_base", "{\"query\":\"tram\"}"}};
    workspace.platform.model->queue.push_back(answer);
    run();
    EXPECT_EQ(question(0).lastRank, 2);
    EXPECT_EQ(question(0).lastGotBreadcrumb, Texts{"A"});
}

TEST_F(RetrievalEvaluation, FallsBackToTheQuestionsWithoutAModel) {
    workspace.addChunks({makeChunk("bus", {"A"})});
    workspace.setTransform(QueryTransform::rewrite);
    workspace.ask("bus", {"A"});
    workspace.platform.model->unavailableReason = "modelNotReady";
    run();
    EXPECT_EQ(variant().recallAt5, 1.0);
    workspace.platform.model->unavailableReason.reset();
    workspace.platform.model->answer = [](const test::ModelCall&) {
        return ModelAnswer::fails("no");
    };
    run();
    EXPECT_EQ(variant().recallAt5, 1.0);
}

TEST_F(RetrievalEvaluation, FailsEveryQuestionInToolModeWithoutAModel) {
    workspace.addChunks({makeChunk("bus", {"A"})});
    workspace.setTransform(QueryTransform::tool);
    workspace.ask("bus", {"A"});
    workspace.platform.model->unavailableReason = "modelNotReady";
    run();
    EXPECT_EQ(question(0).status, QuestionStatus::failing);
    EXPECT_EQ(variant().recallAt5, 0.0);
    EXPECT_EQ(variant().mrr, 0.0);
}

// A run that waits for the model.
class RunningEvaluation : public RetrievalEvaluation {
  protected:
    RunningEvaluation() {
        workspace.addChunks({makeChunk("bus", {"A"}), makeChunk("tram", {"B"})});
        workspace.setTransform(QueryTransform::rewrite);
        workspace.ask("One?", {"A"});
        workspace.ask("Two?", {"A"});
        workspace.platform.model->queue = {"bus", "tram"};
        workspace.platform.model->gate.close();
        isDone = start();
    }
    void letOne() {
        workspace.platform.model->gate.letOne();
        workspace.platform.executor->runAll();
    }
    std::optional<Progress> progress() const { return workspace->currentIndex().evaluateProgress; }

    std::shared_ptr<bool> isDone;
};

TEST_F(RunningEvaluation, ShowsItsProgressAndScoresOneQuestionAfterTheOther) {
    EXPECT_TRUE(workspace->currentIndex().isEvaluating);
    EXPECT_EQ(progress(), (Progress{0, 2}));
    letOne();
    EXPECT_EQ(progress(), (Progress{1, 2}));
    EXPECT_EQ(question(0).status, QuestionStatus::passing);
    EXPECT_EQ(question(1).status, QuestionStatus::notEvaluated);
    EXPECT_EQ(variant().recallAt5, std::nullopt);
    letOne();
    EXPECT_TRUE(*isDone);
    EXPECT_EQ(progress(), std::nullopt);
    EXPECT_FALSE(workspace->currentIndex().isEvaluating);
    EXPECT_EQ(question(1).status, QuestionStatus::failing);
    EXPECT_EQ(variant().recallAt5, 0.5);
}

TEST_F(RunningEvaluation, DoesNotStartASecondTime) {
    EXPECT_TRUE(*start());
    EXPECT_EQ(progress(), (Progress{0, 2}));
    EXPECT_EQ(workspace.platform.model->calls.size(), 1U);
}

TEST_F(RunningEvaluation, KeepsTheSettingsOfItsStart) {
    workspace.setTransform(QueryTransform::direct);
    workspace.setTopK(0);
    letOne();
    letOne();
    EXPECT_TRUE(*isDone);
    EXPECT_EQ(variant().recallAt5, 0.5);
}

TEST_F(RunningEvaluation, WritesToTheVariantThatIsSelectedAtTheEnd) {
    const Uuid first = variant().id;
    workspace->duplicateVariant();
    letOne();
    letOne();
    EXPECT_NE(variant().id, first);
    EXPECT_EQ(variant().recallAt5, 0.5);
    EXPECT_EQ(workspace->currentIndex().variants[0].recallAt5, std::nullopt);
}

TEST_F(RunningEvaluation, EndsOnItsIndexAlsoWhenAnotherIsSelected) {
    const Uuid first = workspace->currentIndex().id;
    workspace->addRAGIndex();
    letOne();
    letOne();
    EXPECT_TRUE(*isDone);
    const RAGIndex& index = *workspace->ragIndex(first);
    EXPECT_FALSE(index.isEvaluating);
    EXPECT_EQ(index.testQuestions[0].status, QuestionStatus::passing);
    EXPECT_EQ(index.variants[0].recallAt5, 0.5);
    EXPECT_EQ(variant().recallAt5, std::nullopt);
}

TEST_F(RunningEvaluation, EndsWhenItsIndexIsDeleted) {
    const Uuid first = workspace->currentIndex().id;
    workspace->addRAGIndex();
    workspace->deleteRAGIndex(first);
    letOne();
    letOne();
    EXPECT_TRUE(*isDone);
    EXPECT_EQ(variant().recallAt5, std::nullopt);
}

TEST_F(RunningEvaluation, BearsThatItsQuestionsAreRemoved) {
    clearTestQuestions(*workspace.state);
    letOne();
    letOne();
    EXPECT_TRUE(*isDone);
    EXPECT_TRUE(workspace.questions().empty());
    EXPECT_EQ(variant().recallAt5, 0.5);
}

} // namespace
} // namespace ombrel

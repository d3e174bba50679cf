#include "evaluation/QuestionDrafting.h"

#include "tests/evaluation/EvaluationWorkspace.h"

#include <gtest/gtest.h>

namespace ombrel {
namespace {

using test::EvaluationWorkspace;
using test::makeChunk;
using test::ModelAnswer;
using test::ModelCall;
using test::Texts;

class QuestionDrafting : public testing::Test {
  protected:
    QuestionDrafting() {
        workspace.platform.model->answer = [](const ModelCall& call) {
            return ModelAnswer("\n About " + call.prompt.substr(call.prompt.find('\n') + 1) +
                               "? \n");
        };
    }
    void draft(std::int64_t limit = draftLimit) {
        test::run(*workspace.platform.executor, draftQuestions(workspace.state, limit));
    }
    // One chunk for each section "0", "1" and so on.
    void addSections(int count) {
        std::vector<DocumentChunk> chunks;
        for (int i = 0; i < count; ++i) {
            chunks.push_back(makeChunk("text " + std::to_string(i), {std::to_string(i)}));
        }
        workspace.addChunks(std::move(chunks));
    }

    EvaluationWorkspace workspace;
};

TEST_F(QuestionDrafting, AsksTheModelAboutThePassage) {
    workspace.addChunks({makeChunk("the bus leaves at nine", {"Handbook", "Travel"})});
    EXPECT_TRUE(workspace.schedules([&] { draft(); }));
    ASSERT_EQ(workspace.questions().size(), 1U);
    const TestQuestion& question = workspace.questions()[0];
    EXPECT_EQ(question.question, "About the bus leaves at nine?");
    EXPECT_EQ(question.expectedBreadcrumb, (Texts{"Handbook", "Travel"}));
    EXPECT_TRUE(question.isDrafted);
    EXPECT_EQ(question.status, QuestionStatus::notEvaluated);
    ASSERT_EQ(workspace.platform.model->calls.size(), 1U);
    const ModelCall& call = workspace.platform.model->calls[0];
    EXPECT_EQ(call.kind, ModelCall::Kind::respond);
    EXPECT_EQ(call.instructions,
              "Given a passage, write exactly one short, natural question that the passage "
              "directly answers. Reply with only the question text, no preamble or quotation "
              "marks.");
    EXPECT_EQ(call.prompt, "Passage:\nthe bus leaves at nine");
    EXPECT_TRUE(call.tools.empty());
}

TEST_F(QuestionDrafting, CoversAtMostTheLimitAndTheRestOnTheNextPress) {
    addSections(20);
    draft();
    EXPECT_EQ(workspace.questions().size(), 15U);
    draft();
    ASSERT_EQ(workspace.questions().size(), 20U);
    EXPECT_EQ(workspace.questions()[15].expectedBreadcrumb, Texts{"15"});
    EXPECT_EQ(workspace.questions()[19].expectedBreadcrumb, Texts{"19"});
}

TEST_F(QuestionDrafting, PassesOverSectionsThatHaveAQuestion) {
    workspace.addChunks({makeChunk("a", {"caf\u00e9"}), makeChunk("b", {"A", "B"}),
                         makeChunk("c", {"A"}), makeChunk("d", {"a"})});
    workspace.ask("x", {"cafe\u0301"});
    workspace.ask("y", {"A"});
    draft();
    EXPECT_EQ(workspace.questionTexts(), (Texts{"x", "y", "About b?", "About d?"}));
}

TEST_F(QuestionDrafting, DraftsBothOfTwoChunksOfANewSection) {
    workspace.addChunks({makeChunk("a", {"A"}), makeChunk("b", {"A"})});
    draft();
    EXPECT_EQ(workspace.questionTexts(), (Texts{"About a?", "About b?"}));
}

TEST_F(QuestionDrafting, DoesNothingWhenEverySectionIsCovered) {
    addSections(1);
    draft();
    bool showed = false;
    const Subscription subscription = workspace->ragIndexes.observe([&] { showed = true; });
    EXPECT_FALSE(workspace.schedules([&] { draft(); }));
    EXPECT_FALSE(showed);
    EXPECT_EQ(workspace.platform.model->calls.size(), 1U);
}

TEST_F(QuestionDrafting, DoesNothingUnderALimitOfZeroOrLess) {
    addSections(1);
    draft(0);
    draft(-3);
    EXPECT_TRUE(workspace.questions().empty());
}

TEST_F(QuestionDrafting, GoesOnAfterAFailureAndAnEmptyAnswer) {
    addSections(3);
    workspace.platform.model->queue = {ModelAnswer::fails("no"), ModelAnswer(" \n "),
                                       ModelAnswer("Which?")};
    draft();
    EXPECT_EQ(workspace.questionTexts(), Texts{"Which?"});
    EXPECT_EQ(workspace.questions()[0].expectedBreadcrumb, Texts{"2"});
}

TEST_F(QuestionDrafting, AddsNothingWithoutAModel) {
    addSections(3);
    workspace.platform.model->unavailableReason = "modelNotReady";
    draft();
    EXPECT_TRUE(workspace.questions().empty());
    EXPECT_EQ(workspace.platform.model->sessionCount, 0U);
    EXPECT_FALSE(workspace->currentIndex().isDrafting);
    EXPECT_EQ(workspace->currentIndex().draftProgress, std::nullopt);
}

TEST_F(QuestionDrafting, ShowsItsProgressAndRunsOnce) {
    addSections(2);
    workspace.platform.model->gate.close();
    const auto isDone =
        test::start(*workspace.platform.executor, draftQuestions(workspace.state, 15));
    EXPECT_TRUE(workspace->currentIndex().isDrafting);
    EXPECT_EQ(workspace->currentIndex().draftProgress, (Progress{0, 2}));
    draft();
    EXPECT_EQ(workspace.platform.model->calls.size(), 1U);
    workspace.platform.model->gate.letOne();
    workspace.platform.executor->runAll();
    EXPECT_EQ(workspace->currentIndex().draftProgress, (Progress{1, 2}));
    EXPECT_EQ(workspace.questions().size(), 1U);
    workspace.platform.model->gate.open();
    workspace.platform.executor->runAll();
    EXPECT_TRUE(*isDone);
    EXPECT_FALSE(workspace->currentIndex().isDrafting);
    EXPECT_EQ(workspace->currentIndex().draftProgress, std::nullopt);
    EXPECT_EQ(workspace.questions().size(), 2U);
}

TEST_F(QuestionDrafting, AddsToTheIndexWhereItBegan) {
    addSections(1);
    const Uuid first = workspace->currentIndex().id;
    workspace.platform.model->gate.close();
    const auto isDone =
        test::start(*workspace.platform.executor, draftQuestions(workspace.state, 15));
    workspace->addRAGIndex();
    workspace.platform.model->gate.open();
    workspace.platform.executor->runAll();
    EXPECT_TRUE(*isDone);
    EXPECT_EQ(workspace->ragIndex(first)->testQuestions.size(), 1U);
    EXPECT_FALSE(workspace->ragIndex(first)->isDrafting);
    EXPECT_TRUE(workspace.questions().empty());
}

} // namespace
} // namespace ombrel

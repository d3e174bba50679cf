#include "evaluation/TestQuestions.h"

#include "tests/evaluation/EvaluationWorkspace.h"

#include <gtest/gtest.h>

namespace ombrel {
namespace {

using test::EvaluationWorkspace;
using test::Texts;

TEST(AddTestQuestion, AppendsAQuestionWithoutAResult) {
    const EvaluationWorkspace workspace;
    workspace.ask("One?", {"A"});
    EXPECT_TRUE(workspace.schedules([&] { workspace.ask("Two?", {"B", "C"}); }));
    ASSERT_EQ(workspace.questions().size(), 2U);
    const TestQuestion& question = workspace.questions()[1];
    EXPECT_EQ(question.question, "Two?");
    EXPECT_EQ(question.expectedBreadcrumb, (Texts{"B", "C"}));
    EXPECT_EQ(question.lastGotBreadcrumb, std::nullopt);
    EXPECT_EQ(question.lastRank, std::nullopt);
    EXPECT_EQ(question.status, QuestionStatus::notEvaluated);
    EXPECT_FALSE(question.isDrafted);
    EXPECT_NE(question.id, workspace.questions()[0].id);
}

TEST(AddTypedQuestion, KeepsTheQuestionAsTypedAndTrimsTheParts) {
    const EvaluationWorkspace workspace;
    EXPECT_TRUE(addTypedQuestion(*workspace.state, " When? ", "Account & security >\tPasskeys >"));
    ASSERT_EQ(workspace.questions().size(), 1U);
    EXPECT_EQ(workspace.questions()[0].question, " When? ");
    EXPECT_EQ(workspace.questions()[0].expectedBreadcrumb,
              (Texts{"Account & security", "Passkeys"}));
}

TEST(AddTypedQuestion, DropsPiecesThatAreEmptyBeforeTheyAreTrimmed) {
    const EvaluationWorkspace workspace;
    EXPECT_TRUE(addTypedQuestion(*workspace.state, "When?", "A> >>B"));
    EXPECT_EQ(workspace.questions()[0].expectedBreadcrumb, (Texts{"A", "", "B"}));
}

TEST(AddTypedQuestion, NeedsAQuestionAndAPart) {
    const EvaluationWorkspace workspace;
    EXPECT_FALSE(workspace.schedules([&] {
        EXPECT_FALSE(addTypedQuestion(*workspace.state, "", "A"));
        EXPECT_FALSE(addTypedQuestion(*workspace.state, "When?", ""));
        EXPECT_FALSE(addTypedQuestion(*workspace.state, "When?", ">>"));
    }));
    EXPECT_TRUE(workspace.questions().empty());
}

TEST(RemoveTestQuestion, RemovesTheOneWithTheID) {
    const EvaluationWorkspace workspace;
    workspace.ask("One?", {"A"});
    workspace.ask("Two?", {"B"});
    const Uuid first = workspace.questions()[0].id;
    EXPECT_TRUE(workspace.schedules([&] { removeTestQuestion(*workspace.state, first); }));
    EXPECT_EQ(workspace.questionTexts(), Texts{"Two?"});
    EXPECT_FALSE(workspace.schedules([&] { removeTestQuestion(*workspace.state, first); }));
}

TEST(ClearTestQuestions, EmptiesTheListAndKeepsTheScoresOfTheVariants) {
    const EvaluationWorkspace workspace;
    workspace.ask("One?", {"A"});
    Variant variant = workspace->currentVariant();
    variant.recallAt5 = 0.5;
    workspace->updateVariant(variant);
    workspace->editCurrentIndex()->selectedFailingQuestionID = workspace.questions()[0].id;
    EXPECT_TRUE(workspace.schedules([&] { clearTestQuestions(*workspace.state); }));
    EXPECT_TRUE(workspace.questions().empty());
    EXPECT_EQ(workspace->currentIndex().selectedFailingQuestionID, std::nullopt);
    EXPECT_EQ(workspace->currentVariant().recallAt5, 0.5);
}

TEST(OpenInPlayground, CopiesTheQuestionAndShowsThePlayground) {
    const EvaluationWorkspace workspace;
    workspace.ask("One?", {"A"});
    openInPlayground(*workspace.state, Uuid::random());
    EXPECT_EQ(workspace->selectedTab(), AppTab::sources);
    openInPlayground(*workspace.state, workspace.questions()[0].id);
    EXPECT_EQ(workspace->currentIndex().playgroundQuestion, "One?");
    EXPECT_EQ(workspace->selectedTab(), AppTab::playground);
}

TEST(TypableBreadcrumbs, NameEachSectionOnceInOrder) {
    const EvaluationWorkspace workspace;
    workspace.addChunks({test::makeChunk("a", {"Travel", "Buses"}), test::makeChunk("b", {"Home"}),
                         test::makeChunk("c", {"Travel", "Buses"})});
    workspace.addChunks({test::makeChunk("d", {"Home"}), test::makeChunk("e", {"Home", "Rent"})});
    EXPECT_EQ(typableBreadcrumbs(*workspace.state),
              (Texts{"Travel > Buses", "Home", "Home > Rent"}));
}

TEST(TypableBreadcrumbs, LeaveOutWhatWouldBeReadAsAnotherSection) {
    const EvaluationWorkspace workspace;
    workspace.addChunks({test::makeChunk("a", {"x > y"}), test::makeChunk("b", {" spaced"}),
                         test::makeChunk("c", {"A", ""}), test::makeChunk("d", {})});
    EXPECT_TRUE(typableBreadcrumbs(*workspace.state).empty());
}

TEST(FailingQuestions, AreThoseThatFailInOrder) {
    const EvaluationWorkspace workspace;
    for (const char* text : {"a", "b", "c", "d"}) {
        workspace.ask(text, {"A"});
    }
    {
        auto index = workspace->editCurrentIndex();
        index->testQuestions[1].status = QuestionStatus::failing;
        index->testQuestions[2].status = QuestionStatus::passing;
        index->testQuestions[3].status = QuestionStatus::failing;
    }
    const auto failing = failingQuestions(workspace->currentIndex());
    ASSERT_EQ(failing.size(), 2U);
    EXPECT_EQ(failing[0]->question, "b");
    EXPECT_EQ(failing[1]->question, "d");
}

} // namespace
} // namespace ombrel

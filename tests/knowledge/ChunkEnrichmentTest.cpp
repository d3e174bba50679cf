#include "knowledge/ChunkEnrichment.h"

#include "tests/support/TestPlatform.h"

#include <gtest/gtest.h>

namespace ombrel {
namespace {

class ChunkEnrichment : public testing::Test {
  protected:
    ChunkEnrichment() {
        chunk.breadcrumb = {"Handbook", "Travel"};
        chunk.text = "The last bus leaves at nine.";
    }
    std::optional<std::string> note() {
        return test::run(*platform.executor, contextualNote(platform.model, chunk, "Handbook.md"));
    }
    std::vector<std::string> questions(std::int64_t count) {
        return test::run(*platform.executor, generateQuestions(platform.model, chunk, count));
    }

    test::TestPlatform platform = test::makeTestPlatform();
    DocumentChunk chunk;
};

TEST_F(ChunkEnrichment, AsksForANoteWithTheDocumentAndItsSection) {
    platform.model->queue.push_back(" About buses. \n");
    EXPECT_EQ(note(), "About buses.");
    ASSERT_EQ(platform.model->calls.size(), 1U);
    EXPECT_EQ(platform.model->calls[0].instructions,
              "Given a passage from a larger document, write one short sentence (max 20 words) "
              "describing what this specific passage is about and where it sits in the document. "
              "Reply with only that sentence, no preamble or quotation marks.");
    EXPECT_EQ(platform.model->calls[0].prompt,
              "Document: Handbook.md\nSection: Handbook > Travel\nPassage:\n"
              "The last bus leaves at nine.");
    EXPECT_TRUE(platform.model->calls[0].tools.empty());
}

TEST_F(ChunkEnrichment, GivesNoNoteWhenTheModelWritesNothingFailsOrIsUnavailable) {
    platform.model->queue.push_back(" \n\t");
    EXPECT_EQ(note(), std::nullopt);
    platform.model->queue.push_back(test::ModelAnswer::fails("busy"));
    EXPECT_EQ(note(), std::nullopt);
    platform.model->unavailableReason = "modelNotReady";
    EXPECT_EQ(note(), std::nullopt);
    EXPECT_EQ(platform.model->sessionCount, 2U);
}

TEST_F(ChunkEnrichment, AsksForQuestionsByTheirCount) {
    platform.model->queue.push_back("When does it leave?");
    EXPECT_EQ(questions(3), std::vector<std::string>{"When does it leave?"});
    ASSERT_EQ(platform.model->calls.size(), 1U);
    EXPECT_EQ(platform.model->calls[0].instructions,
              "Given a passage, write up to 3 short, natural questions that the passage directly "
              "answers, each on its own line. Reply with only the questions, no numbering, no "
              "preamble.");
    EXPECT_EQ(platform.model->calls[0].prompt, "Passage:\nThe last bus leaves at nine.");
}

TEST_F(ChunkEnrichment, KeepsTheFirstLinesThatHoldAQuestionAsTheyCome) {
    platform.model->queue.push_back("\n 1. When?\t\r\n \nWhere?\u2028Why?\nWho?");
    EXPECT_EQ(questions(3), (std::vector<std::string>{"1. When?", "Where?", "Why?"}));
}

TEST_F(ChunkEnrichment, GivesNoQuestionsWhenTheModelFailsOrIsUnavailable) {
    platform.model->queue.push_back(test::ModelAnswer::fails("busy"));
    EXPECT_TRUE(questions(3).empty());
    platform.model->unavailableReason = "modelNotReady";
    EXPECT_TRUE(questions(3).empty());
    EXPECT_EQ(platform.model->sessionCount, 1U);
}

} // namespace
} // namespace ombrel

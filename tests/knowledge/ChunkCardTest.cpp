#include "knowledge/ChunkCard.h"

#include <gtest/gtest.h>

namespace ombrel {
namespace {

DocumentChunk someChunk() {
    DocumentChunk chunk;
    chunk.index = 3;
    chunk.breadcrumb = {"Guide", "Battery"};
    chunk.tokenCount = 120;
    chunk.text = "The battery lasts a day.";
    return chunk;
}

TEST(ChunkCard, TellsNumberBreadcrumbAndTokens) {
    const DocumentChunk chunk = someChunk();
    const ChunkCard card{chunk, IndexKind::keyword};
    EXPECT_EQ(card.number(), "#3");
    EXPECT_EQ(card.breadcrumb(), "Guide > Battery");
    EXPECT_EQ(card.tokens(), "120 tok");
    EXPECT_FALSE(card.note());
    EXPECT_FALSE(card.parent());
    EXPECT_TRUE(card.questions().empty());
    EXPECT_EQ(card.wholeText(), "#3  Guide > Battery  120 tok\n\nThe battery lasts a day.");
}

TEST(ChunkCard, TellsTheEnrichment) {
    DocumentChunk chunk = someChunk();
    chunk.contextualNote = "About power.";
    chunk.parentText = std::string(400, 'x');
    chunk.generatedQuestions = {"How long?", "Why?"};
    const ChunkCard card{chunk, IndexKind::keyword};
    EXPECT_EQ(card.note(), "Contextual note \u00b7 About power.");
    EXPECT_EQ(card.parent(), "Parent section sent to model on a match \u00b7 100 tok");
    EXPECT_EQ(card.questions(), (std::vector<std::string>{"How long?", "Why?"}));
    EXPECT_EQ(card.bodyText(), "The battery lasts a day.\n\nContextual note \u00b7 About power.\n\n"
                               "Parent section sent to model on a match \u00b7 100 tok\n\n"
                               "Generated questions\n\u2022 How long?\n\u2022 Why?");
}

TEST(ChunkCard, HasNoQuestionsWhereTheListIsEmpty) {
    DocumentChunk chunk = someChunk();
    chunk.generatedQuestions.emplace();
    EXPECT_EQ((ChunkCard{chunk, IndexKind::keyword}.bodyText()), chunk.text);
}

TEST(ChunkCard, TellsWhetherASearchByMeaningFindsIt) {
    DocumentChunk chunk = someChunk();
    const auto told = [&](IndexKind kind) { return ChunkCard{chunk, kind}.embedding(); };
    EXPECT_EQ(told(IndexKind::keyword), told(IndexKind::spotlight));
    EXPECT_EQ(told(IndexKind::vector), told(IndexKind::hybrid));
    const auto missing = told(IndexKind::vector);
    EXPECT_NE(missing, told(IndexKind::keyword));
    chunk.embedding.emplace();
    EXPECT_NE(told(IndexKind::vector), missing);
}

TEST(ChunkCard, FindsWordsInAllThatItShowsInAnyCase) {
    DocumentChunk chunk = someChunk();
    chunk.contextualNote = "About \u00c4hren.";
    chunk.generatedQuestions = {"How LONG?"};
    const ChunkCard card{chunk, IndexKind::keyword};
    for (const char* words : {"the battery", "guide > b", "\u00e4hren", "long?"}) {
        EXPECT_TRUE(card.mentions(words)) << words;
    }
    EXPECT_FALSE(card.mentions("charger"));
}

} // namespace
} // namespace ombrel

#include "core/DocumentChunk.h"

#include <gtest/gtest.h>

namespace ombrel {
namespace {

DocumentChunk withText(std::string text) {
    DocumentChunk chunk;
    chunk.text = std::move(text);
    return chunk;
}

TEST(SearchText, IsTheTextAlone) {
    EXPECT_EQ(withText("Body").searchText(), "Body");
}

TEST(SearchText, AddsTheNoteWithoutATrailingLineFeed) {
    DocumentChunk chunk = withText("Body");
    chunk.contextualNote = "A note.";
    EXPECT_EQ(chunk.searchText(), "Body\nA note.");
}

TEST(SearchText, TakesNoNoticeOfAnEmptyListOfQuestions) {
    DocumentChunk chunk = withText("Body");
    chunk.contextualNote = "A note.";
    chunk.generatedQuestions.emplace();
    EXPECT_EQ(chunk.searchText(), "Body\nA note.");
}

TEST(SearchText, CountsAnEmptyNote) {
    DocumentChunk chunk = withText("Body");
    chunk.contextualNote = "";
    EXPECT_EQ(chunk.searchText(), "Body\n");
}

TEST(SearchText, AddsTheQuestionsLineByLineAfterTheNote) {
    DocumentChunk chunk = withText("Body");
    chunk.generatedQuestions = {"One?", "Two?"};
    EXPECT_EQ(chunk.searchText(), "Body\nOne?\nTwo?");
    chunk.contextualNote = "A note.";
    EXPECT_EQ(chunk.searchText(), "Body\nA note.\nOne?\nTwo?");
}

TEST(SearchText, NeverHoldsTheParentText) {
    DocumentChunk chunk = withText("Body");
    chunk.parentText = "The whole section";
    EXPECT_EQ(chunk.searchText(), "Body");
}

TEST(PackText, IsTheParentTextWhenThereIsOne) {
    DocumentChunk chunk = withText("Body");
    EXPECT_EQ(chunk.packText(), "Body");
    chunk.parentText = "The whole section";
    EXPECT_EQ(chunk.packText(), "The whole section");
    chunk.parentText = "";
    EXPECT_EQ(chunk.packText(), "");
}

TEST(BreadcrumbText, JoinsThePartsWithAnArrow) {
    EXPECT_EQ(breadcrumbText({"Guide", "Setup", "Linux"}), "Guide > Setup > Linux");
    EXPECT_EQ(breadcrumbText({"Guide"}), "Guide");
    EXPECT_EQ(breadcrumbText({}), "");
}

} // namespace
} // namespace ombrel

#include "knowledge/ParentText.h"

#include <gtest/gtest.h>

#include <limits>

namespace ombrel {
namespace {

DocumentChunk makeChunk(std::string text, std::int64_t tokens,
                        std::vector<std::string> breadcrumb) {
    DocumentChunk chunk;
    chunk.id = Uuid::random();
    chunk.text = std::move(text);
    chunk.tokenCount = tokens;
    chunk.breadcrumb = std::move(breadcrumb);
    return chunk;
}

std::vector<std::string> parents(const ChunkArray& chunks) {
    std::vector<std::string> result;
    for (const DocumentChunk& chunk : chunks) {
        result.push_back(chunk.parentText.value_or("none"));
    }
    return result;
}

using Texts = std::vector<std::string>;

TEST(AssignParentText, GroupsNeighboursWithinTheBudget) {
    const ChunkArray chunks = assignParentText(
        {makeChunk("a", 600, {"s"}), makeChunk("b", 600, {"s"}), makeChunk("c", 600, {"s"})}, 1600);
    EXPECT_EQ(parents(chunks), (Texts{"a\n\nb", "a\n\nb", "c"}));
}

TEST(AssignParentText, FillsTheBudgetExactly) {
    const ChunkArray chunks =
        assignParentText({makeChunk("a", 5, {"s"}), makeChunk("b", 5, {"s"})}, 10);
    EXPECT_EQ(parents(chunks), (Texts{"a\n\nb", "a\n\nb"}));
}

TEST(AssignParentText, GivesEveryChunkItsOwnTextWhenAllSectionsDiffer) {
    const ChunkArray chunks = assignParentText(
        {makeChunk("a", 1, {"s"}), makeChunk("b", 1, {"t"}), makeChunk("c", 1, {"s"})}, 100);
    EXPECT_EQ(parents(chunks), (Texts{"a", "b", "c"}));
}

TEST(AssignParentText, MakesAChunkOverTheBudgetAGroupOfItsOwn) {
    const ChunkArray chunks = assignParentText(
        {makeChunk("a", 1, {"s"}), makeChunk("b", 50, {"s"}), makeChunk("c", 1, {"s"})}, 10);
    EXPECT_EQ(parents(chunks), (Texts{"a", "b", "c"}));
}

TEST(AssignParentText, ComparesTheSectionWithTheFirstOfTheGroup) {
    // A first chunk without tokens does not close its group by the budget.
    const ChunkArray chunks =
        assignParentText({makeChunk("a", 0, {"s"}), makeChunk("b", 50, {"s"})}, 10);
    EXPECT_EQ(parents(chunks), (Texts{"a\n\nb", "a\n\nb"}));
}

TEST(AssignParentText, ReturnsAnEmptyArrayAndAnUnchangedOneAsTheyStand) {
    EXPECT_TRUE(assignParentText({}, 10).empty());
    const ChunkArray once = assignParentText({makeChunk("a", 1, {"s"})}, 10);
    EXPECT_EQ(assignParentText(once, 10).identity(), once.identity());
}

TEST(AssignParentText, ReplacesParentsOfAnOtherBudget) {
    const ChunkArray wide =
        assignParentText({makeChunk("a", 5, {"s"}), makeChunk("b", 5, {"s"})}, 10);
    EXPECT_EQ(parents(assignParentText(wide, 9)), (Texts{"a", "b"}));
    EXPECT_EQ(parents(wide), (Texts{"a\n\nb", "a\n\nb"}));
}

TEST(AssignParentText, BearsAnyCountOfTokens) {
    constexpr auto largest = std::numeric_limits<std::int64_t>::max();
    constexpr auto smallest = std::numeric_limits<std::int64_t>::min();
    const ChunkArray chunks =
        assignParentText({makeChunk("a", largest, {"s"}), makeChunk("b", largest, {"s"}),
                          makeChunk("c", smallest, {"t"}), makeChunk("d", smallest, {"t"})},
                         largest);
    EXPECT_EQ(parents(chunks), (Texts{"a\n\nb", "a\n\nb", "c\n\nd", "c\n\nd"}));
}

TEST(ClearParentText, RemovesEveryParent) {
    const ChunkArray chunks =
        clearParentText(assignParentText({makeChunk("a", 1, {"s"}), makeChunk("b", 1, {"s"})}, 10));
    EXPECT_EQ(parents(chunks), (Texts{"none", "none"}));
    EXPECT_EQ(clearParentText(chunks).identity(), chunks.identity());
}

} // namespace
} // namespace ombrel

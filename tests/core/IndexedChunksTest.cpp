#include "core/IndexedChunks.h"

#include <gtest/gtest.h>

namespace ombrel {
namespace {

DocumentChunk chunk(std::string text, bool embedded) {
    DocumentChunk result;
    result.text = std::move(text);
    if (embedded) {
        result.embedding.emplace();
    }
    return result;
}

TEST(IndexedChunks, AreCountedOverAllDocuments) {
    EXPECT_EQ(chunkCount({}), 0u);
    EXPECT_EQ(
        chunkCount({{{}, {chunk("a", false), chunk("b", false)}}, {}, {{}, {chunk("c", true)}}}),
        3u);
}

TEST(IndexedChunks, HaveTheFirstChunkInTheFirstDocumentThatHasAny) {
    EXPECT_EQ(firstChunk({}), nullptr);
    EXPECT_EQ(firstChunk({{}, {}}), nullptr);
    const IndexedChunks pairs = {{}, {{}, {chunk("a", false), chunk("b", false)}}};
    ASSERT_NE(firstChunk(pairs), nullptr);
    EXPECT_EQ(firstChunk(pairs)->text, "a");
}

TEST(IndexedChunks, AreEmbeddedWhenEveryOneIsAndThereIsOne) {
    EXPECT_FALSE(allHaveEmbeddings({}));
    EXPECT_FALSE(allHaveEmbeddings({{}, {}}));
    EXPECT_TRUE(allHaveEmbeddings({{}, {{}, {chunk("a", true)}}, {}}));
    EXPECT_FALSE(allHaveEmbeddings({{{}, {chunk("a", true)}}, {{}, {chunk("b", false)}}}));
}

} // namespace
} // namespace ombrel

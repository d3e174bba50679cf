#include "knowledge/IndexReport.h"

#include "knowledge/ParentText.h"
#include "tests/support/TestPlatform.h"

#include <gtest/gtest.h>

namespace ombrel {
namespace {

class IndexReport : public testing::Test {
  protected:
    static DocumentChunk chunkOf(std::string text, std::int64_t tokens = 10) {
        DocumentChunk chunk;
        chunk.id = Uuid::random();
        chunk.text = std::move(text);
        chunk.tokenCount = tokens;
        return chunk;
    }
    void add(ChunkArray chunks) {
        SourceDocument source;
        source.id = Uuid::random();
        source.chunkCount = static_cast<std::int64_t>(chunks.size());
        auto index = state->editCurrentIndex();
        index->sources.push_back(source);
        index->chunksByDocument[source.id] = std::move(chunks);
    }
    void setKind(IndexKind kind) {
        Variant variant = state->currentVariant();
        variant.settings.index = kind;
        state->updateVariant(variant);
    }

    test::TestPlatform platform = test::makeTestPlatform();
    std::shared_ptr<AppState> state = AppState::make(platform.platform);
};

TEST_F(IndexReport, HasFourTilesInOrder) {
    setKind(IndexKind::hybrid);
    DocumentChunk embedded = chunkOf("a");
    embedded.embedding = {0.5};
    add({embedded, chunkOf("b")});
    add({});
    const std::vector<IndexTile> tiles = {
        {"Chunks", "2", "across 2 document(s)"},
        {"Index", "Hybrid", std::string(subtitle(IndexKind::hybrid))},
        {"Embedded", "1", "needs a build"},
        {"Parent groups", "0", "chunks with a larger parent"}};
    EXPECT_EQ(indexTiles(*state), tiles);
}

TEST_F(IndexReport, IsFullyEmbeddedWhenEveryChunkIs) {
    EXPECT_EQ(indexTiles(*state)[2].subtitle, "needs a build");
    DocumentChunk chunk = chunkOf("a");
    chunk.embedding.emplace();
    add({chunk});
    EXPECT_EQ(indexTiles(*state)[2].value, "1");
    EXPECT_EQ(indexTiles(*state)[2].subtitle, "fully embedded");
    EXPECT_TRUE(state->hasEmbeddingsForAllChunks());
}

TEST_F(IndexReport, CountsTheGroupsThatABuildMade) {
    const ChunkArray grouped =
        assignParentText({chunkOf("one", 600), chunkOf("two", 600), chunkOf("three", 600)}, 1600);
    EXPECT_EQ(parentGroupCount(grouped), 2);
    add(grouped);
    add(grouped);
    EXPECT_EQ(indexTiles(*state)[3].value, "4");
    EXPECT_EQ(parentGroupCount(clearParentText(grouped)), 0);
}

TEST_F(IndexReport, TellsNeighbouringGroupsOfEqualTextApart) {
    const ChunkArray alone =
        assignParentText({chunkOf("same", 90), chunkOf("same", 90), chunkOf("same", 90)}, 50);
    EXPECT_EQ(parentGroupCount(alone), 3);
    const ChunkArray pairs = assignParentText(
        {chunkOf("same", 20), chunkOf("same", 20), chunkOf("same", 20), chunkOf("same", 20)}, 50);
    EXPECT_EQ(parentGroupCount(pairs), 2);
}

TEST_F(IndexReport, CountsEmptyTextsWithTheirGroup) {
    const ChunkArray grouped =
        assignParentText({chunkOf("", 1), chunkOf("", 1), chunkOf("text", 1)}, 50);
    EXPECT_EQ(parentGroupCount(grouped), 1);
}

TEST(SectionTotals, NamesChunksAndTokens) {
    SourceDocument source;
    source.chunkCount = 12;
    source.tokenCount = 3400;
    EXPECT_EQ(sectionTotals(source), "12 chunks \u00b7 3400 tok");
}

} // namespace
} // namespace ombrel

#include "core/RAGIndex.h"

#include <gtest/gtest.h>

namespace ombrel {
namespace {

TEST(RAGIndex, StartsEmptyWithOneDefaultVariant) {
    const Uuid id = Uuid::random();
    const RAGIndex index(id, "Manuals");
    EXPECT_EQ(index.id, id);
    EXPECT_EQ(index.name, "Manuals");
    ASSERT_EQ(index.variants.size(), 1u);
    const Variant& variant = index.variants[0];
    EXPECT_EQ(index.selectedVariantID, variant.id);
    EXPECT_NE(variant.id, Uuid());
    EXPECT_EQ(variant.name, "Default");
    EXPECT_EQ(variant.settings, BuildSettings());
    EXPECT_EQ(variant.recallAt5, std::nullopt);
    EXPECT_EQ(variant.mrr, std::nullopt);
    EXPECT_TRUE(variant.recordedLatencies.empty());
    EXPECT_TRUE(index.sources.empty());
    EXPECT_TRUE(index.chunksByDocument.empty());
    EXPECT_TRUE(index.testQuestions.empty());
    EXPECT_EQ(index.selectedSourceID, std::nullopt);
    EXPECT_EQ(index.playgroundQuestion, "");
    EXPECT_FALSE(index.isAsking || index.isWarmingUp || index.isDrafting || index.isEnriching ||
                 index.isEvaluating);
}

TEST(RAGIndex, GivesEachNewIndexAVariantOfItsOwn) {
    EXPECT_NE(RAGIndex(Uuid::random(), "a").selectedVariantID,
              RAGIndex(Uuid::random(), "b").selectedVariantID);
}

TEST(IndexedChunksOfAnIndex, WalkItsSourcesInOrderAndLeaveOutThoseWithoutChunks) {
    RAGIndex index(Uuid::random(), "Manuals");
    for (const char* name : {"b", "without", "a"}) {
        index.sources.emplace_back().id = Uuid::random();
        index.sources.back().name = name;
    }
    for (const std::size_t place : {2u, 0u}) {
        DocumentChunk chunk;
        chunk.id = Uuid::random();
        index.chunksByDocument[index.sources[place].id] = {chunk};
    }
    index.chunksByDocument[Uuid::random()] = {DocumentChunk()}; // of no source
    const IndexedChunks pairs = index.indexedChunks();
    ASSERT_EQ(pairs.size(), 2u);
    EXPECT_EQ(pairs[0].document.name, "b");
    EXPECT_EQ(pairs[1].document.name, "a");
    EXPECT_EQ(pairs[1].chunks.size(), 1u);
}

TEST(CurrentSettings, AreThoseOfTheSelectedVariant) {
    RAGIndex index(Uuid::random(), "Manuals");
    Variant other;
    other.id = Uuid::random();
    other.settings.topK = 12;
    index.variants.push_back(other);
    EXPECT_EQ(index.currentSettings().topK, 6);
    index.selectedVariantID = other.id;
    EXPECT_EQ(index.currentSettings().topK, 12);
}

TEST(CurrentSettings, AreTheDefaultsWhenNoVariantIsSelected) {
    RAGIndex index(Uuid::random(), "Manuals");
    index.variants[0].settings.topK = 12;
    index.selectedVariantID = Uuid::random();
    EXPECT_EQ(index.currentSettings(), BuildSettings());
}

TEST(CurrentSettings, AreThoseOfTheFirstOfTwoVariantsWithTheSameID) {
    RAGIndex index(Uuid::random(), "Manuals");
    index.variants.push_back(index.variants[0]);
    index.variants[1].settings.topK = 12;
    EXPECT_EQ(index.currentSettings().topK, 6);
}

} // namespace
} // namespace ombrel

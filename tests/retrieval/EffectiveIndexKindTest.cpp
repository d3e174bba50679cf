#include "retrieval/EffectiveIndexKind.h"

#include "tests/retrieval/RetrievalSamples.h"

#include <gtest/gtest.h>

namespace ombrel {
namespace {

using namespace ombrel::test;
using Embeddings = std::vector<std::optional<Vector>>;

TEST(EffectiveIndexKind, SpotlightAndKeywordAreSearchedByKeyword) {
    const IndexedChunks embedded = makeCorpus(Embeddings{Vector{1, 0}, Vector{0, 1}});
    EXPECT_EQ(effectiveIndexKind(IndexKind::spotlight, embedded), IndexKind::keyword);
    EXPECT_EQ(effectiveIndexKind(IndexKind::keyword, embedded), IndexKind::keyword);
}

TEST(EffectiveIndexKind, VectorAndHybridStayWhenEveryChunkHasAnEmbedding) {
    const IndexedChunks embedded = makeCorpus(Embeddings{Vector{1, 0}, Vector{0, 1}});
    EXPECT_EQ(effectiveIndexKind(IndexKind::vector, embedded), IndexKind::vector);
    EXPECT_EQ(effectiveIndexKind(IndexKind::hybrid, embedded), IndexKind::hybrid);
}

TEST(EffectiveIndexKind, OneChunkWithoutAnEmbeddingMakesItKeyword) {
    const IndexedChunks partly = makeCorpus(Embeddings{Vector{1, 0}, std::nullopt});
    EXPECT_EQ(effectiveIndexKind(IndexKind::vector, partly), IndexKind::keyword);
    EXPECT_EQ(effectiveIndexKind(IndexKind::hybrid, partly), IndexKind::keyword);
}

TEST(EffectiveIndexKind, NoChunksMakeItKeyword) {
    EXPECT_EQ(effectiveIndexKind(IndexKind::vector, {}), IndexKind::keyword);
    EXPECT_EQ(effectiveIndexKind(IndexKind::hybrid, {makeDocument({})}), IndexKind::keyword);
}

} // namespace
} // namespace ombrel

#include "core/BuildSettings.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace ombrel {
namespace {

TEST(BuildSettings, StartsWithTheDefaultRecipe) {
    const BuildSettings settings;
    EXPECT_EQ(settings.chunking, ChunkingStrategy::headingAware);
    EXPECT_EQ(settings.targetChunkSize, 400);
    EXPECT_EQ(settings.overlapPercent, 10);
    EXPECT_EQ(settings.index, IndexKind::hybrid);
    EXPECT_EQ(settings.enrichments, std::set{Enrichment::contextualNotes});
    EXPECT_EQ(settings.generatedQuestionsPerChunk, 3);
    EXPECT_EQ(settings.transform, QueryTransform::rewrite);
    EXPECT_FALSE(settings.rerank);
    EXPECT_EQ(settings.topK, 6);
    EXPECT_EQ(settings.contextBudget, 3000);
}

TEST(BuildSettings, EqualsWhateverTheOrderInWhichEnrichmentsWereInserted) {
    BuildSettings a;
    BuildSettings b;
    a.enrichments.clear();
    b.enrichments.clear();
    for (const auto e : {Enrichment::parentChild, Enrichment::contextualNotes}) {
        a.enrichments.insert(e);
    }
    for (const auto e : {Enrichment::contextualNotes, Enrichment::parentChild}) {
        b.enrichments.insert(e);
    }
    EXPECT_EQ(a, b);
    b.enrichments.insert(Enrichment::generatedQuestions);
    EXPECT_NE(a, b);
}

TEST(BuildSettings, DiffersInEachOfItsTenFields) {
    const BuildSettings base;
    const auto differs = [&](auto change) {
        BuildSettings changed;
        change(changed);
        return !(changed == base);
    };
    EXPECT_TRUE(differs([](auto& s) { s.chunking = ChunkingStrategy::fixed; }));
    EXPECT_TRUE(differs([](auto& s) { s.targetChunkSize += 0.25; }));
    EXPECT_TRUE(differs([](auto& s) { s.overlapPercent += 0.25; }));
    EXPECT_TRUE(differs([](auto& s) { s.index = IndexKind::keyword; }));
    EXPECT_TRUE(differs([](auto& s) { s.enrichments.clear(); }));
    EXPECT_TRUE(differs([](auto& s) { s.generatedQuestionsPerChunk += 0.25; }));
    EXPECT_TRUE(differs([](auto& s) { s.transform = QueryTransform::hyde; }));
    EXPECT_TRUE(differs([](auto& s) { s.rerank = true; }));
    EXPECT_TRUE(differs([](auto& s) { s.topK += 0.25; }));
    EXPECT_TRUE(differs([](auto& s) { s.contextBudget += 0.25; }));
}

TEST(BuildSettings, MatchesABuildWhateverConcernsOnlyQuestions) {
    const BuildSettings built;
    BuildSettings now;
    now.topK = 12;
    now.transform = QueryTransform::tool;
    now.rerank = true;
    now.contextBudget = 8192;
    EXPECT_TRUE(now.matchesBuild(built));
}

TEST(BuildSettings, MatchesNoBuildWithAnotherChunkSizeByHoweverLittle) {
    const BuildSettings built;
    BuildSettings now;
    now.targetChunkSize = std::nextafter(now.targetChunkSize, 1000);
    EXPECT_FALSE(now.matchesBuild(built));
}

TEST(BuildSettings, MatchesNoBuildThatDiffersInWhatShapesTheKnowledge) {
    const BuildSettings built;
    const auto matches = [&](auto change) {
        BuildSettings now;
        change(now);
        return now.matchesBuild(built);
    };
    EXPECT_FALSE(matches([](auto& s) { s.chunking = ChunkingStrategy::paragraph; }));
    EXPECT_FALSE(matches([](auto& s) { s.overlapPercent = 11; }));
    EXPECT_FALSE(matches([](auto& s) { s.index = IndexKind::vector; }));
    EXPECT_FALSE(matches([](auto& s) { s.enrichments.insert(Enrichment::parentChild); }));
    EXPECT_FALSE(matches([](auto& s) { s.generatedQuestionsPerChunk = 4; }));
}

TEST(Truncated, CutsTowardsZero) {
    EXPECT_EQ(truncated(6.999), 6);
    EXPECT_EQ(truncated(-6.999), -6);
    EXPECT_EQ(truncated(400), 400);
    EXPECT_EQ(truncated(-0.5), 0);
}

TEST(Truncated, HoldsWhatAFileMayContainInsideTheIntegers) {
    using Limits = std::numeric_limits<std::int64_t>;
    EXPECT_EQ(truncated(1e300), Limits::max());
    EXPECT_EQ(truncated(-1e300), Limits::min());
    EXPECT_EQ(truncated(9223372036854775808.0), Limits::max());
    EXPECT_EQ(truncated(-9223372036854775808.0), Limits::min());
    EXPECT_EQ(truncated(9223372036854774784.0), 9223372036854774784);
    EXPECT_EQ(truncated(std::numeric_limits<double>::infinity()), Limits::max());
    EXPECT_EQ(truncated(std::nan("")), 0);
}

} // namespace
} // namespace ombrel

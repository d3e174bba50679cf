#include "platform/EmbeddingCache.h"

#include <gtest/gtest.h>

namespace ombrel {
namespace {

TEST(EmbeddingCache, FindsWhatWasStored) {
    EmbeddingCache cache(10000);
    EXPECT_EQ(cache.find("a"), nullptr);
    cache.store("a", {1, 2});
    cache.store("", {3});
    ASSERT_NE(cache.find("a"), nullptr);
    EXPECT_EQ(*cache.find("a"), (Vector{1, 2}));
    EXPECT_EQ(*cache.find(""), Vector{3});
}

TEST(EmbeddingCache, ATextKeepsTheVectorThatItHas) {
    EmbeddingCache cache(10000);
    cache.store("a", {1});
    cache.store("a", {2});
    EXPECT_EQ(*cache.find("a"), Vector{1});
    EXPECT_EQ(cache.count(), 1U);
}

TEST(EmbeddingCache, DropsWhatWasNotUsedForLongest) {
    EmbeddingCache cache(3 * (1 + 100 * sizeof(double) + 128));
    for (const char* text : {"a", "b", "c"}) {
        cache.store(text, Vector(100, 1.0));
    }
    EXPECT_EQ(cache.count(), 3U);
    cache.find("a");
    cache.store("d", Vector(100, 1.0));
    EXPECT_EQ(cache.count(), 3U);
    EXPECT_NE(cache.find("a"), nullptr);
    EXPECT_EQ(cache.find("b"), nullptr);
    cache.store("huge", Vector(1000, 1.0));
    EXPECT_EQ(cache.count(), 0U);
}

} // namespace
} // namespace ombrel

#include "retrieval/CompositeSearcher.h"

#include "tests/retrieval/RetrievalSamples.h"
#include "tests/support/TestPlatform.h"

#include <gtest/gtest.h>

namespace ombrel {
namespace {

using namespace ombrel::test;
using Hits = std::vector<SearchHit>;

// What a search gives when the services answer at once.
Hits searchNow(TestPlatform& test, const CompositeSearcher& searcher, std::string query,
               std::int64_t topK) {
    Hits result;
    const auto run = [](CompositeSearcher s, std::string q, std::int64_t k,
                        Hits* out) -> Task<void> {
        auto searching = s.search(q, k);
        *out = co_await searching;
    };
    test.executor->spawn(run(searcher, std::move(query), topK, &result));
    test.executor->runAll();
    return result;
}

// Twelve chunks: each has the word "common" once more than the next one, and an embedding that is
// nearer to (1, 0) the later the chunk stands.
IndexedChunks twelveChunks() {
    std::vector<DocumentChunk> chunks;
    for (int i = 0; i < 12; ++i) {
        std::string text = "word" + std::to_string(i);
        for (int j = 0; j < 12; ++j) {
            text += j < 12 - i ? " common" : " filler";
        }
        chunks.push_back(makeChunk(text, Vector{1, static_cast<double>(12 - i)}));
    }
    return {makeDocument(std::move(chunks))};
}

IndexedChunks withoutEmbeddings(IndexedChunks corpus) {
    for (IndexedDocument& document : corpus) {
        for (DocumentChunk& chunk : document.chunks.edit()) {
            chunk.embedding.reset();
        }
    }
    return corpus;
}

TEST(BuildSearcher, HasTheIndexesThatTheKindNeeds) {
    TestPlatform test = makeTestPlatform();
    const IndexedChunks corpus = twelveChunks();
    const auto has = [&](IndexKind kind) {
        const CompositeSearcher searcher = buildSearcher(kind, corpus, test.platform);
        EXPECT_EQ(searcher.indexKind(), kind);
        return std::pair(searcher.keywordIndex().has_value(), searcher.vectorIndex().has_value());
    };
    EXPECT_EQ(has(IndexKind::spotlight), std::pair(false, false));
    EXPECT_EQ(has(IndexKind::keyword), std::pair(true, false));
    EXPECT_EQ(has(IndexKind::vector), std::pair(false, true));
    EXPECT_EQ(has(IndexKind::hybrid), std::pair(true, true));
}

TEST(CompositeSearcher, SpotlightReturnsNothing) {
    TestPlatform test = makeTestPlatform();
    const auto searcher = buildSearcher(IndexKind::spotlight, twelveChunks(), test.platform);
    EXPECT_TRUE(searchNow(test, searcher, "common", 5).empty());
    EXPECT_TRUE(test.embedder->calls.empty());
}

TEST(CompositeSearcher, KeywordDividesByTheBestScoreOfTheList) {
    TestPlatform test = makeTestPlatform();
    const IndexedChunks corpus = twelveChunks();
    const auto searcher = buildSearcher(IndexKind::keyword, corpus, test.platform);
    const auto raw = searcher.keywordIndex()->search("common", 4);
    const Hits hits = searchNow(test, searcher, "common", 4);
    ASSERT_EQ(hits.size(), 4U);
    for (std::size_t i = 0; i < hits.size(); ++i) {
        EXPECT_EQ(hits[i].chunk, corpus[0].chunks[i]);
        EXPECT_EQ(hits[i].document, corpus[0].document);
        EXPECT_EQ(hits[i].keywordScore, raw[i].score / raw[0].score);
        EXPECT_EQ(hits[i].fusedScore, hits[i].keywordScore);
        EXPECT_EQ(hits[i].vectorScore, 0);
    }
    EXPECT_TRUE(test.embedder->calls.empty());
}

TEST(CompositeSearcher, KeywordWithOneHitHasAllScoresOne) {
    TestPlatform test = makeTestPlatform();
    const auto searcher = buildSearcher(IndexKind::keyword, twelveChunks(), test.platform);
    const Hits hits = searchNow(test, searcher, "word3", 5);
    ASSERT_EQ(hits.size(), 1U);
    EXPECT_EQ(hits[0].keywordScore, 1);
    EXPECT_EQ(hits[0].fusedScore, 1);
}

TEST(CompositeSearcher, VectorDividesByTheBestSimilarityOfTheList) {
    TestPlatform test = makeTestPlatform();
    test.embedder->vectorOf = [](std::string_view) { return Vector{1, 0}; };
    const IndexedChunks corpus = twelveChunks();
    const auto searcher = buildSearcher(IndexKind::vector, corpus, test.platform);
    const auto raw = searcher.vectorIndex()->search({1, 0}, 3);
    const Hits hits = searchNow(test, searcher, "anything", 3);
    ASSERT_EQ(hits.size(), 3U);
    for (std::size_t i = 0; i < hits.size(); ++i) {
        EXPECT_EQ(hits[i].chunk, corpus[0].chunks[11 - i]);
        EXPECT_EQ(hits[i].vectorScore, raw[i].score / raw[0].score);
        EXPECT_EQ(hits[i].fusedScore, hits[i].vectorScore);
        EXPECT_EQ(hits[i].keywordScore, 0);
    }
    ASSERT_EQ(test.embedder->calls.size(), 1U);
    EXPECT_EQ(test.embedder->calls[0].language, "en");
    EXPECT_EQ(test.embedder->calls[0].texts, std::vector<std::string>{"anything"});
}

TEST(CompositeSearcher, VectorWithoutAQueryVectorReturnsNothing) {
    TestPlatform test = makeTestPlatform();
    const auto searcher = buildSearcher(IndexKind::vector, twelveChunks(), test.platform);
    test.embedder->vectorOf = [](std::string_view) { return std::nullopt; };
    EXPECT_TRUE(searchNow(test, searcher, "common", 5).empty());
    test.embedder->vectorOf = [](std::string_view) { return Vector{1, 0}; };
    EXPECT_EQ(searchNow(test, searcher, "common", 5).size(), 5U);
    test.embedder->languages = {"de"};
    EXPECT_TRUE(searchNow(test, searcher, "common", 5).empty());
}

TEST(CompositeSearcher, AsksForNoVectorWhenThereAreNoChunks) {
    TestPlatform test = makeTestPlatform();
    for (const IndexKind kind : {IndexKind::keyword, IndexKind::vector, IndexKind::hybrid}) {
        const auto searcher = buildSearcher(kind, {}, test.platform);
        EXPECT_TRUE(searchNow(test, searcher, "common", 5).empty());
    }
    EXPECT_TRUE(test.embedder->calls.empty());
}

TEST(CompositeSearcher, NeedNotOutliveItsSearch) {
    TestPlatform test = makeTestPlatform();
    test.embedder->vectorOf = [](std::string_view) { return Vector{1, 0}; };
    Hits result;
    const auto run = [](Platform platform, Hits* out) -> Task<void> {
        std::optional<CompositeSearcher> searcher =
            buildSearcher(IndexKind::hybrid, twelveChunks(), platform);
        auto searching = searcher->search("common", 5);
        searcher.reset();
        *out = co_await searching;
    };
    test.executor->spawn(run(test.platform, &result));
    test.executor->runAll();
    EXPECT_EQ(result.size(), 5U);
}

TEST(HybridSearch, WithoutEmbeddingsIsTheKeywordList) {
    TestPlatform test = makeTestPlatform();
    const IndexedChunks corpus = withoutEmbeddings(twelveChunks());
    const auto searcher = buildSearcher(IndexKind::hybrid, corpus, test.platform);
    const Hits hits = searchNow(test, searcher, "common", 5);
    ASSERT_EQ(hits.size(), 5U);
    for (std::size_t i = 0; i < hits.size(); ++i) {
        EXPECT_EQ(hits[i].chunk, corpus[0].chunks[i]);
        EXPECT_EQ(hits[i].vectorScore, 0);
        EXPECT_EQ(hits[i].fusedScore, (1 / (60.0 + static_cast<double>(i) + 1)) / (1 / (60.0 + 1)));
    }
    EXPECT_EQ(hits[0].keywordScore, 1);
    EXPECT_EQ(hits[0].fusedScore, 1);
}

TEST(HybridSearch, WithoutAQueryVectorTheKeywordListAloneDecides) {
    TestPlatform test = makeTestPlatform();
    test.embedder->vectorOf = [](std::string_view) { return std::nullopt; };
    const IndexedChunks corpus = twelveChunks();
    const auto searcher = buildSearcher(IndexKind::hybrid, corpus, test.platform);
    const Hits hits = searchNow(test, searcher, "common", 3);
    ASSERT_EQ(hits.size(), 3U);
    for (std::size_t i = 0; i < hits.size(); ++i) {
        EXPECT_EQ(hits[i].chunk, corpus[0].chunks[i]);
        EXPECT_EQ(hits[i].vectorScore, 0);
    }
}

TEST(HybridSearch, WithoutASharedWordTheVectorListAloneDecides) {
    TestPlatform test = makeTestPlatform();
    test.embedder->vectorOf = [](std::string_view) { return Vector{1, 0}; };
    const IndexedChunks corpus = twelveChunks();
    const auto searcher = buildSearcher(IndexKind::hybrid, corpus, test.platform);
    const Hits hits = searchNow(test, searcher, "absent", 3);
    ASSERT_EQ(hits.size(), 3U);
    for (std::size_t i = 0; i < hits.size(); ++i) {
        EXPECT_EQ(hits[i].chunk, corpus[0].chunks[11 - i]);
        EXPECT_EQ(hits[i].keywordScore, 0);
    }
    EXPECT_EQ(hits[0].vectorScore, 1);
    EXPECT_EQ(hits[0].fusedScore, 1);
}

TEST(HybridSearch, AsksEachIndexForThreeTimesAsMany) {
    TestPlatform test = makeTestPlatform();
    test.embedder->vectorOf = [](std::string_view) { return Vector{1, 0}; };
    // Twenty chunks by keyword, twenty others by vector: with topK 5, fifteen of each are seen.
    std::vector<DocumentChunk> chunks;
    for (int i = 0; i < 20; ++i) {
        std::string text = "common";
        for (int j = 0; j < i; ++j) {
            text += " filler";
        }
        chunks.push_back(makeChunk(text));
    }
    for (int i = 0; i < 20; ++i) {
        chunks.push_back(makeChunk("other", Vector{1, 0.1 * i}));
    }
    // A chunk at keyword rank 15 only for its place in both lists, and one at 16, out of sight.
    chunks[14].embedding = Vector{1, 0.1 * 12.5};
    chunks[15].embedding = Vector{1, 0.05};
    const IndexedChunks corpus = {makeDocument(chunks)};
    const auto searcher = buildSearcher(IndexKind::hybrid, corpus, test.platform);
    const Hits hits = searchNow(test, searcher, "common", 5);
    ASSERT_EQ(hits.size(), 5U);
    // Vector rank 15 and keyword rank 15 make more than rank 1 in one list.
    EXPECT_EQ(hits[0].chunk.id, chunks[14].id);
    // Keyword rank 16 is not seen, so vector rank 2 counts alone.
    for (const SearchHit& hit : hits) {
        if (hit.chunk.id == chunks[15].id) {
            EXPECT_EQ(hit.keywordScore, 0);
        }
    }
    EXPECT_NE(hits[1].chunk.id, chunks[15].id);
}

TEST(HybridSearch, AChunkFirstInBothListsHasTwiceTheSumOfOneFirstInOne) {
    TestPlatform test = makeTestPlatform();
    test.embedder->vectorOf = [](std::string_view) { return Vector{1, 0}; };
    const IndexedChunks both = {
        makeDocument({makeChunk("common", Vector{1, 0}), makeChunk("other")})};
    const Hits first =
        searchNow(test, buildSearcher(IndexKind::hybrid, both, test.platform), "common", 5);
    ASSERT_EQ(first.size(), 1U);
    EXPECT_EQ(first[0].keywordScore, 1);
    EXPECT_EQ(first[0].vectorScore, 1);
    EXPECT_EQ(first[0].fusedScore, 1);

    // Ranks 1 and 1 beside rank 2 in one list only.
    const IndexedChunks beside = {makeDocument(
        {makeChunk("common common", Vector{1, 0}), makeChunk("common and other words")})};
    const Hits hits =
        searchNow(test, buildSearcher(IndexKind::hybrid, beside, test.platform), "common", 5);
    ASSERT_EQ(hits.size(), 2U);
    EXPECT_EQ(hits[1].fusedScore, (1 / 62.0) / (1 / 61.0 + 1 / 61.0));
    EXPECT_EQ(hits[1].vectorScore, 0);
}

TEST(HybridSearch, EqualSumsComeInTheSameOrderEveryTime) {
    TestPlatform test = makeTestPlatform();
    test.embedder->vectorOf = [](std::string_view) { return Vector{1, 0}; };
    const IndexedChunks corpus = {
        makeDocument({makeChunk("other", Vector{1, 0}), makeChunk("common")})};
    const auto searcher = buildSearcher(IndexKind::hybrid, corpus, test.platform);
    const Hits hits = searchNow(test, searcher, "common", 5);
    ASSERT_EQ(hits.size(), 2U);
    EXPECT_EQ(hits[0].fusedScore, 1);
    EXPECT_EQ(hits[1].fusedScore, 1);
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(searchNow(test, searcher, "common", 5), hits);
    }
}

TEST(HybridSearch, TakesAnyTopK) {
    TestPlatform test = makeTestPlatform();
    const auto searcher = buildSearcher(IndexKind::hybrid, twelveChunks(), test.platform);
    EXPECT_TRUE(searchNow(test, searcher, "common", 0).empty());
    EXPECT_TRUE(searchNow(test, searcher, "common", -1).empty());
    EXPECT_EQ(searchNow(test, searcher, "common", std::numeric_limits<std::int64_t>::max()).size(),
              12U);
}

SearchHit makeHit(double keywordScore, double vectorScore) {
    SearchHit hit;
    hit.chunk = makeChunk("text");
    hit.keywordScore = keywordScore;
    hit.vectorScore = vectorScore;
    hit.fusedScore = 0.123;
    return hit;
}

TEST(MergeByRank, OfNothingIsNothing) {
    EXPECT_TRUE(mergeByRank({}, 5).empty());
    EXPECT_TRUE(mergeByRank({{}, {}, {}}, 5).empty());
    EXPECT_TRUE(mergeByRank({{makeHit(1, 1)}}, 0).empty());
}

TEST(MergeByRank, OfIdenticalListsKeepsTheOrderAndTheScores) {
    const Hits list = {makeHit(1, 0.5), makeHit(0.75, 0), makeHit(0.25, 1)};
    const Hits merged = mergeByRank({list, list, list}, 5);
    ASSERT_EQ(merged.size(), 3U);
    for (std::size_t i = 0; i < merged.size(); ++i) {
        EXPECT_EQ(merged[i].chunk.id, list[i].chunk.id);
        EXPECT_EQ(merged[i].keywordScore, list[i].keywordScore);
        EXPECT_EQ(merged[i].vectorScore, list[i].vectorScore);
    }
    EXPECT_EQ(merged[0].fusedScore, 1);
    EXPECT_EQ(merged[1].fusedScore,
              (1 / 62.0 + 1 / 62.0 + 1 / 62.0) / (1 / 61.0 + 1 / 61.0 + 1 / 61.0));
}

TEST(MergeByRank, AddsUpTheRanksAndKeepsTheFirstOccurrence) {
    const SearchHit a = makeHit(1, 0);
    const SearchHit b = makeHit(0.5, 0);
    SearchHit bAgain = b;
    bAgain.keywordScore = 0.9;
    const SearchHit c = makeHit(0.2, 0);
    const Hits merged = mergeByRank({{a, b}, {c, bAgain}}, 2);
    ASSERT_EQ(merged.size(), 2U);
    EXPECT_EQ(merged[0].chunk.id, b.chunk.id);
    EXPECT_EQ(merged[0].keywordScore, 0.5);
    EXPECT_EQ(merged[0].fusedScore, 1);
    EXPECT_EQ(merged[1].chunk.id, a.chunk.id);
    EXPECT_EQ(merged[1].fusedScore, (1 / 61.0) / (1 / 62.0 + 1 / 62.0));
}

} // namespace
} // namespace ombrel

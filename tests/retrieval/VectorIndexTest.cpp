#include "retrieval/VectorIndex.h"

#include "retrieval/PackedVectors.h"
#include "tests/retrieval/RetrievalSamples.h"
#include "tests/support/ScriptedRecognizer.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace ombrel {
namespace {

using namespace ombrel::test;
using Embeddings = std::vector<std::optional<Vector>>;

double plainSimilarity(const Vector& a, const Vector& b) {
    if (a.size() != b.size() || a.empty()) {
        return 0;
    }
    double dot = 0;
    double normA = 0;
    double normB = 0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        dot += a[i] * b[i];
        normA += a[i] * a[i];
        normB += b[i] * b[i];
    }
    if (!(normA > 0 && normB > 0)) {
        return 0;
    }
    return dot / (std::sqrt(normA) * std::sqrt(normB));
}

void expectSameResults(const IndexedChunks& corpus, const Vector& query, std::size_t topK) {
    std::vector<std::pair<const DocumentChunk*, double>> expected;
    for (const IndexedDocument& document : corpus) {
        for (const DocumentChunk& chunk : document.chunks) {
            if (chunk.embedding && !chunk.embedding->empty()) {
                const double similarity = plainSimilarity(query, *chunk.embedding);
                if (similarity > 0) {
                    expected.emplace_back(&chunk, similarity);
                }
            }
        }
    }
    std::ranges::stable_sort(expected,
                             [](const auto& a, const auto& b) { return a.second > b.second; });
    expected.resize(std::min(expected.size(), topK));
    const VectorIndex index(corpus, ScriptedRecognizer());
    const auto found = index.search(query, static_cast<std::int64_t>(topK));
    ASSERT_EQ(found.size(), expected.size());
    for (std::size_t i = 0; i < found.size(); ++i) {
        ASSERT_EQ(found[i].chunk, expected[i].first) << "place " << i;
        ASSERT_EQ(found[i].score, expected[i].second) << "place " << i;
    }
}

Vector randomVector(Random& random, std::size_t dimension) {
    std::normal_distribution<double> normal;
    Vector vector(dimension);
    for (double& value : vector) {
        value = normal(random);
    }
    return vector;
}

// A vector that is near another one.
Vector nearVector(Random& random, Vector vector) {
    std::normal_distribution<double> normal(0, 0.001);
    for (double& value : vector) {
        value += normal(random);
    }
    return vector;
}

TEST(CosineSimilarity, IsZeroForVectorsThatCannotBeCompared) {
    EXPECT_EQ(VectorIndex::cosineSimilarity({1, 2}, {1, 2, 3}), 0);
    EXPECT_EQ(VectorIndex::cosineSimilarity({}, {}), 0);
    EXPECT_EQ(VectorIndex::cosineSimilarity({0, 0}, {1, 2}), 0);
    EXPECT_EQ(VectorIndex::cosineSimilarity({1, 2}, {0, 0}), 0);
    EXPECT_EQ(VectorIndex::cosineSimilarity({std::nan(""), 2}, {1, 2}), 0);
}

TEST(CosineSimilarity, DividesTheDotProductByTheNorms) {
    EXPECT_EQ(VectorIndex::cosineSimilarity({3, 4}, {3, 4}), 1);
    EXPECT_EQ(VectorIndex::cosineSimilarity({3, 4}, {4, 3}), 24.0 / 25.0);
    EXPECT_EQ(VectorIndex::cosineSimilarity({1, 0}, {0, 5}), 0);
    EXPECT_EQ(VectorIndex::cosineSimilarity({3, 4}, {-3, -4}), -1);
}

TEST(VectorIndex, OverNoChunksIsEnglishAndReturnsNothing) {
    ScriptedRecognizer languages;
    languages.languageOf = [](std::string_view) { return std::nullopt; };
    const VectorIndex index({}, languages);
    EXPECT_EQ(index.language(), "en");
    EXPECT_TRUE(index.search({1, 2}, 5).empty());
    EXPECT_EQ(languages.texts(), std::vector<std::string>{""});
}

TEST(VectorIndex, TakesTheLanguageOfTheFirstChunksText) {
    ScriptedRecognizer languages;
    languages.languageOf = [](std::string_view text) -> std::optional<std::string> {
        return text == "Erster Text" ? std::optional<std::string>("de") : std::nullopt;
    };
    DocumentChunk first = makeChunk("Erster Text");
    first.contextualNote = "A note in English";
    const IndexedChunks corpus = {makeDocument({}), makeDocument({first, makeChunk("Second")})};
    EXPECT_EQ(VectorIndex(corpus, languages).language(), "de");
    EXPECT_EQ(languages.texts(), std::vector<std::string>{"Erster Text"});
    const IndexedChunks other = makeCorpus(std::vector<std::string>{"12345", "Erster Text"});
    EXPECT_EQ(VectorIndex(other, languages).language(), "en");
}

TEST(VectorIndex, SkipsChunksWithoutAnEmbeddingAndSearchesTheOthers) {
    const IndexedChunks corpus =
        makeCorpus(Embeddings{std::nullopt, Vector{1, 0}, Vector{}, Vector{1, 1}});
    const VectorIndex index(corpus, ScriptedRecognizer());
    const auto found = index.search({1, 0}, 5);
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found[0].chunk, &corpus[0].chunks[1]);
    EXPECT_EQ(found[0].score, 1);
    EXPECT_EQ(found[1].chunk, &corpus[0].chunks[3]);
}

TEST(VectorIndex, DropsAVectorOfAnotherLength) {
    const IndexedChunks corpus = makeCorpus(Embeddings{Vector{1, 0, 0}, Vector{1, 0}});
    const VectorIndex index(corpus, ScriptedRecognizer());
    const auto found = index.search({1, 0}, 5);
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found[0].chunk, &corpus[0].chunks[1]);
}

TEST(VectorIndex, DropsAZeroVector) {
    const VectorIndex index(makeCorpus(Embeddings{Vector{0, 0}, Vector{0, 1}}),
                            ScriptedRecognizer());
    EXPECT_EQ(index.search({0, 2}, 5).size(), 1U);
    EXPECT_TRUE(index.search({0, 0}, 5).empty());
}

TEST(VectorIndex, DropsAnExactlyOppositeVector) {
    const VectorIndex index(makeCorpus(Embeddings{Vector{-1, -2}, Vector{1, 2}}),
                            ScriptedRecognizer());
    const auto found = index.search({1, 2}, 5);
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found[0].score, VectorIndex::cosineSimilarity({1, 2}, {1, 2}));
}

TEST(VectorIndex, EqualSimilaritiesKeepTheOrderOfTheInput) {
    IndexedChunks corpus;
    for (int i = 0; i < 20; ++i) {
        corpus.push_back(
            makeCorpus(Embeddings{Vector{0.3, -1}, Vector{0.2, 0.7, 0.1}, Vector{1, 2}})[0]);
    }
    const VectorIndex index(corpus, ScriptedRecognizer());
    const auto found = index.search({1, 2}, 12);
    ASSERT_EQ(found.size(), 12U);
    for (std::size_t i = 0; i < found.size(); ++i) {
        EXPECT_EQ(found[i].chunk, &corpus[i].chunks[2]);
        EXPECT_EQ(found[i].document->id, corpus[i].document.id);
    }
}

TEST(VectorIndex, TopKOfZeroOrLessReturnsNothing) {
    const VectorIndex index(makeCorpus(Embeddings{Vector{1}}), ScriptedRecognizer());
    EXPECT_TRUE(index.search({1}, 0).empty());
    EXPECT_TRUE(index.search({1}, -1).empty());
    EXPECT_EQ(index.search({1}, std::numeric_limits<std::int64_t>::max()).size(), 1U);
}

TEST(VectorIndex, EqualsThePlainScanWithNumbersOutsideTheUsualRange) {
    const double infinity = std::numeric_limits<double>::infinity();
    const double huge = 1e200;
    const double tiny = 1e-170;
    const Embeddings embeddings = {Vector{1, 2},           Vector{std::nan(""), 1},
                                   Vector{infinity, 1},    Vector{huge, huge},
                                   Vector{tiny, tiny},     Vector{1e-90, 2e-90},
                                   Vector{1e90, 2e90},     Vector{1e300, 1},
                                   Vector{5e-324, 5e-324}, Vector{-infinity, infinity},
                                   Vector{1e-320, 1},      Vector{1e120, 1}};
    const IndexedChunks corpus = makeCorpus(embeddings);
    for (const std::optional<Vector>& query : embeddings) {
        for (const std::size_t topK : {1, 3, 100}) {
            expectSameResults(corpus, *query, topK);
        }
    }
}

TEST(VectorIndex, EqualsThePlainScanOnRandomCorpora) {
    for (std::uint64_t seed = 0; seed < 300; ++seed) {
        Random random(seed);
        const std::size_t dimension = 1 + below(random, seed % 5 == 0 ? 400 : 40);
        const std::size_t documents = below(random, 10);
        Vector last = randomVector(random, dimension);
        IndexedChunks corpus;
        for (std::size_t i = 0; i < documents; ++i) {
            std::vector<DocumentChunk> chunks;
            const std::size_t count = below(random, seed % 10 == 0 ? 150 : 30);
            for (std::size_t j = 0; j < count; ++j) {
                std::optional<Vector> embedding;
                switch (below(random, 12)) {
                case 0:
                    break;
                case 1:
                    embedding.emplace();
                    break;
                case 2:
                    embedding = randomVector(random, 1 + below(random, 40));
                    break;
                case 3:
                    embedding = Vector(dimension, 0.0);
                    break;
                case 4:
                    embedding = randomVector(random, dimension);
                    (*embedding)[below(random, dimension)] = std::nan("");
                    break;
                case 5:
                    embedding = last; // an exact tie
                    break;
                case 6:
                    embedding = last = nearVector(random, last);
                    break;
                case 7: // one number that is much greater than the others
                    embedding = randomVector(random, dimension);
                    (*embedding)[0] = 1e6;
                    break;
                default:
                    embedding = last = randomVector(random, dimension);
                    break;
                }
                chunks.push_back(makeChunk("text", embedding));
            }
            corpus.push_back(makeDocument(std::move(chunks)));
        }
        for (int i = 0; i < 6; ++i) {
            const Vector query =
                i % 2 == 0 ? nearVector(random, last) : randomVector(random, dimension);
            SCOPED_TRACE(seed);
            expectSameResults(corpus, query, i < 4 ? 10 : 100000);
            if (HasFatalFailure()) {
                return;
            }
        }
    }
}

TEST(VectorIndex, EqualsThePlainScanAfterDocumentsChange) {
    Random random(3);
    IndexedChunks corpus;
    for (int i = 0; i < 10; ++i) {
        Embeddings embeddings;
        for (int j = 0; j < 20; ++j) {
            embeddings.push_back(randomVector(random, 24));
        }
        corpus.push_back(makeCorpus(embeddings)[0]);
    }
    for (int step = 0; step < 30; ++step) {
        auto& chunks = corpus[below(random, corpus.size())].chunks.edit();
        chunks[below(random, chunks.size())].embedding = randomVector(random, 24);
        if (step % 5 == 0) {
            std::ranges::shuffle(corpus, random);
        }
        expectSameResults(corpus, randomVector(random, 24), 7);
    }
}

TEST(VectorIndex, IsASnapshotOfTheChunks) {
    IndexedChunks corpus = makeCorpus(Embeddings{Vector{1, 0}});
    const VectorIndex index(corpus, ScriptedRecognizer());
    corpus[0].chunks.edit()[0].embedding.reset();
    EXPECT_EQ(index.search({1, 0}, 5).size(), 1U);
    EXPECT_TRUE(VectorIndex(corpus, ScriptedRecognizer()).search({1, 0}, 5).empty());
}

TEST(PackedVectors, BoundsHoldWithTheInstructionsOfEveryLevel) {
    Random random(4);
    for (const std::size_t dimension : {1, 2, 31, 32, 33, 384, 1000}) {
        std::vector<DocumentChunk> chunks;
        for (int i = 0; i < 130; ++i) {
            Vector vector = randomVector(random, dimension);
            vector[0] *= i % 4 == 0 ? 1000 : 1;
            chunks.push_back(makeChunk("text", std::move(vector)));
        }
        const PackedVectors packed(chunks);
        ASSERT_EQ(packed.dimension(), dimension);
        ASSERT_EQ(packed.chunks().size(), chunks.size());
        const Vector query = nearVector(random, *chunks[0].embedding);
        for (const CpuLevel level : {CpuLevel::baseline, CpuLevel::avx2, CpuLevel::avx512}) {
            if (level > detectedCpuLevel()) {
                continue;
            }
            std::vector<PackedVectors::Bounds> bounds;
            packed.bound(PackedVectors::Query(query), bounds, level);
            ASSERT_EQ(bounds.size(), chunks.size());
            for (std::size_t i = 0; i < bounds.size(); ++i) {
                const double exact = plainSimilarity(query, *chunks[i].embedding);
                EXPECT_LT(bounds[i].least, exact);
                EXPECT_GT(bounds[i].most, exact);
                EXPECT_LT(bounds[i].most - bounds[i].least, 0.2);
            }
        }
    }
}

} // namespace
} // namespace ombrel

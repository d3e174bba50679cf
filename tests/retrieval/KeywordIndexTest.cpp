#include "retrieval/KeywordIndex.h"

#include "platform/Text.h"
#include "tests/retrieval/RetrievalSamples.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <gtest/gtest.h>
#include <map>
#include <thread>

namespace ombrel {
namespace {

using namespace ombrel::test;
using Terms = std::vector<std::string>;

// The terms of a text by the plain definition.
Terms plainTerms(std::string_view text) {
    const std::string lower = lowercased(text);
    Terms terms;
    std::string term;
    const auto finish = [&] {
        if (!term.empty()) {
            terms.push_back(term);
        }
        term.clear();
    };
    CharacterCursor cursor(lower);
    for (auto character = cursor.next(); !character.empty(); character = cursor.next()) {
        const char32_t first = decodeScalar(character, 0).scalar;
        if (isLetter(first) || isNumber(first)) {
            term += character;
        } else {
            finish();
        }
    }
    finish();
    return terms;
}

// The index by the plain definition: a scan over all chunks.
class PlainIndex {
  public:
    struct Entry {
        const DocumentChunk* chunk = nullptr;
        std::map<std::string, int> termFrequency;
        double length = 0;
    };

    explicit PlainIndex(const IndexedChunks& corpus) {
        std::int64_t total = 0;
        for (const IndexedDocument& document : corpus) {
            for (const DocumentChunk& chunk : document.chunks) {
                Entry entry{&chunk, {}, 0};
                const Terms terms = plainTerms(chunk.searchText());
                for (const std::string& term : terms) {
                    ++entry.termFrequency[canonicalKey(term)];
                }
                for (const auto& [term, count] : entry.termFrequency) {
                    ++documentFrequency[term];
                }
                entry.length = static_cast<double>(terms.size());
                total += static_cast<std::int64_t>(terms.size());
                entries.push_back(std::move(entry));
            }
        }
        if (!entries.empty()) {
            averageLength = static_cast<double>(total) / static_cast<double>(entries.size());
        }
    }

    std::vector<std::pair<const DocumentChunk*, double>> search(std::string_view query,
                                                                std::size_t topK) const {
        const double k1 = 1.5;
        const double b = 0.75;
        Terms queryTerms;
        for (const std::string& term : plainTerms(query)) {
            if (std::ranges::find(queryTerms, canonicalKey(term)) == queryTerms.end()) {
                queryTerms.push_back(canonicalKey(term));
            }
        }
        const auto n = static_cast<double>(entries.size());
        const double avg = std::max(averageLength, 1.0);
        std::vector<std::pair<const DocumentChunk*, double>> kept;
        for (const Entry& entry : entries) {
            double score = 0;
            for (const std::string& term : queryTerms) {
                const auto found = entry.termFrequency.find(term);
                if (found == entry.termFrequency.end()) {
                    continue;
                }
                const double tf = found->second;
                const double df = documentFrequency.at(term);
                const double idf = std::log((n - df + 0.5) / (df + 0.5) + 1);
                const double denominator = tf + k1 * (1 - b + b * entry.length / avg);
                score += idf * (tf * (k1 + 1)) / denominator;
            }
            if (score > 0) {
                kept.emplace_back(entry.chunk, score);
            }
        }
        std::ranges::stable_sort(kept,
                                 [](const auto& x, const auto& y) { return x.second > y.second; });
        kept.resize(std::min(kept.size(), topK));
        return kept;
    }

    std::vector<Entry> entries;
    std::map<std::string, int> documentFrequency;
    double averageLength = 0;
};

void expectSameResults(const IndexedChunks& corpus, const std::vector<std::string>& queries,
                       const std::vector<std::size_t>& topKs) {
    const PlainIndex plain(corpus);
    const KeywordIndex index(corpus);
    ASSERT_EQ(index.size(), plain.entries.size());
    ASSERT_EQ(index.averageLength(), plain.averageLength);
    for (const std::string& query : queries) {
        for (const std::string& term : plainTerms(query)) {
            const auto known = plain.documentFrequency.find(canonicalKey(term));
            ASSERT_EQ(index.documentFrequency(term),
                      known == plain.documentFrequency.end() ? 0 : known->second)
                << term;
        }
        for (const std::size_t topK : topKs) {
            const auto expected = plain.search(query, topK);
            const auto found = index.search(query, static_cast<std::int64_t>(topK));
            ASSERT_EQ(found.size(), expected.size()) << query;
            for (std::size_t i = 0; i < found.size(); ++i) {
                ASSERT_EQ(found[i].chunk, expected[i].first) << query << ", place " << i;
                ASSERT_EQ(found[i].score, expected[i].second) << query << ", place " << i;
            }
        }
    }
}

// Words with the frequencies of natural text: few are very frequent, most are rare.
class Words {
  public:
    explicit Words(Random& random, std::size_t vocabulary) : m_random(random) {
        for (std::size_t i = 0; i < vocabulary; ++i) {
            std::string word;
            const std::size_t length = 1 + below(random, 9);
            for (std::size_t j = 0; j < length; ++j) {
                static const std::vector<std::string> pieces = {
                    "a", "b", "C", "7", "é", "e\u0301", "Σ", "漢", "\u0130", "\u212b", "\u0308"};
                const std::size_t choice = below(random, 40);
                word += choice < pieces.size()
                            ? pieces[choice]
                            : std::string(1, static_cast<char>('a' + choice % 26));
            }
            m_words.push_back(word);
        }
    }
    const std::string& next() {
        const double share = static_cast<double>(m_random() >> 11) * 0x1p-53;
        const double rank = std::pow(static_cast<double>(m_words.size()), share) - 1;
        return m_words[std::min(m_words.size() - 1, static_cast<std::size_t>(rank))];
    }
    std::string text(std::size_t count) {
        static const std::vector<std::string> gaps = {" ", ", ", ".\n", "-", "'", " \u2014 ", "🙂"};
        std::string result;
        for (std::size_t i = 0; i < count; ++i) {
            result += next();
            result += gaps[below(m_random, 4) == 0 ? below(m_random, gaps.size()) : 0];
        }
        return result;
    }

  private:
    Random& m_random;
    std::vector<std::string> m_words;
};

IndexedDocument randomDocument(Random& random, Words& words, std::size_t chunkCount,
                               std::size_t longest) {
    std::vector<DocumentChunk> chunks;
    while (chunks.size() < chunkCount) {
        if (!chunks.empty() && below(random, 6) == 0) {
            chunks.push_back(makeChunk(chunks[below(random, chunks.size())].text));
            continue;
        }
        DocumentChunk chunk = makeChunk(words.text(below(random, longest + 1)));
        if (below(random, 8) == 0) {
            chunk.contextualNote = below(random, 2) == 0 ? "" : words.text(3);
        }
        if (below(random, 8) == 0) {
            chunk.generatedQuestions = {words.text(2), words.text(2)};
        }
        chunks.push_back(std::move(chunk));
    }
    return makeDocument(std::move(chunks));
}

TEST(KeywordIndexTokenize, CutsAtEveryCharacterThatIsNeitherLetterNorNumber) {
    EXPECT_EQ(KeywordIndex::tokenize("won't stop-gap snake_case v1.2 a🙂b"),
              (Terms{"won", "t", "stop", "gap", "snake", "case", "v1", "2", "a", "b"}));
    EXPECT_EQ(KeywordIndex::tokenize(" ,, "), Terms{});
    EXPECT_EQ(KeywordIndex::tokenize(""), Terms{});
    EXPECT_EQ(KeywordIndex::tokenize("one\r\ntwo"), (Terms{"one", "two"}));
}

TEST(KeywordIndexTokenize, LowersCaseWithoutContextAndFoldsNoAccents) {
    EXPECT_EQ(KeywordIndex::tokenize("Straße ΟΔΟΣ Été"), (Terms{"straße", "οδοσ", "été"}));
    EXPECT_EQ(KeywordIndex::tokenize("\u0130"), Terms{"i\u0307"});
    EXPECT_EQ(KeywordIndex::tokenize("\u212a1"), Terms{"k1"});
}

TEST(KeywordIndexTokenize, KeepsMarksWithTheirLetter) {
    EXPECT_EQ(KeywordIndex::tokenize("cafe\u0301s"), Terms{"cafe\u0301s"});
    EXPECT_EQ(KeywordIndex::tokenize("x\u20e3 1\ufe0f\u20e3"), (Terms{"x\u20e3", "1\ufe0f\u20e3"}));
    // A mark on a separator belongs to the separator, even one that is a letter by itself.
    EXPECT_EQ(KeywordIndex::tokenize("a-\u093eb"), (Terms{"a", "b"}));
    EXPECT_EQ(KeywordIndex::tokenize("\u093eb"), Terms{"\u093eb"});
}

TEST(KeywordIndexTokenize, CountsNumbersOfAllKindsAsNumbers) {
    EXPECT_EQ(KeywordIndex::tokenize("½ ⅷ ٣ 万 x²"), (Terms{"½", "ⅷ", "٣", "万", "x²"}));
}

TEST(KeywordIndexTokenize, AcceptsAnyBytes) {
    EXPECT_EQ(KeywordIndex::tokenize("ab\xff"
                                     "cd \xc3"),
              (Terms{"ab", "cd"}));
}

TEST(KeywordIndexTokenize, EqualsWalkingTheCharactersOfRandomTexts) {
    const std::vector<std::string> pieces = {
        "a",      "Z",      "9",      " ",      "-",      "\r",     "\n",     "'",  "é",
        "\u0301", "\u093e", "\u200d", "\u0600", "\u0d4e", "漢",     "🙂",     "🇦",  "\u1100",
        "\u1161", "\u212a", "\u0130", "\xff",   "\xe2",   "\u00ad", "\u0345", "ﬁ",  "\u0e33",
        "word",   "  ",     "\ufe0f", "\u0903", "Σ",      "½",      "\u037e", "\t", "_"};
    Random random(1);
    for (int round = 0; round < 20000; ++round) {
        std::string text;
        const std::size_t count = below(random, 14);
        for (std::size_t i = 0; i < count; ++i) {
            text += pieces[below(random, pieces.size())];
        }
        ASSERT_EQ(KeywordIndex::tokenize(text), plainTerms(text)) << text;
    }
}

TEST(KeywordIndex, OverNoChunksReturnsNothing) {
    for (const IndexedChunks& corpus :
         {IndexedChunks{}, IndexedChunks{IndexedDocument{}}, IndexedChunks{makeDocument({})}}) {
        const KeywordIndex index(corpus);
        EXPECT_TRUE(index.search("anything", 5).empty());
        EXPECT_EQ(index.averageLength(), 0);
        EXPECT_EQ(index.size(), 0U);
    }
}

TEST(KeywordIndex, AQueryWithoutTermsReturnsNothing) {
    const KeywordIndex index(makeCorpus(Terms{"alpha -- beta", "?!", ""}));
    EXPECT_TRUE(index.search("?! -- …", 5).empty());
    EXPECT_TRUE(index.search("", 5).empty());
}

TEST(KeywordIndex, ARepeatedWordInAnyCaseCountsOnce) {
    const KeywordIndex index(makeCorpus(Terms{"a battery", "battery battery", "none"}));
    const auto once = index.search("battery", 5);
    const auto repeated = index.search("Battery BATTERY battery", 5);
    ASSERT_EQ(once.size(), 2U);
    ASSERT_EQ(repeated.size(), 2U);
    for (std::size_t i = 0; i < once.size(); ++i) {
        EXPECT_EQ(once[i].chunk, repeated[i].chunk);
        EXPECT_EQ(once[i].score, repeated[i].score);
    }
}

TEST(KeywordIndex, NeverReturnsAChunkWithoutAnyQueryTerm) {
    const IndexedChunks corpus = makeCorpus(Terms{"red", "green", "blue red", "yellow"});
    const KeywordIndex index(corpus);
    const auto found = index.search("red", 10);
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found[0].chunk, &corpus[0].chunks[0]);
    EXPECT_EQ(found[1].chunk, &corpus[0].chunks[2]);
}

TEST(KeywordIndex, ATermOfEveryChunkStillScores) {
    const KeywordIndex single(makeCorpus(Terms{"only these words"}));
    for (const char* word : {"only", "these", "words"}) {
        const auto found = single.search(word, 5);
        ASSERT_EQ(found.size(), 1U);
        EXPECT_GT(found[0].score, 0);
    }
    const KeywordIndex many(makeCorpus(Terms{"the one", "the two", "the three"}));
    EXPECT_EQ(many.search("the", 5).size(), 3U);
}

TEST(KeywordIndex, IdenticalTextsTieAndKeepTheirOrder) {
    IndexedChunks corpus;
    for (int i = 0; i < 7; ++i) {
        corpus.push_back(makeDocument(
            {makeChunk("other"), makeChunk("same words here"), makeChunk("same words here")}));
    }
    const KeywordIndex index(corpus);
    const auto found = index.search("here same", 9);
    ASSERT_EQ(found.size(), 9U);
    for (std::size_t i = 0; i < found.size(); ++i) {
        EXPECT_EQ(found[i].score, found[0].score);
        EXPECT_EQ(found[i].chunk, &corpus[i / 2].chunks[1 + i % 2]);
        EXPECT_EQ(found[i].document->id, corpus[i / 2].document.id);
    }
}

TEST(KeywordIndex, TopKOfZeroOrLessReturnsNothing) {
    const KeywordIndex index(makeCorpus(Terms{"word"}));
    EXPECT_TRUE(index.search("word", 0).empty());
    EXPECT_TRUE(index.search("word", -3).empty());
    EXPECT_EQ(index.search("word", std::numeric_limits<std::int64_t>::max()).size(), 1U);
}

TEST(KeywordIndex, SeesNotesAndQuestionsButNotTheParent) {
    DocumentChunk chunk = makeChunk("small text");
    chunk.contextualNote = "about gauges";
    chunk.generatedQuestions = {"Which harbour?", "What tide?"};
    chunk.parentText = "enormous parent";
    const IndexedChunks corpus = {makeDocument({makeChunk("nothing"), chunk})};
    const KeywordIndex index(corpus);
    for (const char* word : {"gauges", "harbour", "tide", "small"}) {
        const auto found = index.search(word, 5);
        ASSERT_EQ(found.size(), 1U) << word;
        EXPECT_EQ(found[0].chunk, &corpus[0].chunks[1]);
    }
    EXPECT_TRUE(index.search("parent", 5).empty());
    EXPECT_TRUE(index.search("enormous", 5).empty());
}

TEST(KeywordIndex, CanonicallyEquivalentTermsAreOne) {
    const IndexedChunks corpus = makeCorpus(Terms{"café", "cafe\u0301 cafe\u0301", "cafe"});
    const KeywordIndex index(corpus);
    EXPECT_EQ(index.documentFrequency("café"), 2);
    EXPECT_EQ(index.documentFrequency("cafe\u0301"), 2);
    const auto found = index.search("CAFE\u0301 café", 5);
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found[0].chunk, &corpus[0].chunks[1]);
}

TEST(KeywordIndex, ACorpusOfEmptyChunksFindsNothing) {
    const KeywordIndex index(makeCorpus(Terms{"", "...", ""}));
    EXPECT_EQ(index.size(), 3U);
    EXPECT_EQ(index.averageLength(), 0);
    EXPECT_TRUE(index.search("word", 5).empty());
}

TEST(KeywordIndex, CountsATermThatStandsHundredsOfTimes) {
    std::vector<std::string> texts(40, "filler words only");
    for (const std::size_t times : {254, 255, 256, 300, 1000}) {
        std::string text;
        for (std::size_t i = 0; i < times; ++i) {
            text += i % 3 == 0 ? "echo echo " : "echo ";
        }
        texts.push_back(text + "once");
        texts.push_back("once echo");
    }
    const IndexedChunks corpus = makeCorpus(texts);
    expectSameResults(corpus, {"echo", "echo once", "filler echo"}, {1, 3, 100});
    // The same in an index in which the term is too rare to be kept for every chunk.
    IndexedChunks large = corpus;
    large.push_back(makeCorpus(std::vector<std::string>(500, "filler"))[0]);
    expectSameResults(large, {"echo", "echo once", "filler echo"}, {1, 3, 100});
}

TEST(KeywordIndex, EqualsThePlainScanOnRandomCorpora) {
    for (std::uint64_t seed = 0; seed < 300; ++seed) {
        Random random(seed);
        Words words(random, 1 + below(random, seed % 3 == 0 ? 12 : 800));
        IndexedChunks corpus;
        const std::size_t documents = below(random, 12);
        const std::size_t most = seed % 10 == 0 ? 150 : 12;
        for (std::size_t i = 0; i < documents; ++i) {
            corpus.push_back(randomDocument(random, words, below(random, most), 40));
        }
        std::vector<std::string> queries;
        for (int i = 0; i < 8; ++i) {
            queries.push_back(words.text(1 + below(random, i == 0 ? 60 : 6)));
        }
        SCOPED_TRACE(seed);
        expectSameResults(corpus, queries, {1, 5, 10, 10000});
        if (HasFatalFailure()) {
            return;
        }
    }
}

TEST(KeywordIndex, EqualsThePlainScanWhileTheCorpusChanges) {
    for (std::uint64_t seed = 0; seed < 12; ++seed) {
        Random random(1000 + seed);
        Words words(random, 400);
        IndexedChunks corpus;
        std::vector<IndexedDocument> removed; // as an undo step keeps them
        for (int i = 0; i < 25; ++i) {
            corpus.push_back(randomDocument(random, words, 1 + below(random, 14), 30));
        }
        for (int step = 0; step < 40; ++step) {
            const std::size_t place = corpus.empty() ? 0 : below(random, corpus.size());
            switch (corpus.empty() ? 1 : below(random, 7)) {
            case 0: // a document goes
                removed.push_back(corpus[place]);
                corpus.erase(corpus.begin() + static_cast<std::ptrdiff_t>(place));
                break;
            case 1: // one comes
                corpus.insert(corpus.begin() + static_cast<std::ptrdiff_t>(place),
                              randomDocument(random, words, 1 + below(random, 14), 30));
                break;
            case 2: // one that went comes back
                if (!removed.empty()) {
                    corpus.push_back(removed[below(random, removed.size())]);
                }
                break;
            case 3: // chunks change
                if (!corpus[place].chunks.empty()) {
                    auto& chunks = corpus[place].chunks.edit();
                    chunks[below(random, chunks.size())].text = words.text(10);
                }
                break;
            case 4:
                std::ranges::shuffle(corpus, random);
                break;
            case 5: // the same chunks once more
                corpus.push_back(corpus[place]);
                break;
            default: // half of everything goes
                if (below(random, 4) == 0) {
                    corpus.resize(corpus.size() / 2);
                }
                break;
            }
            SCOPED_TRACE(seed);
            SCOPED_TRACE(step);
            expectSameResults(corpus, {words.text(1), words.text(3), words.text(5)}, {3, 1000});
            if (HasFatalFailure()) {
                return;
            }
        }
    }
}

TEST(KeywordIndex, IndexesThatShareDocumentsDoNotDisturbEachOther) {
    Random random(5);
    Words words(random, 200);
    IndexedChunks first;
    for (int i = 0; i < 10; ++i) {
        first.push_back(randomDocument(random, words, 10, 20));
    }
    IndexedChunks second(first.begin() + 5, first.end());
    for (int i = 0; i < 10; ++i) {
        second.push_back(randomDocument(random, words, 10, 20));
    }
    for (int round = 0; round < 3; ++round) {
        expectSameResults(first, {words.text(4)}, {5});
        expectSameResults(second, {words.text(4)}, {5});
    }
}

TEST(KeywordIndex, IsASnapshotOfTheChunks) {
    IndexedChunks corpus = makeCorpus(Terms{"before", "also before"});
    const KeywordIndex index(corpus);
    corpus[0].chunks.edit()[0].text = "after";
    EXPECT_EQ(index.search("before", 5).size(), 2U);
    EXPECT_EQ(index.search("before", 5)[0].chunk->text, "before");
    EXPECT_EQ(KeywordIndex(corpus).search("before", 5).size(), 1U);
    EXPECT_EQ(KeywordIndex(corpus).search("after", 5).size(), 1U);
}

TEST(KeywordIndex, CanBeBuiltAndSearchedFromManyThreads) {
    Random random(9);
    Words words(random, 300);
    IndexedChunks corpus;
    for (int i = 0; i < 20; ++i) {
        corpus.push_back(randomDocument(random, words, 10, 20));
    }
    const std::string query = words.text(4);
    const auto expected = PlainIndex(corpus).search(query, 10);
    ASSERT_FALSE(expected.empty());
    const KeywordIndex shared(corpus);
    std::atomic<int> wrong = 0;
    std::vector<std::thread> threads;
    for (std::size_t t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            for (std::size_t round = 0; round < 10; ++round) {
                IndexedChunks part(corpus.begin(),
                                   corpus.end() - static_cast<std::ptrdiff_t>((t + round) % 9));
                if (KeywordIndex(part).search(query, 10).empty()) {
                    ++wrong;
                }
                const auto found = shared.search(query, 10);
                if (found.size() != expected.size() || found[0].chunk != expected[0].first) {
                    ++wrong;
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong, 0);
}

} // namespace
} // namespace ombrel

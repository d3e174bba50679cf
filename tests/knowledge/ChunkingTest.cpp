#include "knowledge/Chunking.h"

#include "core/TokenEstimate.h"
#include "platform/Text.h"
#include "tests/knowledge/ReferenceChunking.h"

#include <array>
#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace ombrel {
namespace {

using Strings = std::vector<std::string>;

constexpr std::int64_t smallest = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t largest = std::numeric_limits<std::int64_t>::max();

Strings textsOf(const std::vector<DocumentChunk>& chunks) {
    Strings texts;
    for (const DocumentChunk& chunk : chunks) {
        texts.push_back(chunk.text);
    }
    return texts;
}

std::vector<Strings> breadcrumbsOf(const std::vector<DocumentChunk>& chunks) {
    std::vector<Strings> breadcrumbs;
    for (const DocumentChunk& chunk : chunks) {
        breadcrumbs.push_back(chunk.breadcrumb);
    }
    return breadcrumbs;
}

Strings fixedTexts(std::string_view text, std::int64_t target, std::int64_t overlap) {
    return textsOf(chunkFixed(text, {"doc"}, target, overlap, 0).chunks);
}
Strings paragraphTexts(std::string_view text, std::int64_t target, std::int64_t overlap) {
    return textsOf(chunkParagraphs(text, {"doc"}, target, overlap, 0).chunks);
}
Strings headingTexts(std::string_view text, std::int64_t target, std::int64_t overlap) {
    return textsOf(chunkHeadingAware(text, "doc", target, overlap));
}

// A text whose every piece of some length is told apart from the others: 000 001 002 …
std::string numbered(std::size_t length) {
    std::string text;
    for (int i = 0; text.size() < length; ++i) {
        text += std::to_string(1000 + i);
    }
    text.resize(length);
    return text;
}

// Without the random identifiers, which are looked at first.
std::vector<DocumentChunk> withoutIdentifiers(std::vector<DocumentChunk> chunks) {
    std::set<Uuid> seen;
    for (DocumentChunk& chunk : chunks) {
        EXPECT_NE(chunk.id, Uuid());
        EXPECT_TRUE(seen.insert(chunk.id).second);
        chunk.id = Uuid();
    }
    return chunks;
}

TEST(Chunking, SetsIdentifierIndexBreadcrumbCountAndTextOnly) {
    const auto chunks = chunkFixed("abcdefgh", {"doc", "part"}, 100, 10, 4).chunks;
    ASSERT_EQ(chunks.size(), 1U);
    DocumentChunk expected;
    expected.index = 5;
    expected.breadcrumb = {"doc", "part"};
    expected.tokenCount = 2;
    expected.text = "abcdefgh";
    EXPECT_EQ(withoutIdentifiers(chunks), std::vector{expected});
}

TEST(Chunking, OfBlankTextGivesNothing) {
    for (const std::string_view text : {"", " ", "\n", " \n \r\n\t\n\n  ", "\u2028\u00a0\u3000"}) {
        for (const std::int64_t target : {1, 100}) {
            const Chunked fixed = chunkFixed(text, {"doc"}, target, 30, 7);
            EXPECT_TRUE(fixed.chunks.empty());
            EXPECT_EQ(fixed.lastIndex, 7);
            const Chunked paragraphs = chunkParagraphs(text, {"doc"}, target, 30, 7);
            EXPECT_TRUE(paragraphs.chunks.empty());
            EXPECT_EQ(paragraphs.lastIndex, 7);
            EXPECT_TRUE(chunkHeadingAware(text, "doc", target, 30).empty());
        }
    }
}

TEST(Chunking, NumbersOnFromPageToPage) {
    const std::string page = numbered(100);
    const Chunked first = chunkFixed(page, {"doc"}, 10, 0, 0);
    ASSERT_EQ(first.chunks.size(), 3U);
    EXPECT_EQ(first.chunks.front().index, 1);
    EXPECT_EQ(first.lastIndex, 3);
    const Chunked blank = chunkParagraphs(" \n", {"doc"}, 10, 0, first.lastIndex);
    EXPECT_EQ(blank.lastIndex, 3);
    const Chunked third = chunkParagraphs("one\n\ntwo", {"doc"}, 1, 0, blank.lastIndex);
    ASSERT_EQ(third.chunks.size(), 2U);
    EXPECT_EQ(third.chunks[0].index, 4);
    EXPECT_EQ(third.chunks[1].index, 5);
    EXPECT_EQ(third.lastIndex, 5);
}

TEST(ChunkFixed, MovesTheWindowByWhatIsNotOverlap) {
    const std::string text = numbered(1000);
    EXPECT_EQ(fixedTexts(text, 100, 10),
              (Strings{text.substr(0, 400), text.substr(360, 400), text.substr(720)}));
}

TEST(ChunkFixed, MakesOneChunkOfATextNoLongerThanTheWindow) {
    const std::string text = numbered(400);
    for (const std::int64_t overlap : {0, 30, 99, 100, 1000}) {
        EXPECT_EQ(fixedTexts(text, 100, overlap), Strings{text});
        EXPECT_EQ(fixedTexts("short", 100, overlap), Strings{"short"});
    }
}

TEST(ChunkFixed, StopsWhenASliceReachesTheEnd) {
    const std::string text = numbered(760);
    EXPECT_EQ(fixedTexts(text, 100, 10), (Strings{text.substr(0, 400), text.substr(360)}));
}

TEST(ChunkFixed, TrimsTheTextAndEachSlice) {
    EXPECT_EQ(fixedTexts("\n  abc defg hij \t", 1, 0), (Strings{"abc", "defg", "hij"}));
}

TEST(ChunkFixed, GivesNoIndexToASliceOfWhiteSpace) {
    const auto chunks = chunkFixed("abcd    \n\r\n  efgh", {"doc"}, 1, 0, 0).chunks;
    EXPECT_EQ(textsOf(chunks), (Strings{"abcd", "efgh"}));
    EXPECT_EQ(chunks.back().index, 2);
}

TEST(ChunkFixed, CountsCharactersNotBytes) {
    EXPECT_EQ(fixedTexts("👍🏽e\u0301\r\n한🇩🇪🇫🇷ab", 1, 0),
              (Strings{"👍🏽e\u0301\r\n한", "🇩🇪🇫🇷ab"}));
    EXPECT_EQ(chunkFixed("👍🏽👍🏽👍🏽👍🏽👍🏽👍🏽👍🏽👍🏽", {}, 2, 0, 0).chunks.at(0).tokenCount,
              2);
}

TEST(ChunkFixed, OfATargetUnderOneGoesByCharacter) {
    for (const std::int64_t target : {std::int64_t{0}, std::int64_t{-1}, smallest}) {
        EXPECT_EQ(fixedTexts("ab c", target, 30), (Strings{"a", "b", "c"}));
    }
}

TEST(ChunkFixed, OfAnOverlapOutOfRangeStaysInside) {
    EXPECT_EQ(fixedTexts("abcdefg", 1, -50), (Strings{"abcd", "efg"}));
    EXPECT_EQ(fixedTexts("abcdefg", 1, smallest), (Strings{"abcd", "efg"}));
    for (const std::int64_t overlap : {std::int64_t{100}, std::int64_t{101}, largest}) {
        EXPECT_EQ(fixedTexts("abcdefg", 1, overlap), (Strings{"abcd", "bcde", "cdef", "defg"}));
        EXPECT_EQ(fixedTexts("abcdefg", largest, overlap), Strings{"abcdefg"});
    }
}

TEST(ChunkParagraphs, GathersParagraphsUpToTheTarget) {
    // Each paragraph with its separator is eight characters.
    const std::string text = "aaaaaa\n\nbbbbbb\n\ncccccc\n\ndddddd\n\neeeeee";
    EXPECT_EQ(paragraphTexts(text, 5, 0),
              (Strings{"aaaaaa\n\nbbbbbb\n\ncccccc", "dddddd\n\neeeeee"}));
}

TEST(ChunkParagraphs, KeepsAParagraphOverTheTargetWhole) {
    const std::string paragraph = numbered(4000);
    EXPECT_EQ(paragraphTexts(paragraph, 100, 0), Strings{paragraph});
    EXPECT_EQ(paragraphTexts("short\n\n" + paragraph + "\n\nend", 100, 0),
              (Strings{"short\n\n" + paragraph, "end"}));
}

TEST(ChunkParagraphs, EndsWithTheOverlapOfTheLastChunk) {
    const std::string paragraph = numbered(400);
    const auto chunks = chunkParagraphs(paragraph, {"doc"}, 100, 10, 0).chunks;
    EXPECT_EQ(textsOf(chunks), (Strings{paragraph, paragraph.substr(360)}));
    EXPECT_EQ(chunks[1].index, 2);
    EXPECT_EQ(chunks[1].tokenCount, 10);
    EXPECT_EQ(paragraphTexts(paragraph, 100, 0), Strings{paragraph});
    EXPECT_EQ(paragraphTexts(paragraph, 101, 10), Strings{paragraph});
}

TEST(ChunkParagraphs, MeasuresTheOverlapOnTheWholePredecessor) {
    const auto chunks = chunkParagraphs(numbered(400) + "\n\n" + std::string(400, 'b') + "\n\n" +
                                            std::string(400, 'c'),
                                        {"doc"}, 100, 30, 0)
                            .chunks;
    ASSERT_EQ(chunks.size(), 4U);
    for (std::size_t i = 1; i < chunks.size(); ++i) {
        const std::string& before = chunks[i - 1].text;
        const std::string tail = before.substr(before.size() - before.size() * 30 / 100);
        EXPECT_TRUE(chunks[i].text.starts_with(tail)) << i;
    }
    EXPECT_EQ(chunks[1].text.size(), 120U + 2 + 400);
    EXPECT_EQ(chunks[2].text.size(), 156U + 2 + 400); // 30% of 522
    EXPECT_EQ(chunks[3].text.size(), 167U);           // 30% of 558
}

TEST(ChunkParagraphs, OfTargetOneMakesEachParagraphAChunk) {
    for (const std::int64_t target : {std::int64_t{1}, std::int64_t{0}, smallest}) {
        EXPECT_EQ(paragraphTexts("a\n\nb\n\n\n\nc\n\n", target, 0), (Strings{"a", "b", "c"}));
    }
}

TEST(ChunkParagraphs, PartsOnlyAtTwoLineFeedCharacters) {
    for (const std::string text : {"a\nb", "a\n \nb", "a\r\n\r\nb", "a\r\n\nb", "a\u2029\u2029b"}) {
        EXPECT_EQ(paragraphTexts(text, 1, 0), Strings{text});
    }
    EXPECT_EQ(paragraphTexts("a\r\n\n\nb", 1, 0), (Strings{"a", "b"}));
    EXPECT_EQ(paragraphTexts("a\n\r\nb\n\nc", 1, 0), (Strings{"a\n\r\nb", "c"}));
    EXPECT_EQ(paragraphTexts("a\n\n\nb", 1, 0), (Strings{"a", "b"}));
}

TEST(ChunkParagraphs, TakesTheLastCharactersWholeIntoTheOverlap) {
    EXPECT_EQ(paragraphTexts("ab👩‍👩‍👧‍👦e\u0301", 1, 50),
              (Strings{"ab👩‍👩‍👧‍👦e\u0301", "👩‍👩‍👧‍👦e\u0301"}));
}

TEST(ChunkParagraphs, OfAnOverlapOverAHundredRepeatsEverything) {
    for (const std::int64_t overlap : {std::int64_t{100}, std::int64_t{250}, largest}) {
        EXPECT_EQ(paragraphTexts("a\n\nb", 1, overlap), (Strings{"a", "a\n\nb", "a\n\nb"}));
    }
    EXPECT_EQ(paragraphTexts("a\n\nb", 1, smallest), (Strings{"a", "b"}));
}

TEST(ChunkHeadingAware, FoldsSmallSectionsTogetherUnderTheLastName) {
    const auto chunks =
        chunkHeadingAware("## A\none\ntwo\n## B\nthree\nfour\n", "document", 100, 0);
    EXPECT_EQ(textsOf(chunks), Strings{"one\ntwo\nthree\nfour"});
    EXPECT_EQ(breadcrumbsOf(chunks), (std::vector<Strings>{{"document", "B"}}));
    EXPECT_EQ(chunks[0].index, 1);
}

TEST(ChunkHeadingAware, FollowsTheOutline) {
    const auto chunks =
        chunkHeadingAware("# Top\ntext\n## A\ntext\n### A1\ntext\n## B\ntext\n", "document", 1, 0);
    EXPECT_EQ(breadcrumbsOf(chunks),
              (std::vector<Strings>{{"Top"}, {"Top", "A"}, {"Top", "A", "A1"}, {"Top", "B"}}));
}

TEST(ChunkHeadingAware, KeepsTheDocumentsNameWithoutALevelOneHeading) {
    EXPECT_EQ(breadcrumbsOf(chunkHeadingAware("text\n## A\ntext", "document", 1, 0)),
              (std::vector<Strings>{{"document"}, {"document", "A"}}));
}

TEST(ChunkHeadingAware, ReplacesTheRootAtEachLevelOneHeading) {
    EXPECT_EQ(breadcrumbsOf(chunkHeadingAware("# A\n## B\nx\n# C\ny", "document", 1, 0)),
              (std::vector<Strings>{{"A", "B"}, {"C"}}));
}

TEST(ChunkHeadingAware, AllowsLevelsToBeSkipped) {
    EXPECT_EQ(
        breadcrumbsOf(chunkHeadingAware("#### D\nx\n### C\ny\n##### E\nz\n###### F\nw\n## B\nv",
                                        "doc", 1, 0)),
        (std::vector<Strings>{
            {"doc", "D"}, {"doc", "C"}, {"doc", "C", "E"}, {"doc", "C", "E", "F"}, {"doc", "B"}}));
}

TEST(ChunkHeadingAware, SplitsALongSectionAtLinesUnderOneBreadcrumb) {
    const std::string line = numbered(39);
    const auto chunks = chunkHeadingAware(
        "## A\n" + line + "\n" + line + "\n" + line + "\n" + line + "\nend", "doc", 19, 10);
    const std::string pair = line + "\n" + line; // 79 characters, the overlap is 7 of them
    EXPECT_EQ(textsOf(chunks),
              (Strings{pair, line.substr(32) + "\n" + pair, line.substr(31) + "\nend"}));
    EXPECT_EQ(breadcrumbsOf(chunks), std::vector<Strings>(3, Strings{"doc", "A"}));
}

TEST(ChunkHeadingAware, KeepsALineOverTheTargetWhole) {
    const std::string line = numbered(4000);
    EXPECT_EQ(headingTexts("short\n" + line + "\nend", 100, 0), (Strings{"short\n" + line, "end"}));
}

TEST(ChunkHeadingAware, EndsWithTheOverlapOfTheLastChunk) {
    const std::string line = numbered(400);
    EXPECT_EQ(headingTexts(line, 100, 10), (Strings{line, line.substr(360)}));
    EXPECT_EQ(headingTexts(line, 100, 0), Strings{line});
}

TEST(ChunkHeadingAware, CarriesTheOverlapIntoTheNextSection) {
    const std::string line = numbered(400);
    const auto chunks = chunkHeadingAware("## A\n" + line + "\n## B\nmore", "doc", 100, 10);
    EXPECT_EQ(textsOf(chunks), (Strings{line, line.substr(360) + "\nmore"}));
    EXPECT_EQ(breadcrumbsOf(chunks), (std::vector<Strings>{{"doc", "A"}, {"doc", "B"}}));
}

TEST(ChunkHeadingAware, FlushesAnOverlapThatReachesTheTargetAtAHeading) {
    const auto chunks = chunkHeadingAware("## A\nabcdefgh\n## B\nx", "doc", 2, 100);
    EXPECT_EQ(textsOf(chunks), (Strings{"abcdefgh", "abcdefgh", "abcdefgh\nx", "abcdefgh\nx"}));
    EXPECT_EQ(breadcrumbsOf(chunks),
              (std::vector<Strings>{{"doc", "A"}, {"doc", "A"}, {"doc", "B"}, {"doc", "B"}}));
}

TEST(ChunkHeadingAware, ShowsAHeadingOnTheLastLineOnlyWhereTextRemains) {
    auto chunks = chunkHeadingAware("## A\ntext\n## B", "doc", 100, 0);
    EXPECT_EQ(textsOf(chunks), Strings{"text"});
    EXPECT_EQ(breadcrumbsOf(chunks), (std::vector<Strings>{{"doc", "B"}}));
    chunks = chunkHeadingAware("## A\ntext\n## B", "doc", 1, 0);
    EXPECT_EQ(breadcrumbsOf(chunks), (std::vector<Strings>{{"doc", "A"}}));
}

TEST(ChunkHeadingAware, OfHeadingsOnlyGivesNothing) {
    EXPECT_TRUE(chunkHeadingAware("# A\n\n## B\n### C\n   \n## D", "doc", 1, 30).empty());
}

TEST(ChunkHeadingAware, ReadsHeadingsInsideFencesAndLeavesUnderlinesAlone) {
    const auto chunks =
        chunkHeadingAware("```\n# comment\ncode\n```\nTitle\n=====\n", "doc", 100, 0);
    EXPECT_EQ(textsOf(chunks), Strings{"```\ncode\n```\nTitle\n====="});
    EXPECT_EQ(breadcrumbsOf(chunks), std::vector<Strings>{{"comment"}});
}

TEST(ChunkHeadingAware, KeepsBlankLinesInsideAChunk) {
    EXPECT_EQ(headingTexts("\n\na\n\n\nb\n\n", 100, 0), Strings{"a\n\n\nb"});
    EXPECT_EQ(headingTexts("a\r\n\r\nb", 100, 0), Strings{"a\n\n\n\nb"}); // CR and LF each part
    EXPECT_EQ(headingTexts("a\u2028b\vc\fd\u0085e\u2029f", 100, 0), Strings{"a\nb\nc\nd\ne\nf"});
}

TEST(ChunkHeadingAware, DropsABlankBufferThatReachesTheTarget) {
    const auto chunks = chunkHeadingAware("        \n        \ntext", "doc", 2, 30);
    EXPECT_EQ(textsOf(chunks), Strings{"text"});
    EXPECT_EQ(chunks[0].index, 1);
}

TEST(ChunkHeadingAware, PutsAnEmptyTitleIntoTheBreadcrumb) {
    EXPECT_EQ(breadcrumbsOf(chunkHeadingAware("# \n##  \t \nx", "doc", 1, 0)),
              (std::vector<Strings>{{"", ""}}));
}

TEST(ParseHeading, ReadsLevelAndTitle) {
    EXPECT_EQ(parseHeading("# Title"), (Heading{1, "Title"}));
    EXPECT_EQ(parseHeading("###### Title"), (Heading{6, "Title"}));
    EXPECT_EQ(parseHeading("##  \t Two words \u3000"), (Heading{2, "Two words"}));
    EXPECT_EQ(parseHeading("## Title ##"), (Heading{2, "Title ##"}));
    EXPECT_EQ(parseHeading("# # Title"), (Heading{1, "# Title"}));
    EXPECT_EQ(parseHeading("# "), (Heading{1, ""}));
    EXPECT_EQ(parseHeading("##    "), (Heading{2, ""}));
    EXPECT_EQ(parseHeading("#  \u0301x"), (Heading{1, "\u0301x"}));
}

TEST(ParseHeading, LeavesOtherLinesAlone) {
    for (const std::string_view line :
         {"", "Title", " # Title", "\t# Title", "#", "######", "####### Title", "#Title",
          "#\tTitle", "#\u00a0Title", "#1 item", "#!/bin/sh", "\ufeff# Title"}) {
        EXPECT_EQ(parseHeading(line), std::nullopt) << line;
    }
}

TEST(ParseHeading, ReadsWholeCharacters) {
    EXPECT_EQ(parseHeading("#\ufe0f\u20e3 Title"), std::nullopt); // a keycap
    EXPECT_EQ(parseHeading("# \u0301Title"), std::nullopt);       // an accent on the space
    EXPECT_EQ(parseHeading("# \u200dTitle"), std::nullopt);
    EXPECT_EQ(parseHeading("##\u0301 Title"), std::nullopt);
}

std::string randomText(std::mt19937& random) {
    // What chunkers look at, what joins its neighbours, and ordinary text.
    static const std::array<std::string_view, 58> pieces{
        "\n",
        "\n",
        "\n\n",
        "\n\n",
        "\r\n",
        "\r",
        " ",
        "  ",
        "\t",
        "\v",
        "\f",
        "\u0085",
        "\u2028",
        "\u2029",
        "\u00a0",
        "\u3000",
        "\n# ",
        "\n## ",
        "\n### ",
        "\n#",
        "#",
        "# ",
        "\n###### x\n",
        "word",
        "a",
        "bc",
        "é",
        "e\u0301",
        "\u0301",
        "\u0308",
        "\u200d",
        "\u0600",
        "क",
        "\u094d",
        "ष",
        "ि",
        "한",
        "\u1100",
        "\u1161",
        "\u11a8",
        "🇩",
        "🇪",
        "👩",
        "🏽",
        "❤",
        "\ufe0f",
        "漢字",
        "ไทย",
        "עברית",
        "العربية",
        "Ελλη",
        "кир",
        "\u200b",
        "\ufeff",
        "\ufffd",
        "The quick brown fox jumps over the lazy dog",
        "0123456789abcdef",
        "\U000e0041"};
    std::string text;
    for (std::size_t i = random() % 60; i > 0; --i) {
        text += pieces[random() % pieces.size()];
    }
    return text;
}

TEST(Chunking, AgreesWithThePlainReferenceOnRandomTexts) {
    std::mt19937 random(7);
    static constexpr std::array<std::int64_t, 12> overlaps{-5, 0,  0,  1,  10,  15,
                                                           30, 30, 50, 99, 100, 130};
    std::size_t made = 0;
    for (int round = 0; round < 6000; ++round) {
        const std::string text = randomText(random);
        const auto wide = icu::UnicodeString::fromUTF8(text);
        const auto target = static_cast<std::int64_t>(random() % 24) - 2;
        const std::int64_t overlap = overlaps[random() % overlaps.size()];
        const auto describe = [&] {
            return "target " + std::to_string(target) + ", overlap " + std::to_string(overlap) +
                   ", text " + testing::PrintToString(text);
        };
        const auto compare = [&](const Chunked& ours, const Chunked& expected) {
            EXPECT_EQ(ours.lastIndex, expected.lastIndex);
            EXPECT_EQ(withoutIdentifiers(ours.chunks), expected.chunks);
            made += ours.chunks.size();
        };
        using test::ReferenceChunking;
        compare(chunkFixed(text, {"doc"}, target, overlap, 3),
                ReferenceChunking(target, overlap, 3).fixed(wide, {"doc"}));
        compare(chunkParagraphs(text, {"doc"}, target, overlap, 3),
                ReferenceChunking(target, overlap, 3).paragraphs(wide, {"doc"}));
        auto headed = chunkHeadingAware(text, "doc", target, overlap);
        const auto last = static_cast<std::int64_t>(headed.size());
        compare({std::move(headed), last},
                ReferenceChunking(target, overlap, 0).headingAware(wide, "doc"));
        ASSERT_FALSE(HasFailure()) << describe();
    }
    EXPECT_GT(made, 30000U);
}

TEST(Chunking, TakesAnyBytes) {
    std::mt19937 random(8);
    static constexpr std::string_view bytes("\0\n\r# a\xff\x80\xc2\xa0\xe2\x80\xa8\xf0\x9f\xcc",
                                            17);
    for (int round = 0; round < 2000; ++round) {
        std::string text;
        for (std::size_t i = random() % 80; i > 0; --i) {
            text += bytes[random() % bytes.size()];
        }
        const auto target = static_cast<std::int64_t>(random() % 8);
        for (const auto& chunks : {chunkFixed(text, {}, target, 30, 0).chunks,
                                   chunkParagraphs(text, {}, target, 30, 0).chunks,
                                   chunkHeadingAware(text, "", target, 30)}) {
            for (const DocumentChunk& chunk : chunks) {
                ASSERT_FALSE(chunk.text.empty());
                ASSERT_EQ(chunk.text, trimWhitespacesAndNewlines(chunk.text));
                ASSERT_EQ(chunk.tokenCount, estimateTokens(chunk.text));
            }
        }
    }
}

TEST(Chunking, KeepsInvalidBytesAndNulsAsTheyAre) {
    const std::string text("a\0\xff\xe2\x82 b", 7);
    EXPECT_EQ(fixedTexts(text, 10, 0), Strings{text});
    EXPECT_EQ(paragraphTexts(text, 10, 0), Strings{text});
    EXPECT_EQ(headingTexts(text, 10, 0), Strings{text});
}

TEST(Chunking, OfAnyTargetAndOverlapEnds) {
    const std::string text = "# A\n" + numbered(50) + "\n\n" + numbered(40) + "\n## B\nend";
    for (const std::int64_t target : {smallest, std::int64_t{-1}, std::int64_t{0}, std::int64_t{1},
                                      std::int64_t{10}, largest / 4, largest / 4 + 1, largest}) {
        for (const std::int64_t overlap : {smallest, std::int64_t{-1}, std::int64_t{0},
                                           std::int64_t{99}, std::int64_t{101}, largest}) {
            EXPECT_FALSE(fixedTexts(text, target, overlap).empty());
            EXPECT_FALSE(paragraphTexts(text, target, overlap).empty());
            EXPECT_FALSE(headingTexts(text, target, overlap).empty());
        }
    }
}

TEST(Chunking, OfOneVeryLongLineTakesOnePass) {
    // Quadratic work would not end.
    const std::string line(100'000'000, 'x');
    EXPECT_EQ(chunkFixed(line, {}, 250, 10, 0).lastIndex, 111'111);
    EXPECT_EQ(paragraphTexts(line, 250, 0).size(), 1U);
    EXPECT_EQ(headingTexts(line, 250, 0).size(), 1U);
}

TEST(Chunking, OfVeryManyLinesUnderALargeTargetTakesOnePass) {
    std::string lines;
    for (int i = 0; i < 500'000; ++i) {
        lines += "lorem é\n\n";
    }
    EXPECT_EQ(headingTexts(lines, largest, 30).size(), 1U);
    EXPECT_EQ(paragraphTexts(lines, largest, 30).size(), 1U);
}

} // namespace
} // namespace ombrel

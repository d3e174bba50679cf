#include "flows/StreamingLineCollector.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace ombrel {
namespace {

struct Collected {
    std::vector<std::string> lines;
    StreamingLineCollector collector{
        [this](std::string line) { lines.push_back(std::move(line)); }};
};

using Lines = std::vector<std::string>;

TEST(StreamingLineCollector, CutsLinesWhereverThePiecesEnd) {
    Collected collected;
    for (const char* piece : {"on", "e\ntwo", "\n", "\nthr", "ee\n"}) {
        collected.collector.append(piece);
    }
    EXPECT_EQ(collected.lines, (Lines{"one", "two", "", "three"}));
}

TEST(StreamingLineCollector, GivesALineAsSoonAsItHasEnded) {
    Collected collected;
    collected.collector.append("one\ntw");
    EXPECT_EQ(collected.lines, Lines{"one"});
}

TEST(StreamingLineCollector, GivesTheLastLineWithoutALineFeed) {
    Collected collected;
    collected.collector.append("one\ntwo");
    collected.collector.finish();
    EXPECT_EQ(collected.lines, (Lines{"one", "two"}));
    collected.collector.finish();
    EXPECT_EQ(collected.lines.size(), 2U);
}

TEST(StreamingLineCollector, GivesNoEmptyLineAtTheEnd) {
    Collected collected;
    collected.collector.append("one\n");
    collected.collector.finish();
    EXPECT_EQ(collected.lines, Lines{"one"});
}

TEST(StreamingLineCollector, KeepsCarriageReturns) {
    Collected collected;
    collected.collector.append("one\r\ntwo\rthree\n");
    EXPECT_EQ(collected.lines, (Lines{"one\r", "two\rthree"}));
}

TEST(StreamingLineCollector, RepairsInvalidBytesOfLinesAndText) {
    Collected collected;
    collected.collector.append("a\xff");
    collected.collector.append("b\n\xe2\x96");
    collected.collector.append("\xb8 c\n\xe2\x96");
    collected.collector.finish();
    EXPECT_EQ(collected.lines, (Lines{"a\uFFFDb", "▸ c", "\uFFFD"}));
    EXPECT_EQ(collected.collector.takeText(), "a\uFFFDb\n▸ c\n\uFFFD");
}

TEST(StreamingLineCollector, KeepsAllTextWithoutAListener) {
    StreamingLineCollector collector;
    collector.append("one\nt");
    collector.append("wo");
    collector.finish();
    EXPECT_EQ(collector.takeText(), "one\ntwo");
    EXPECT_EQ(collector.takeText(), "");
}

TEST(StreamingLineCollector, ReadsALineOfManyPieces) {
    Collected collected;
    const std::string piece(1024, 'x');
    for (int i = 0; i < 1024; ++i) {
        collected.collector.append(piece);
    }
    EXPECT_TRUE(collected.lines.empty());
    collected.collector.append("\n");
    ASSERT_EQ(collected.lines.size(), 1U);
    EXPECT_EQ(collected.lines[0].size(), std::size_t{1} << 20);
}

} // namespace
} // namespace ombrel

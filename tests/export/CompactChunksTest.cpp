#include "export/CompactChunks.h"

#include "export/PackageSources.h"
#include "platform/Text.h"
#include "tests/export/ExportSamples.h"
#include "tests/export/SwiftReader.h"

#include <gtest/gtest.h>
#include <limits>

namespace ombrel {
namespace {

using test::chunkOf;
using test::documentOf;

void expectRoundTrip(const IndexedChunks& pairs) {
    const auto read = test::readCompact(compactChunksSource(pairs));
    ASSERT_EQ(read.size(), chunkCount(pairs));
    std::size_t i = 0;
    for (const IndexedDocument& entry : pairs) {
        for (const DocumentChunk& chunk : entry.chunks) {
            EXPECT_TRUE(test::holds(read[i++], chunk)) << chunk.text;
        }
    }
}

TEST(CompactChunks, DeclareTheSameRecord) {
    const std::string compact = compactChunksSource({});
    const std::string literal = chunksSource({});
    const std::string declaration = literal.substr(0, literal.find("\nlet ragChunks"));
    EXPECT_NE(compact.find(declaration), std::string::npos);
    EXPECT_NE(compact.find("\nlet ragChunks: [RAGChunk] = "), std::string::npos);
}

TEST(CompactChunks, RoundTripWithoutChunks) {
    expectRoundTrip({});
    expectRoundTrip({documentOf("empty", {})});
}

TEST(CompactChunks, HoldEveryCharacter) {
    std::string all;
    for (char32_t scalar = 0; scalar < 0x110000; ++scalar) {
        if (scalar < 0xd800 || scalar >= 0xe000) {
            appendScalar(all, scalar);
        }
    }
    DocumentChunk chunk = chunkOf(all);
    chunk.breadcrumb = {std::string("\0\x0c\x1b\x7f", 4), "\"\"\"", "\\(x)", ""};
    chunk.contextualNote = "\\u{41} #\"";
    chunk.generatedQuestions = {"", std::string(3, '\0')};
    chunk.parentText = all + "\f";
    expectRoundTrip({documentOf("a", {chunk, chunkOf("")})});
}

TEST(CompactChunks, HoldEveryNumberExactly) {
    const double infinity = std::numeric_limits<double>::infinity();
    DocumentChunk extreme =
        chunkOf("a", std::vector<double>{0.1, 5e-324, 1.7976931348623157e308, -0.0, infinity,
                                         -infinity, std::nan("")});
    extreme.tokenCount = std::numeric_limits<std::int64_t>::min();
    const DocumentChunk single = chunkOf("b", std::vector<double>{0.1F, -3.5, 1e-45F, -0.0});
    expectRoundTrip({documentOf("a", {extreme, single}),
                     documentOf("b", {chunkOf("c", std::vector<double>{}), chunkOf("d")})});
}

TEST(CompactChunks, TakeHalfTheSpaceForNumbersOfSinglePrecision) {
    const auto size = [](double number) {
        return compactChunksSource(
                   {documentOf("a", {chunkOf("a", std::vector<double>(3000, number))})})
            .size();
    };
    EXPECT_NEAR(static_cast<double>(size(0.1) - size(0.1F)), 3000 * 4 * 4.0 / 3, 400);
}

TEST(CompactChunks, HoldAStringThatIsSharedOnce) {
    std::vector<DocumentChunk> chunks;
    for (int i = 0; i < 50; ++i) {
        chunks.push_back(chunkOf("part " + std::to_string(i)));
        chunks.back().parentText = std::string(30000, 'x');
    }
    const IndexedChunks pairs = {documentOf("a", chunks)};
    EXPECT_LT(compactChunksSource(pairs).size(), 80000U);
    expectRoundTrip(pairs);
}

TEST(CompactChunks, KeepLinesShort) {
    const std::string source =
        compactChunksSource({documentOf("a", {chunkOf(std::string(9999, 'x'))})});
    for (const std::string_view line : splitNewlines(source)) {
        EXPECT_LE(line.size(), 130U);
    }
}

} // namespace
} // namespace ombrel

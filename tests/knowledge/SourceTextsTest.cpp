#include "knowledge/SourceTexts.h"

#include <gtest/gtest.h>

namespace ombrel {
namespace {

SourceDocument documentOf(SourceType type, std::int64_t chunks, std::int64_t tokens) {
    SourceDocument source;
    source.type = type;
    source.chunkCount = chunks;
    source.tokenCount = tokens;
    return source;
}

TEST(SourceTexts, ThePagesOfAPdfStandBesideItsType) {
    SourceDocument pdf = documentOf(SourceType::pdf, 1, 1);
    pdf.pageCount = 12;
    EXPECT_EQ(sourceTypeText(pdf), "PDF \u00b7 12 pp");
    pdf.pageCount = 0;
    EXPECT_EQ(sourceTypeText(pdf), "PDF \u00b7 0 pp");
    pdf.pageCount.reset();
    EXPECT_EQ(sourceTypeText(pdf), "PDF");
    EXPECT_EQ(sourceTypeText(documentOf(SourceType::markdown, 1, 1)), "Markdown");
    EXPECT_EQ(sourceTypeText(documentOf(SourceType::text, 1, 1)), "Text");
}

TEST(SourceTexts, TheMeanOfTheChunksHasNoFraction) {
    EXPECT_EQ(averageChunkText(documentOf(SourceType::text, 3, 11)), "avg 3 tokens / chunk");
    EXPECT_EQ(averageChunkText(documentOf(SourceType::text, 0, 0)), "avg 0 tokens / chunk");
}

TEST(SourceTexts, AStatusThatIsNotReadySaysWhatToDo) {
    const BuildSettings settings;
    SourceDocument source = documentOf(SourceType::markdown, 2, 100);
    EXPECT_EQ(statusAdvice(source, settings), "");
    source.status = {SourceStatus::Oversized{1}};
    EXPECT_EQ(statusAdvice(source, settings),
              "1 chunk is more than twice the target of 400 tokens: a paragraph or line that is "
              "never cut. Fixed chunking, or blank lines in the document, would cut it.");
    source.status = {SourceStatus::Oversized{2}};
    EXPECT_TRUE(statusAdvice(source, settings).starts_with("2 chunks are more than"));
    source.status = {SourceStatus::EmptyPage{1}};
    EXPECT_EQ(statusAdvice(source, settings),
              "There is no text in it, so nothing can be found in it.");
    source.type = SourceType::pdf;
    EXPECT_TRUE(statusAdvice(source, settings).starts_with("Pages without text"));
    source.chunkCount = 0;
    EXPECT_TRUE(statusAdvice(source, settings).starts_with("No page has text"));
}

} // namespace
} // namespace ombrel

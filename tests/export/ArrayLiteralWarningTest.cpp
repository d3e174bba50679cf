#include "export/ArrayLiteralWarning.h"

#include "platform/Text.h"
#include "tests/export/ExportSamples.h"

#include <gtest/gtest.h>

namespace ombrel {
namespace {

using test::chunkOf;
using test::documentOf;

IndexedChunks corpusOf(std::size_t chunks, std::size_t numbers) {
    std::vector<DocumentChunk> list(chunks, chunkOf("text"));
    for (DocumentChunk& chunk : list) {
        chunk.embedding = std::vector<double>(numbers, 0.5);
    }
    return {documentOf("a.md", std::move(list))};
}

TEST(ArrayLiteralWarning, IsSilentWhenTheCompilerTakesTheChunks) {
    EXPECT_EQ(arrayLiteralWarning({}), std::nullopt);
    EXPECT_EQ(arrayLiteralWarning({documentOf(
                  "a.md", {chunkOf(std::string("\0 \t\r\n \"\\ \u0085\u2028\ufeff", 20))})}),
              std::nullopt);
    EXPECT_EQ(arrayLiteralWarning(corpusOf(80, 384)), std::nullopt);
    EXPECT_EQ(arrayLiteralWarning(corpusOf(1200, 0)), std::nullopt);
}

TEST(ArrayLiteralWarning, NamesTheFirstDocumentWithARefusedCharacter) {
    const auto warning = arrayLiteralWarning({documentOf("good.md", {chunkOf("fine")}),
                                              documentOf("paged.txt", {chunkOf("page\fpage")}),
                                              documentOf("later.txt", {chunkOf("\x1b")})});
    ASSERT_TRUE(warning);
    EXPECT_NE(warning->find("\u201cpaged.txt\u201d"), std::string::npos) << *warning;
    EXPECT_NE(warning->find("U+000C"), std::string::npos) << *warning;
    EXPECT_NE(warning->find("compact"), std::string::npos) << *warning;
    EXPECT_EQ(splitNewlines(*warning).size(), 1U);
}

TEST(ArrayLiteralWarning, LooksAtEveryTextOfAChunk) {
    DocumentChunk breadcrumb = chunkOf("a");
    breadcrumb.breadcrumb = {"fine", "\x7f"};
    DocumentChunk note = chunkOf("a");
    note.contextualNote = "\x01";
    DocumentChunk questions = chunkOf("a");
    questions.generatedQuestions = {"\x02"};
    DocumentChunk parent = chunkOf("a");
    parent.parentText = "a \x0b";
    for (const DocumentChunk& chunk : {breadcrumb, note, questions, parent}) {
        EXPECT_TRUE(arrayLiteralWarning({documentOf("a.md", {chunkOf("a"), chunk})}));
    }
}

TEST(ArrayLiteralWarning, TellsThatCompilingTakesLong) {
    for (const IndexedChunks& corpus : {corpusOf(120, 384), corpusOf(1500, 0)}) {
        const auto warning = arrayLiteralWarning(corpus);
        ASSERT_TRUE(warning);
        EXPECT_NE(warning->find("minutes"), std::string::npos) << *warning;
        EXPECT_NE(warning->find("compact"), std::string::npos) << *warning;
        EXPECT_EQ(splitNewlines(*warning).size(), 1U);
    }
}

TEST(ArrayLiteralWarning, TellsNoNumberOfMinutesForThousandsOfVectors) {
    const auto warning = arrayLiteralWarning(corpusOf(5000, 384));
    ASSERT_TRUE(warning);
    EXPECT_NE(warning->find("an hour or far more"), std::string::npos) << *warning;
}

TEST(EstimatedCompileSeconds, AreNearWhatWasMeasured) {
    const auto isNear = [](double estimate, double measured) {
        return estimate > measured / 2 && estimate < measured * 2;
    };
    EXPECT_PRED2(isNear, estimatedCompileSeconds(corpusOf(50, 384)), 17.3);
    EXPECT_PRED2(isNear, estimatedCompileSeconds(corpusOf(250, 0)), 2.9);
    EXPECT_PRED2(isNear, estimatedCompileSeconds(corpusOf(500, 0)), 8.0);
}

} // namespace
} // namespace ombrel

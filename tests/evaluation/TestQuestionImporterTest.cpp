#include "evaluation/TestQuestionImporter.h"

#include "tests/evaluation/EvaluationWorkspace.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace ombrel {
namespace {

using test::EvaluationWorkspace;
using test::Texts;

constexpr const char* noRows = "The file didn't contain any question,breadcrumb rows.";

Texts columns(std::string_view line) {
    return TestQuestionImporter::parseCSVLine(line);
}

TestQuestionImporter::Parsed parsed(std::string_view text) {
    return TestQuestionImporter::parseText(text).value();
}

Texts questionsOf(const TestQuestionImporter::Parsed& result) {
    Texts texts;
    for (const TestQuestion& question : result.questions) {
        texts.push_back(question.question);
    }
    return texts;
}

TEST(ParseCSVLine, SplitsAtCommas) {
    EXPECT_EQ(columns("a,b,c"), (Texts{"a", "b", "c"}));
    EXPECT_EQ(columns(""), (Texts{""}));
    EXPECT_EQ(columns(","), (Texts{"", ""}));
    EXPECT_EQ(columns("a;b"), (Texts{"a;b"}));
}

TEST(ParseCSVLine, KeepsACommaInQuotes) {
    EXPECT_EQ(columns("\"Hello, world\",A > B"), (Texts{"Hello, world", "A > B"}));
}

TEST(ParseCSVLine, ReadsTwoQuotesInQuotesAsOne) {
    EXPECT_EQ(columns("\"say \"\"hi\"\"\",A"), (Texts{"say \"hi\"", "A"}));
    EXPECT_EQ(columns("\"\"\"\""), (Texts{"\""}));
    EXPECT_EQ(columns("\"\"\"\"\"\""), (Texts{"\"\""}));
}

TEST(ParseCSVLine, EntersQuotesAnywhereInAField) {
    EXPECT_EQ(columns("a\"b,c"), (Texts{"ab,c"}));
    EXPECT_EQ(columns("a\"b,c\"d,e"), (Texts{"ab,cd", "e"}));
}

TEST(ParseCSVLine, DropsAPairOfQuotesOutsideQuotes) {
    EXPECT_EQ(columns("\"\",a\"\"b"), (Texts{"", "ab"}));
}

TEST(ParseCSVLine, KeepsTheFieldWhenTheQuotesStayOpen) {
    EXPECT_EQ(columns("a,\"b,c"), (Texts{"a", "b,c"}));
    EXPECT_EQ(columns("\""), (Texts{""}));
    EXPECT_EQ(columns("\"\"\""), (Texts{"\""}));
}

TEST(ParseCSVLine, TakesWholeCharactersOnly) {
    // With a combining mark, a comma and a quote are other characters.
    EXPECT_EQ(columns("a,\u0301b,\"\u0301c"), (Texts{"a,\u0301b", "\"\u0301c"}));
}

TEST(ParseTestQuestions, ReadsQuestionsWithTheirBreadcrumbs) {
    const auto result = parsed("\"Hello, world\",A > B\n\"say \"\"hi\"\"\",A\n");
    ASSERT_EQ(questionsOf(result), (Texts{"Hello, world", "say \"hi\""}));
    EXPECT_EQ(result.questions[0].expectedBreadcrumb, (Texts{"A", "B"}));
    EXPECT_EQ(result.questions[1].expectedBreadcrumb, Texts{"A"});
    EXPECT_EQ(result.skipped, 0);
    EXPECT_FALSE(result.questions[0].isDrafted);
    EXPECT_EQ(result.questions[0].status, QuestionStatus::notEvaluated);
    EXPECT_NE(result.questions[0].id, result.questions[1].id);
}

TEST(ParseTestQuestions, TrimsFieldsAndPartsAndIgnoresFurtherColumns) {
    const auto result = parsed("\t q \u00a0, A >>  B\u00a0> ,more,and more\n");
    ASSERT_EQ(questionsOf(result), Texts{"q"});
    EXPECT_EQ(result.questions[0].expectedBreadcrumb, (Texts{"A", "B"}));
}

TEST(ParseTestQuestions, SkipsALineThatAnOpenQuoteMakesOneColumn) {
    const auto result = parsed("a\"b,c\nq,A");
    EXPECT_EQ(questionsOf(result), Texts{"q"});
    EXPECT_EQ(result.skipped, 1);
}

TEST(ParseTestQuestions, DoesNotLetAnOpenQuoteReachTheNextLine) {
    const auto result = parsed("q,\"A\nr,B");
    EXPECT_EQ(questionsOf(result), (Texts{"q", "r"}));
}

TEST(ParseTestQuestions, DropsTheHeaderUncounted) {
    const auto result = parsed("\n  \nQUESTION,Expected breadcrumb\nq,A\n");
    EXPECT_EQ(questionsOf(result), Texts{"q"});
    EXPECT_EQ(result.skipped, 0);
}

TEST(ParseTestQuestions, DropsAFirstRowThatSpeaksOfAQuestion) {
    EXPECT_EQ(questionsOf(parsed("Is this a question?,A\nIs this a question?,B")),
              Texts{"Is this a question?"});
}

TEST(ParseTestQuestions, CountsAFirstLineOfOneColumnAsSkipped) {
    EXPECT_EQ(parsed("question\nq,A").skipped, 1);
}

TEST(ParseTestQuestions, FailsOnAFileOfNothingButAHeader) {
    EXPECT_EQ(TestQuestionImporter::parseText("question,breadcrumb\n").error().message, noRows);
    EXPECT_EQ(TestQuestionImporter::parseText("").error().message, noRows);
    EXPECT_EQ(TestQuestionImporter::parseText(" \t\n\r\n").error().message, noRows);
}

TEST(ParseTestQuestions, CountsRowsWithoutAQuestionOrABreadcrumb) {
    const auto result = parsed("no comma\nq, > > \n,A\nq,\n");
    EXPECT_TRUE(result.questions.empty());
    EXPECT_EQ(result.skipped, 4);
}

TEST(ParseTestQuestions, SplitsAtEveryKindOfNewline) {
    EXPECT_EQ(questionsOf(parsed("a,A\rb,A\r\nc,A\u2028d,A\u0085e,A\x0b"
                                 "f,A")),
              (Texts{"a", "b", "c", "d", "e", "f"}));
}

TEST(ParseTestQuestions, DropsAByteOrderMark) {
    EXPECT_EQ(questionsOf(parsed("\ufeffquestion,breadcrumb\nq,A")), Texts{"q"});
    EXPECT_EQ(questionsOf(parsed("\ufeffq,A")), Texts{"q"});
}

TEST(ParseTestQuestions, KeepsNULs) {
    using namespace std::string_literals;
    const auto result = parsed("q\0r,A\0B"s);
    EXPECT_EQ(questionsOf(result), Texts{"q\0r"s});
    EXPECT_EQ(result.questions[0].expectedBreadcrumb, Texts{"A\0B"s});
}

TEST(ParseTestQuestions, ReadsAMegabyteInOneLine) {
    const std::string text(1 << 20, 'x');
    const auto result = parsed(text + "," + text + "\n" + std::string(1 << 20, '"') + ",A");
    ASSERT_EQ(result.questions.size(), 2U);
    EXPECT_EQ(result.questions[0].question, text);
    EXPECT_EQ(result.questions[1].question, std::string((1 << 19) - 1, '"'));
}

TEST(ImportTestCases, AppendsTheQuestionsAsOneChange) {
    const EvaluationWorkspace workspace;
    const test::TemporaryFolder folder;
    workspace.ask("first", {"A"});
    std::optional<ImportCounts> counts;
    const auto file = folder.write("cases.csv", "question,breadcrumb\nq,A > B\nbad\nr,C\n");
    EXPECT_TRUE(workspace.schedules([&] { counts = importTestCases(*workspace.state, file); }));
    EXPECT_EQ(counts, (ImportCounts{2, 1}));
    EXPECT_EQ(workspace.questionTexts(), (Texts{"first", "q", "r"}));
    EXPECT_EQ(workspace->currentIndex().importError, std::nullopt);
}

TEST(ImportTestCases, ReturnsTheCountOfAFileOfSkippedLines) {
    const EvaluationWorkspace workspace;
    const test::TemporaryFolder folder;
    EXPECT_EQ(importTestCases(*workspace.state, folder.write("cases.csv", "bad\n")),
              (ImportCounts{0, 1}));
}

TEST(ImportTestCases, SaysWhyAFileWasNotRead) {
    const EvaluationWorkspace workspace;
    const test::TemporaryFolder folder;
    const auto errorOf = [&](const std::filesystem::path& file) {
        workspace->editCurrentIndex()->importError.reset();
        EXPECT_EQ(importTestCases(*workspace.state, file), std::nullopt);
        return workspace->currentIndex().importError.value_or("");
    };
    EXPECT_EQ(errorOf(folder.write("empty.csv", "")),
              std::string("Couldn't import test cases from empty.csv: ") + noRows);
    EXPECT_EQ(errorOf(folder.write("bytes.csv", "q,\xff\xfe\n")),
              "Couldn't import test cases from bytes.csv: The file couldn't be opened because it "
              "isn't valid UTF-8 text.");
    EXPECT_EQ(errorOf(folder / "none.csv"),
              "Couldn't import test cases from none.csv: The file couldn't be opened because it "
              "doesn't exist.");
    EXPECT_EQ(errorOf(folder.path() / "."),
              "Couldn't import test cases from .: The file couldn't be opened because it isn't a "
              "regular file.");
    EXPECT_TRUE(workspace.questions().empty());
}

} // namespace
} // namespace ombrel

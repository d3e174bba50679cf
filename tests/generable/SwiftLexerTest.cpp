#include "generable/SwiftLexer.h"

#include "tests/generable/ReferenceLexer.h"

#include <gtest/gtest.h>
#include <ostream>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace ombrel {
namespace {

using Kind = SwiftLexer::Kind;

struct Read {
    Kind kind;
    std::string text;
    std::int64_t line = 1;
    bool operator==(const Read&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Read& token) {
    return out << static_cast<int>(token.kind) << " “" << token.text << "” at " << token.line;
}

std::vector<Read> read(std::string_view source) {
    std::vector<Read> tokens;
    for (const SwiftLexer::Token& token : SwiftLexer::tokenize(source).list) {
        tokens.push_back({token.kind, std::string(token.text), token.line});
    }
    return tokens;
}

Read word(std::string text, std::int64_t line = 1) {
    return {Kind::identifier, std::move(text), line};
}
Read symbol(std::string text, std::int64_t line = 1) {
    return {Kind::punctuation, std::move(text), line};
}
Read doc(std::string text, std::int64_t line = 1) {
    return {Kind::docComment, std::move(text), line};
}
Read number(std::string text, std::int64_t line = 1) {
    return {Kind::number, std::move(text), line};
}
Read string(std::string text, std::int64_t line = 1) {
    return {Kind::string, std::move(text), line};
}

using Tokens = std::vector<Read>;

TEST(SwiftLexer, GivesNothingForEmptySource) {
    EXPECT_EQ(read(""), Tokens{});
    EXPECT_EQ(read(" \t\n\u00a0\u2028"), Tokens{});
}

TEST(SwiftLexer, KeepsADocCommentInFrontOfADeclaration) {
    EXPECT_EQ(read("/// Title\nvar title: String"),
              (Tokens{doc("Title"), word("var", 2), word("title", 2), symbol(":", 2),
                      word("String", 2)}));
}

TEST(SwiftLexer, KeepsAnEmptyDocComment) {
    EXPECT_EQ(read("///\n///"), (Tokens{doc(""), doc("", 2)}));
    EXPECT_EQ(read("/***/"), Tokens{doc("")});
    EXPECT_EQ(read("/**"), Tokens{doc("")});
}

TEST(SwiftLexer, DropsCommentsThatDocumentNothing) {
    EXPECT_EQ(read("//// heading"), Tokens{});
    EXPECT_EQ(read("// heading"), Tokens{});
    EXPECT_EQ(read("/**/"), Tokens{});
    EXPECT_EQ(read("/* x */ y"), Tokens{word("y")});
    EXPECT_EQ(read("/*"), Tokens{});
    EXPECT_EQ(read("//"), Tokens{});
}

TEST(SwiftLexer, TakesTheBlanksAndTabsOffADocComment) {
    EXPECT_EQ(read("/// \t a  b\t \n"), Tokens{doc("a  b")});
    EXPECT_EQ(read("///\u00a0a"), Tokens{doc("\u00a0a")});
}

TEST(SwiftLexer, KeepsABlockDocComment) {
    EXPECT_EQ(read("/** x */"), Tokens{doc("x")});
}

TEST(SwiftLexer, JoinsTheLinesOfABlockDocComment) {
    EXPECT_EQ(read("/**\n * One\n * two\n * three\n */ x"),
              (Tokens{doc("One two three"), word("x", 5)}));
    EXPECT_EQ(read("/** a\r\n\r\n  ** b *\n*/"), Tokens{doc("a b *")});
}

TEST(SwiftLexer, NestsBlockComments) {
    EXPECT_EQ(read("/* /* inner */ still comment */ var"), Tokens{word("var")});
    EXPECT_EQ(read("/** a /* b\n */ c */ d"), (Tokens{doc("a  b c"), word("d", 2)}));
}

TEST(SwiftLexer, ReadsAnUnterminatedBlockCommentToTheEnd) {
    EXPECT_EQ(read("a /* b\n c"), Tokens{word("a")});
    EXPECT_EQ(read("a /** b\n c"), (Tokens{word("a"), doc("b c")}));
}

TEST(SwiftLexer, CountsTheParenthesesOfAnInterpolation) {
    EXPECT_EQ(read("\"a\\(b(\"c\"))d\""), Tokens{string("a\\(b(\"c\"))d")});
}

TEST(SwiftLexer, CountsTheLinesOfAnInterpolation) {
    EXPECT_EQ(read("\"a\\(b\n)c\" d"), (Tokens{string("a\\(b\n)c"), word("d", 2)}));
}

TEST(SwiftLexer, WritesEveryInterpolationTheSameWay) {
    EXPECT_EQ(read("#\"a\\#(b)c\"#"), Tokens{string("a\\(b)c")});
    EXPECT_EQ(read("\"a\\(b(c"), Tokens{string("a\\(b(c)")});
}

TEST(SwiftLexer, EndsAnUnclosedStringAtTheEndOfItsLine) {
    EXPECT_EQ(read("\"abc\nd"), (Tokens{string("abc"), word("d", 2)}));
    EXPECT_EQ(read("\"abc"), Tokens{string("abc")});
    EXPECT_EQ(read("\""), Tokens{string("")});
    EXPECT_EQ(read("\"\\"), Tokens{string("\\")});
}

TEST(SwiftLexer, ReadsEscapesWithTheHashesOfTheLiteral) {
    EXPECT_EQ(read(R"(#"a\nb"#)"), Tokens{string("a\\nb")});
    EXPECT_EQ(read(R"(#"a\#nb"#)"), Tokens{string("a\nb")});
    EXPECT_EQ(read(R"(##"a"#b\#n\##n"## c)"), (Tokens{string("a\"#b\\#n\n"), word("c")}));
}

TEST(SwiftLexer, DecodesEscapes) {
    EXPECT_EQ(read(R"("\n\t\r\0\"\'\\")"), Tokens{string(std::string("\n\t\r\0\"'\\", 7))});
    EXPECT_EQ(read(R"("\u{41}\u{1F600}\u{00e9}")"), Tokens{string("A😀é")});
    EXPECT_EQ(read(R"("a\u{}b\u{xyz}c\u{D800}d\u{110000}e\u{FFFFFFFFFFFF}f")"),
              Tokens{string("abcdef")});
    EXPECT_EQ(read(R"("\u41\q")"), Tokens{string("\\u41\\q")});
    EXPECT_EQ(read("\"a\\\nb\" c"), (Tokens{string("ab"), word("c", 2)}));
}

TEST(SwiftLexer, TakesTheIndentationOfTheClosingQuotesOffEachLine) {
    EXPECT_EQ(read("\"\"\"\n    one\n      two\n  three\n\n    \"\"\" x"),
              (Tokens{string("one\n  two\nthree\n"), word("x", 6)}));
    EXPECT_EQ(read("\"\"\"\r\n\ta\r\n\t\"\"\""), Tokens{string("a")});
}

TEST(SwiftLexer, ReadsMultiLineLiteralsOfEveryShape) {
    EXPECT_EQ(read("\"\"\"\"\"\""), Tokens{string("")});
    EXPECT_EQ(read("\"\"\"\n\"\"\""), Tokens{string("")});
    EXPECT_EQ(read("\"\"\"\n\n\"\"\""), Tokens{string("")});
    EXPECT_EQ(read("\"\"\"a\"\"\""), Tokens{string("a")});
    EXPECT_EQ(read("\"\"\"\n  a\n  b\"\"\""), Tokens{string("  a\n  b")});
    EXPECT_EQ(read("\"\"\"\n  say \"\"hi\"\" \\n  b\n  \"\"\""),
              Tokens{string("say \"\"hi\"\" \nb")});
    EXPECT_EQ(read("\"\"\"\n  a\u2028  b\n  \"\"\""), Tokens{string("a\nb")});
}

TEST(SwiftLexer, KeepsTheIndentationOfAnUnclosedMultiLineLiteral) {
    EXPECT_EQ(read("\"\"\"\n  a\n  "), Tokens{string("\n  a\n  ")});
}

TEST(SwiftLexer, DropsTheLineOfACondition) {
    EXPECT_EQ(read("#if DEBUG && os(macOS)\nvar a\n#else\nvar b\n#endif // done\nc"),
              (Tokens{word("var", 2), word("a", 2), word("var", 4), word("b", 4), word("c", 6)}));
    EXPECT_EQ(read("#warning(\"x\")\n#error(\"x\")\n#sourceLocation()\n#elseif x"), Tokens{});
    EXPECT_EQ(read("##if x\ny"), (Tokens{symbol("#"), word("y", 2)}));
}

TEST(SwiftLexer, KeepsOtherWordsBehindAHash) {
    EXPECT_EQ(read("#available"), Tokens{word("#available")});
    EXPECT_EQ(read("#ifx #file"), (Tokens{word("#ifx"), word("#file")}));
    EXPECT_EQ(read("#_a ## #"),
              (Tokens{symbol("#"), word("_a"), symbol("#"), symbol("#"), symbol("#")}));
}

TEST(SwiftLexer, KnowsThreeLongOperators) {
    EXPECT_EQ(read("a...b"), (Tokens{word("a"), symbol("..."), word("b")}));
    EXPECT_EQ(read("a..<b"), (Tokens{word("a"), symbol("..<"), word("b")}));
    EXPECT_EQ(read("a->b"), (Tokens{word("a"), symbol("->"), word("b")}));
    EXPECT_EQ(read("a..b"), (Tokens{word("a"), symbol("."), symbol("."), word("b")}));
    EXPECT_EQ(read("=="), (Tokens{symbol("="), symbol("=")}));
}

TEST(SwiftLexer, ReadsNumbersWithoutTheirSign) {
    EXPECT_EQ(read("-1.5"), (Tokens{symbol("-"), number("1.5")}));
    EXPECT_EQ(read("1..2"), (Tokens{number("1"), symbol("."), symbol("."), number("2")}));
    EXPECT_EQ(read("0xFF 1_000 1.2.3 1.x 5."),
              (Tokens{number("0xFF"), number("1_000"), number("1.2.3"), number("1"), symbol("."),
                      word("x"), number("5"), symbol(".")}));
    EXPECT_EQ(read("0...10"), (Tokens{number("0"), symbol("..."), number("10")}));
}

TEST(SwiftLexer, CountsTheLinesInsideTokens) {
    EXPECT_EQ(read("\"\"\"\na\n\"\"\" b\n/*\n\n*/ c"),
              (Tokens{string("a"), word("b", 3), word("c", 6)}));
}

TEST(SwiftLexer, CountsALineOfCRLFOnce) {
    EXPECT_EQ(read("a\r\nb\r\n\r\n/* \r\n */c\rd\n\re"),
              (Tokens{word("a"), word("b", 2), word("c", 5), word("d", 6), word("e", 8)}));
}

TEST(SwiftLexer, ReadsEscapedIdentifiers) {
    EXPECT_EQ(read("`class` x"), (Tokens{word("class"), word("x")}));
    EXPECT_EQ(read("``"), Tokens{word("")});
    EXPECT_EQ(read("`a"), Tokens{word("a")});
}

TEST(SwiftLexer, MissesTheLineOfAnUnclosedBacktick) {
    EXPECT_EQ(read("`a\r\nb\nc"), (Tokens{word("a"), word("b"), word("c", 2)}));
}

TEST(SwiftLexer, ReadsIdentifiersOfEveryScript) {
    EXPECT_EQ(read("größe_1 $0 変数 e\u0301t"),
              (Tokens{word("größe_1"), word("$0"), word("変数"), word("e\u0301t")}));
    EXPECT_EQ(read("x\u00b2 \u2167"), (Tokens{word("x\u00b2"), number("\u2167")}));
    EXPECT_EQ(read("👍🏽"), Tokens{symbol("👍🏽")});
}

TEST(SwiftLexer, ComparesWholeCharacters) {
    EXPECT_EQ(read("_\u0301"), Tokens{symbol("_\u0301")});
    EXPECT_EQ(read("/\u0301/ a"), (Tokens{symbol("/\u0301"), symbol("/"), word("a")}));
    EXPECT_EQ(read("\"a\"\u0301\" b"), (Tokens{string("a\"\u0301"), word("b")}));
    EXPECT_EQ(read(" \u0301a"), Tokens{word("a")});
    EXPECT_EQ(read("/* *\u0301/ */ b"), Tokens{word("b")});
}

TEST(SwiftLexer, TellsWhereTokensStand) {
    const std::string source = "ab \"c\\n\" /** d */ #\"e\"# `f`";
    std::vector<std::string> pieces;
    for (const SwiftLexer::Token& token : SwiftLexer::tokenize(source).list) {
        pieces.push_back(source.substr(token.begin, token.end - token.begin));
    }
    EXPECT_EQ(pieces, (std::vector<std::string>{"ab", "\"c\\n\"", "/** d */", "#\"e\"#", "`f`"}));
}

TEST(SwiftLexer, TakesAnyBytes) {
    EXPECT_EQ(read(std::string_view("a\0b", 3)),
              (Tokens{word("a"), symbol(std::string(1, '\0')), word("b")}));
    EXPECT_EQ(read("a\xff\xc3 b"), (Tokens{word("a"), symbol("\xff"), symbol("\xc3"), word("b")}));
    EXPECT_EQ(read("\"\xff\" \"\xe2\x80"), (Tokens{string("\xff"), string("\xe2\x80")}));
}

TEST(SwiftLexer, AgreesWithThePlainLexerOnAnyMixture) {
    const std::vector<std::string> pieces = {
        "a",      "var", "1",      "0x1F",   "_",      "$",       ".",        "...",
        "<",      "->",  "\"",     "\"\"\"", "#",      "##",      "#if",      "`",
        "\\",     "\\n", "\\(",    ")",      "(",      "\\u{41}", "{",        "}",
        "/",      "//",  "///",    "/*",     "/**",    "*/",      "*",        "\n",
        "\r\n",   "\r",  "\u2028", "\u0085", " ",      "\t",      "\u00a0",   "é",
        "\u0301", "変",  "👍🏽",   "\u0600", "\u200d", "\xff",    "\xe2\x80", std::string(1, '\0'),
    };
    std::mt19937 random(7);
    for (int round = 0; round < 20'000; ++round) {
        std::string source;
        for (std::size_t left = random() % 24; left > 0; --left) {
            source += pieces[random() % pieces.size()];
        }
        Tokens expected;
        for (auto& token : test::ReferenceLexer(source).run()) {
            expected.push_back({token.kind, token.text, token.line});
        }
        ASSERT_EQ(read(source), expected) << source;
    }
}

// Each would take hours if it took time with the square of its length.
TEST(SwiftLexer, ReadsLongRunsInLinearTime) {
    const std::size_t length = 3'000'000;
    EXPECT_EQ(SwiftLexer::tokenize(std::string(length, '#')).list.size(), length);
    std::string source;
    for (std::size_t i = 0; i < length; ++i) {
        source += "/*";
    }
    EXPECT_EQ(SwiftLexer::tokenize(source).list.size(), 0U);
    EXPECT_EQ(SwiftLexer::tokenize("/**" + source).list.size(), 1U);
    EXPECT_EQ(SwiftLexer::tokenize("\"\\" + std::string(length, '(')).list.size(), 1U);
    EXPECT_EQ(SwiftLexer::tokenize("\"" + std::string(length, '\\')).list.size(), 1U);
    const std::string hashes(length, '#');
    EXPECT_EQ(
        SwiftLexer::tokenize(hashes + "\"\"\"" + std::string(length, '"') + hashes).list.size(),
        1U);
    source = "a";
    for (std::size_t i = 0; i < length; ++i) {
        source += "\u0301";
    }
    EXPECT_EQ(SwiftLexer::tokenize(source).list.size(), 1U);
    EXPECT_EQ(SwiftLexer::tokenize("/" + source.substr(1)).list.size(), 1U);
}

} // namespace
} // namespace ombrel

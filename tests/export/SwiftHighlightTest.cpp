#include "export/SwiftHighlight.h"

#include <gtest/gtest.h>

#include <string>

namespace ombrel {
namespace {

using enum SwiftTokenKind;

std::vector<std::pair<std::string, SwiftTokenKind>> tokensOf(std::string_view source) {
    std::vector<std::pair<std::string, SwiftTokenKind>> tokens;
    for (const SwiftToken& token : highlightSwift(source)) {
        tokens.emplace_back(source.substr(token.begin, token.length), token.kind);
    }
    return tokens;
}
using Tokens = std::vector<std::pair<std::string, SwiftTokenKind>>;

TEST(SwiftHighlight, TellsWordsStringsAndCommentsApart) {
    EXPECT_EQ(tokensOf("let n = Docs.search(\"a\") // all"), (Tokens{{"let", keyword},
                                                                     {" n = ", plain},
                                                                     {"Docs", type},
                                                                     {".search(", plain},
                                                                     {"\"a\"", string},
                                                                     {") ", plain},
                                                                     {"// all", comment}}));
    EXPECT_EQ(tokensOf("x + 12"), (Tokens{{"x + ", plain}, {"12", number}}));
}

TEST(SwiftHighlight, EndsStringsAtTheirQuoteOrLine) {
    EXPECT_EQ(tokensOf(R"("a\"b" c)"), (Tokens{{R"("a\"b")", string}, {" c", plain}}));
    EXPECT_EQ(tokensOf("\"a\nlet"), (Tokens{{"\"a", string}, {"\n", plain}, {"let", keyword}}));
    EXPECT_EQ(tokensOf("\"\"\"\na \" b\n\"\"\"x"),
              (Tokens{{"\"\"\"\na \" b\n\"\"\"", string}, {"x", plain}}));
}

TEST(SwiftHighlight, TakesTextsThatEndAnywhere) {
    for (const std::string_view source :
         {"", "\"", "\"\\", "\"\"\"", "\"\"\"a", "/", "//", "/*", "/*/", "a/", "\xc3", "1a"}) {
        std::size_t end = 0;
        for (const SwiftToken& token : highlightSwift(source)) {
            EXPECT_EQ(token.begin, end) << source;
            EXPECT_GT(token.length, 0U) << source;
            end += token.length;
        }
        EXPECT_EQ(end, source.size()) << source;
    }
}

} // namespace
} // namespace ombrel

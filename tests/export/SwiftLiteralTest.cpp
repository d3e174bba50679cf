#include "export/SwiftLiteral.h"

#include "platform/Text.h"
#include "tests/export/SwiftReader.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <random>

namespace ombrel {
namespace {

std::string readBack(std::string_view text) {
    const std::string literal = '"' + swiftStringEscape(text) + '"';
    test::SwiftReader reader(literal);
    std::string value = reader.string();
    EXPECT_TRUE(reader.atEnd());
    return value;
}

std::string swiftDouble(double number) {
    std::string text;
    appendSwiftDouble(text, number);
    return text;
}

TEST(SwiftStringEscape, EscapesFiveCharacters) {
    EXPECT_EQ(swiftStringEscape("a\rb\nc\td\"e\\f"), "a\\rb\\nc\\td\\\"e\\\\f");
    EXPECT_EQ(swiftStringEscape("\r\n"), "\\r\\n");
}

TEST(SwiftStringEscape, LeavesEverythingElse) {
    const std::string others("\0\x01\x0b\x0c\x1b\x7f'`$ é\u0301\u2028\u2029\ufeff\u0085 😀", 30);
    EXPECT_EQ(swiftStringEscape(others), others);
    EXPECT_EQ(swiftStringEscape(""), "");
}

TEST(SwiftStringEscape, EscapesWhatIsEscapedAgain) {
    EXPECT_EQ(swiftStringEscape(swiftStringEscape("\"\n")), "\\\\\\\"\\\\n");
}

TEST(SwiftStringEscape, RoundTripsQuotesBackslashesTabsAndNewlines) {
    const std::string text = "\"quoted\" \\ back\\\\slashes\t\ttabs\n\nlines\r\nends\r";
    EXPECT_EQ(readBack(text), text);
}

TEST(SwiftStringEscape, MakesSwiftsOwnSyntaxData) {
    for (const std::string text : {"\\(1 + 1)", "\"\"\"", "#\"raw\"#", "\\u{41}", "\\#(x)", "\\",
                                   "\"", "\\\"", "*/ // /*", "\\0"}) {
        EXPECT_EQ(readBack(text), text);
    }
}

TEST(SwiftStringEscape, ReadsInvalidBytesAsReplacementCharacters) {
    EXPECT_EQ(swiftStringEscape("a\xff\"\xc3"), "a\ufffd\\\"\ufffd");
}

TEST(SwiftStringEscape, RoundTripsEveryCharacterThatACompilerTakes) {
    std::string text;
    for (char32_t scalar = 0; scalar < 0x110000; ++scalar) {
        std::string one;
        appendScalar(one, scalar);
        const bool isSurrogate = scalar >= 0xd800 && scalar < 0xe000;
        if (!isSurrogate && !firstRefusedCharacter(one)) {
            text += one;
        }
    }
    EXPECT_EQ(readBack(text), text);
}

TEST(FirstRefusedCharacter, IsAControlCharacterThatIsNotEscaped) {
    for (int c = 0; c < 0x80; ++c) {
        const std::string text = "a" + std::string(1, static_cast<char>(c)) + "\x1b";
        const bool isRefused =
            (c < 0x20 && c != 0 && c != '\t' && c != '\n' && c != '\r') || c == 0x7f;
        EXPECT_EQ(firstRefusedCharacter(text), isRefused ? c : 0x1b) << c;
    }
    EXPECT_EQ(firstRefusedCharacter("é\u0085\u2028 plain"), std::nullopt);
}

TEST(SwiftDouble, IsLaidOutAsSwiftPrintsNumbers) {
    EXPECT_EQ(swiftDouble(0), "0.0");
    EXPECT_EQ(swiftDouble(-0.0), "-0.0");
    EXPECT_EQ(swiftDouble(1), "1.0");
    EXPECT_EQ(swiftDouble(-2.5), "-2.5");
    EXPECT_EQ(swiftDouble(0.1), "0.1");
    EXPECT_EQ(swiftDouble(0.0001), "0.0001");
    EXPECT_EQ(swiftDouble(0.00001), "1e-05");
    EXPECT_EQ(swiftDouble(100000), "100000.0");
    EXPECT_EQ(swiftDouble(9007199254740992), "9007199254740992.0");
    EXPECT_EQ(swiftDouble(0x1p54), "1.8014398509481984e+16");
    EXPECT_EQ(swiftDouble(1e22), "1e+22");
    EXPECT_EQ(swiftDouble(5e-324), "5e-324");
    EXPECT_EQ(swiftDouble(std::numeric_limits<double>::max()), "1.7976931348623157e+308");
    EXPECT_EQ(swiftDouble(0.1F), "0.10000000149011612");
}

TEST(SwiftDouble, NamesWhatIsNoFiniteNumber) {
    EXPECT_EQ(swiftDouble(std::numeric_limits<double>::infinity()), ".infinity");
    EXPECT_EQ(swiftDouble(-std::numeric_limits<double>::infinity()), "-.infinity");
    EXPECT_EQ(swiftDouble(std::nan("")), ".nan");
    EXPECT_EQ(swiftDouble(-std::nan("")), ".nan");
}

TEST(SwiftDouble, HasAnotherDigitWhereTheCompilerWouldRoundTwice) {
    EXPECT_EQ(swiftDouble(0x1.12f9beed0cc1fp-2), "0.26853082963788383"); // not 0.2685308296378838
    EXPECT_EQ(swiftDouble(-0x1.f696b77437435p-3), "-0.24540465663349811");
}

TEST(SwiftDouble, ReadsBackAlsoThroughSixtyFourBits) {
    std::mt19937_64 random(7);
    int shortest = 0;
    constexpr int count = 200000;
    for (int i = 0; i < count; ++i) {
        const double number = std::bit_cast<double>(random());
        if (!std::isfinite(number)) {
            continue;
        }
        const std::string text = swiftDouble(number);
        ASSERT_EQ(std::strtod(text.c_str(), nullptr), number) << text;
        ASSERT_EQ(static_cast<double>(std::strtold(text.c_str(), nullptr)), number) << text;
        char plain[40];
        const auto end = std::to_chars(plain, plain + sizeof plain, number);
        shortest += std::strtod(text.c_str(), nullptr) == number &&
                    text.find_first_of("e") != std::string::npos &&
                    text.size() <= static_cast<std::size_t>(end.ptr - plain);
    }
    EXPECT_GT(shortest, count * 9 / 10); // nearly all need no digit more
}

} // namespace
} // namespace ombrel

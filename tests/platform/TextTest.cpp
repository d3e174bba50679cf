#include "platform/Text.h"

#include <gtest/gtest.h>
#include <random>
#include <string>
#include <unicode/locid.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <vector>

namespace ombrel {
namespace {

using Pieces = std::vector<std::string_view>;

std::string utf8(char32_t scalar) {
    std::string text;
    appendScalar(text, scalar);
    return text;
}

template <class Visit>
void forEachScalar(Visit visit) {
    for (char32_t scalar = 0; scalar < 0x110000; ++scalar) {
        if (scalar < 0xd800 || scalar > 0xdfff) {
            visit(scalar);
        }
    }
}

std::string randomBytes(std::mt19937& random) {
    // Bytes that begin, continue and break sequences.
    static constexpr std::string_view bytes =
        "a\x7f\x80\x8f\x90\x9f\xa0\xbf\xc0\xc1\xc2\xdf\xe0\xe2\xed\xef\xf0\xf3\xf4\xf5\xff";
    std::string text;
    for (std::size_t i = random() % 12; i > 0; --i) {
        text += bytes[random() % bytes.size()];
    }
    return text;
}

std::string repairedByIcu(const std::string& text) {
    std::string repaired;
    icu::UnicodeString::fromUTF8(text).toUTF8String(repaired);
    return repaired;
}

TEST(Utf8, ScalarsAreWrittenAndReadBack) {
    forEachScalar([](char32_t scalar) {
        const std::string text = utf8(scalar);
        const DecodedScalar decoded = decodeScalar(text, 0);
        ASSERT_EQ(decoded.scalar, scalar);
        ASSERT_EQ(decoded.length, text.size());
        ASSERT_TRUE(isValidUtf8(text));
    });
}

TEST(Utf8, InvalidBytesAreRepairedAsIcuDoes) {
    std::mt19937 random(1);
    int invalid = 0;
    for (int round = 0; round < 100000; ++round) {
        const std::string text = randomBytes(random);
        const std::string expected = repairedByIcu(text);
        ASSERT_EQ(repairUtf8(text), expected);
        ASSERT_EQ(isValidUtf8(text), text == expected);
        invalid += text != expected ? 1 : 0;
    }
    EXPECT_GT(invalid, 1000);
}

TEST(Utf8, TheReplacementCharacterItselfIsValid) {
    EXPECT_TRUE(isValidUtf8("a\ufffd"));
    EXPECT_FALSE(isValidUtf8("a\xf0\x9f\x91")); // three bytes that read as U+FFFD
}

TEST(Utf8, AByteOrderMarkIsDroppedAtTheStartOnly) {
    EXPECT_EQ(withoutByteOrderMark("\ufeffa"), "a");
    EXPECT_EQ(withoutByteOrderMark("\ufeff\ufeffa"), "\ufeffa");
    EXPECT_EQ(withoutByteOrderMark("a\ufeff"), "a\ufeff");
    EXPECT_EQ(withoutByteOrderMark("\xef\xbb"), "\xef\xbb");
    EXPECT_EQ(withoutByteOrderMark(""), "");
}

TEST(Utf8, AsciiIsToldAtEveryPlaceInAWord) {
    for (std::size_t length = 0; length < 30; ++length) {
        EXPECT_TRUE(isAscii(std::string(length, '\x7f')));
        for (std::size_t place = 0; place < length; ++place) {
            std::string text(length, '\0');
            text[place] = '\x80';
            EXPECT_FALSE(isAscii(text));
        }
    }
}

TEST(ScalarClasses, AreTheOnesOfTheContract) {
    forEachScalar([](char32_t scalar) {
        const auto c = static_cast<UChar32>(scalar);
        ASSERT_EQ(isWhitespace(scalar), scalar == 9 || u_charType(c) == U_SPACE_SEPARATOR);
        const bool newline = scalar == 0x0a || scalar == 0x0b || scalar == 0x0c || scalar == 0x0d ||
                             scalar == 0x85 || scalar == 0x2028 || scalar == 0x2029;
        ASSERT_EQ(isNewline(scalar), newline);
    });
    EXPECT_TRUE(isWhitespace(0x3000));
    EXPECT_FALSE(isWhitespace(0x200b)); // zero width space has the category Cf
}

TEST(ScalarClasses, LettersAreAlphabeticAndNumbersHaveANumericType) {
    EXPECT_TRUE(isLetter(U'a'));
    EXPECT_TRUE(isLetter(U'ß'));
    EXPECT_TRUE(isLetter(U'語'));
    EXPECT_TRUE(isLetter(U'Ⅷ'));   // a letter and a number
    EXPECT_TRUE(isLetter(0x24b6)); // circled letter: Alphabetic, though a symbol by category
    EXPECT_TRUE(isLetter(0x0345)); // Alphabetic, though a mark by category
    EXPECT_FALSE(isLetter(U'1'));
    EXPECT_FALSE(isLetter(U'_'));
    EXPECT_FALSE(isLetter(0x0301));
    EXPECT_TRUE(isNumber(U'7'));
    EXPECT_TRUE(isNumber(U'٣'));
    EXPECT_TRUE(isNumber(U'½'));
    EXPECT_TRUE(isNumber(U'Ⅷ'));
    EXPECT_TRUE(isNumber(U'²'));
    EXPECT_TRUE(isNumber(U'三')); // has a numeric value
    EXPECT_FALSE(isNumber(U'a'));
    EXPECT_FALSE(isNumber(U'+'));
}

TEST(Trimming, TakesTheNamedClassFromBothEnds) {
    EXPECT_EQ(trimWhitespaces(" \t\u00a0\u3000a b\u2003 \t"), "a b");
    EXPECT_EQ(trimWhitespaces("\n a \n"), "\n a \n");
    EXPECT_EQ(trimWhitespacesAndNewlines("\r\n\u2028 \u0085a\n\u2029b\v\f\t"), "a\n\u2029b");
    EXPECT_EQ(trimBlanksAndTabs(" \t\u00a0a\u00a0\t "), "\u00a0a\u00a0");
    EXPECT_EQ(trimWhitespacesAndNewlines(" \n\t\u2029"), "");
    EXPECT_EQ(trimWhitespacesAndNewlines(""), "");
}

TEST(Trimming, GoesByScalar) {
    EXPECT_EQ(trimWhitespacesAndNewlines(" \u0301a"), "\u0301a");
    EXPECT_EQ(trimWhitespacesAndNewlines("a \u0301"), "a \u0301");
    EXPECT_EQ(trimWhitespacesAndNewlines("\r\na\r\n"), "a");
}

TEST(Trimming, KnowsEveryScalarAtBothEnds) {
    forEachScalar([](char32_t scalar) {
        const std::string text = utf8(scalar);
        const std::string wrapped = text + "a" + text;
        const bool member = isWhitespace(scalar) || isNewline(scalar);
        ASSERT_EQ(trimWhitespacesAndNewlines(wrapped), member ? "a" : wrapped);
    });
}

TEST(Trimming, LeavesInvalidBytesAlone) {
    for (const std::string text : {"\xa0", "a\xa0", "\xc2", "a\x80\xa8", "\xe2\x80", "\xff"}) {
        EXPECT_EQ(trimWhitespacesAndNewlines(text), text);
    }
    EXPECT_EQ(trimWhitespacesAndNewlines("\xe2\xc2\xa0"), "\xe2");
}

TEST(SplitNewlines, GivesOnePieceMoreThanSeparators) {
    EXPECT_EQ(splitNewlines(""), Pieces{""});
    EXPECT_EQ(splitNewlines("\n"), (Pieces{"", ""}));
    EXPECT_EQ(splitNewlines("a\nb"), (Pieces{"a", "b"}));
    EXPECT_EQ(splitNewlines("a\r\nb\n"), (Pieces{"a", "", "b", ""}));
    EXPECT_EQ(splitNewlines("a\vb\fc\u0085d\u2028e\u2029f"),
              (Pieces{"a", "b", "c", "d", "e", "f"}));
}

TEST(SplitNewlines, FindsEverySeparatorAtEveryPlaceInAWord) {
    forEachScalar([](char32_t scalar) {
        const std::string separator = utf8(scalar);
        const std::string text = "abc" + separator + "defghijklm";
        ASSERT_EQ(splitNewlines(text).size(), isNewline(scalar) ? 2U : 1U);
    });
    for (const std::string separator : {"\n", "\r", "\u0085", "\u2029"}) {
        for (std::size_t before = 0; before < 24; ++before) {
            for (const std::string filler : {"x", "’", "é", "\xc2", "\x8a", "\x0e", "\t"}) {
                std::string head;
                for (std::size_t i = 0; i < before; ++i) {
                    head += filler;
                }
                const std::string text = head + separator + "y";
                ASSERT_EQ(splitNewlines(text), (Pieces{head, "y"}));
            }
        }
    }
}

TEST(Lowercased, MapsScalarByScalar) {
    EXPECT_EQ(lowercased("ABCxyz019@[`{"), "abcxyz019@[`{");
    EXPECT_EQ(lowercased("ÄÖÜ ẞ"), "äöü ß");
    EXPECT_EQ(lowercased("ΟΔΟΣ"), "οδοσ"); // no final sigma
    EXPECT_EQ(lowercased("İI"), "i\u0307i");
    EXPECT_EQ(lowercased("\U00010400"), "\U00010428");
    EXPECT_EQ(lowercased("Ⅷ"), "ⅷ");
    EXPECT_EQ(lowercased("\xff"
                         "A"),
              "\ufffda");
    EXPECT_EQ(lowercased(std::string_view("A\0B", 3)), std::string_view("a\0b", 3));
}

TEST(Lowercased, IsIcusFullMappingOfEachScalarByItself) {
    forEachScalar([](char32_t scalar) {
        if (u_isdefined(static_cast<UChar32>(scalar)) == 0) {
            return; // of scalars that are newer than ICU it says nothing
        }
        std::string expected;
        icu::UnicodeString(static_cast<UChar32>(scalar))
            .toLower(icu::Locale::getRoot())
            .toUTF8String(expected);
        ASSERT_EQ(lowercased(utf8(scalar)), expected) << static_cast<unsigned>(scalar);
    });
}

TEST(CanonicalEquivalence, IsEqualityOfTexts) {
    EXPECT_TRUE(canonicallyEqual("", ""));
    EXPECT_TRUE(canonicallyEqual("é", "e\u0301"));
    EXPECT_TRUE(canonicallyEqual("a\u0323\u0307", "a\u0307\u0323"));
    EXPECT_TRUE(canonicallyEqual("한", "\u1112\u1161\u11ab"));
    EXPECT_TRUE(canonicallyEqual("K", "\u212a")); // the Kelvin sign is ASCII's K
    EXPECT_FALSE(canonicallyEqual("a", "A"));
    EXPECT_FALSE(canonicallyEqual("ﬁ", "fi")); // compatible, not canonical
    EXPECT_FALSE(canonicallyEqual("é", "e"));
    EXPECT_TRUE(canonicallyEqual("\xff", "\ufffd"));
    EXPECT_FALSE(canonicallyEqual("a", std::string_view("a\0", 2)));
}

TEST(CanonicalEquivalence, HasKeysThatAreEqualBytes) {
    EXPECT_EQ(canonicalKey("abc"), "abc");
    EXPECT_EQ(canonicalKey("e\u0301"), "é");
    EXPECT_EQ(canonicalKey("é"), "é");
    EXPECT_EQ(canonicalKey("\u212b"), "Å");
    EXPECT_EQ(canonicalKey("\xff"
                           "e\u0301"),
              "\ufffdé");
}

TEST(Join, PutsTheSeparatorBetween) {
    EXPECT_EQ(join({}, ", "), "");
    EXPECT_EQ(join({"a"}, ", "), "a");
    EXPECT_EQ(join({"a", "", "a"}, ", "), "a, , a");
}

TEST(Text, TellsGeneralCategoriesAndWhiteSpace) {
    for (const char32_t letter : {U'a', U'ß', U'変', U'\u02b0'}) {
        EXPECT_TRUE(hasLetterCategory(letter));
        EXPECT_FALSE(hasNumberCategory(letter));
    }
    for (const char32_t number : {U'7', U'²', U'Ⅷ', U'٣'}) {
        EXPECT_TRUE(hasNumberCategory(number));
        EXPECT_FALSE(hasLetterCategory(number));
    }
    EXPECT_FALSE(hasLetterCategory(U'\u0345')); // alphabetic, but a mark
    EXPECT_FALSE(hasNumberCategory(U'一'));     // numeric, but a letter
    for (const char32_t blank : {U' ', U'\n', U'\u0085', U'\u00a0', U'\u2028', U'\u3000'}) {
        EXPECT_TRUE(hasWhiteSpaceProperty(blank));
    }
    EXPECT_FALSE(hasWhiteSpaceProperty(U'\u200b'));
}

} // namespace
} // namespace ombrel

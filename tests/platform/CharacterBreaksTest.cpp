#include "platform/NewerScalars.h"
#include "platform/Text.h"

#include <algorithm>
#include <cstdio>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <unicode/brkiter.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <vector>

namespace ombrel {
namespace {

std::string utf8(const std::u32string& scalars) {
    std::string text;
    for (const char32_t scalar : scalars) {
        appendScalar(text, scalar);
    }
    return text;
}

std::vector<std::string> charactersOf(std::string_view text) {
    std::vector<std::string> characters;
    CharacterCursor cursor(text);
    for (auto character = cursor.next(); !character.empty(); character = cursor.next()) {
        characters.emplace_back(character);
    }
    return characters;
}

// ICU's own iterator, another implementation of the same rules.
class IcuCharacters {
  public:
    IcuCharacters() {
        UErrorCode error = U_ZERO_ERROR;
        m_iterator.reset(
            icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), error));
    }
    std::vector<std::string> of(std::string_view text) {
        const icu::UnicodeString wide = icu::UnicodeString::fromUTF8(
            icu::StringPiece(text.data(), static_cast<std::int32_t>(text.size())));
        m_iterator->setText(wide);
        std::vector<std::string> characters;
        std::int32_t start = m_iterator->first();
        for (std::int32_t end = m_iterator->next(); end != icu::BreakIterator::DONE;
             start = end, end = m_iterator->next()) {
            wide.tempSubStringBetween(start, end).toUTF8String(characters.emplace_back());
        }
        return characters;
    }

  private:
    std::unique_ptr<icu::BreakIterator> m_iterator;
};

std::string inHex(std::string_view text) {
    std::string hex;
    for (std::size_t i = 0; i < text.size();) {
        const DecodedScalar decoded = decodeScalar(text, i);
        char number[16];
        std::snprintf(number, sizeof number, "%04X ", static_cast<unsigned>(decoded.scalar));
        hex += number;
        i += decoded.length;
    }
    return hex;
}

// All scalars that ICU knows, in groups that behave alike under the rules.
std::vector<std::u32string> groupedScalars() {
    std::map<std::vector<int>, std::u32string> groups;
    for (char32_t scalar = 0; scalar < 0x110000; ++scalar) {
        const auto c = static_cast<UChar32>(scalar);
        if (U_IS_SURROGATE(c) || u_isdefined(c) == 0 || isPrefixNoLonger(scalar)) {
            continue; // of scalars that are newer than ICU it says nothing
        }
        groups[{u_getIntPropertyValue(c, UCHAR_GRAPHEME_CLUSTER_BREAK),
                u_hasBinaryProperty(c, UCHAR_EXTENDED_PICTOGRAPHIC),
                u_getIntPropertyValue(c, UCHAR_INDIC_SYLLABIC_CATEGORY),
                u_getCombiningClass(c) != 0, u_getIntPropertyValue(c, UCHAR_SCRIPT)}] += scalar;
    }
    std::vector<std::u32string> scalars;
    for (auto& [properties, members] : groups) {
        scalars.push_back(std::move(members));
    }
    return scalars;
}

TEST(Characters, AgreeWithIcuOnPairsOfEveryProperty) {
    const auto groups = groupedScalars();
    ASSERT_GT(groups.size(), 100U);
    IcuCharacters icu;
    std::mt19937 random(1);
    for (const auto& first : groups) {
        // One text for all pairs: a line feed ends what is before it.
        std::u32string pairs;
        for (const auto& second : groups) {
            pairs += first[random() % first.size()];
            pairs += second[random() % second.size()];
            pairs += U'\n';
        }
        const std::string text = utf8(pairs);
        ASSERT_EQ(charactersOf(text), icu.of(text)) << inHex(utf8(first.substr(0, 1)));
    }
}

TEST(Characters, AgreeWithIcuOnRandomTextsOfEveryProperty) {
    const auto groups = groupedScalars();
    IcuCharacters icu;
    std::mt19937 random(2);
    for (int round = 0; round < 30000; ++round) {
        // Few groups in one text, so that the long rules are met.
        std::vector<const std::u32string*> some;
        for (int i = 0; i < 5; ++i) {
            some.push_back(&groups[random() % groups.size()]);
        }
        std::u32string scalars;
        for (std::size_t i = random() % 24; i > 0; --i) {
            const auto& group = *some[random() % some.size()];
            scalars += group[random() % group.size()];
        }
        const std::string text = utf8(scalars);
        ASSERT_EQ(charactersOf(text), icu.of(text)) << inHex(text);
    }
}

TEST(Characters, AgreeWithIcuOnRandomTextsOfTheLongRules) {
    const std::u32string scalars =
        U"aA \r\n\t\u0301\u0308\u200d\u0600\u0903\u0915\u0924\u094d\u093c\u0cb0\u0ccd\u0d15\u0d4d"
        U"\u1100\u1161\u11a8\uac00\uac01\U0001f1e9\U0001f1ea\U0001f469\U0001f3fd\u2764\ufe0f\u00a9"
        U"\u20e3\U000e0067\U000e007f";
    IcuCharacters icu;
    std::mt19937 random(3);
    for (int round = 0; round < 200000; ++round) {
        std::u32string chosen;
        for (std::size_t i = random() % 12; i > 0; --i) {
            chosen += scalars[random() % scalars.size()];
        }
        const std::string text = utf8(chosen);
        ASSERT_EQ(charactersOf(text), icu.of(text)) << inHex(text);
    }
}

TEST(Characters, AreClusters) {
    EXPECT_EQ(characterCount(""), 0U);
    EXPECT_EQ(characterCount("abc"), 3U);
    EXPECT_EQ(characterCount("\r\n"), 1U);
    EXPECT_EQ(characterCount("\n\r"), 2U);
    EXPECT_EQ(characterCount("\r\r\n\n"), 3U);
    EXPECT_EQ(characterCount("e\u0301"), 1U);
    EXPECT_EQ(characterCount("\n\u0301"), 2U);
    EXPECT_EQ(characterCount("👍🏽"), 1U);
    EXPECT_EQ(characterCount("👩‍👩‍👧‍👦"), 1U);
    EXPECT_EQ(characterCount("🇩🇪🇫🇷🇮"), 3U);
    EXPECT_EQ(characterCount("क्षि"), 1U);
    EXPECT_EQ(characterCount("한국어"), 3U);
    EXPECT_EQ(characterCount("한"), 1U);
    EXPECT_EQ(characterCount("#️⃣"), 1U);
    EXPECT_EQ(characterCount(std::string_view("\0\0a", 3)), 3U);
}

TEST(Characters, CountTheSameWhereAsciiMeetsOtherScalars) {
    // Every length of an ASCII run at every place in a word, between scalars that join it.
    for (std::size_t length = 0; length < 40; ++length) {
        const std::string run(length, 'x');
        const std::size_t joined = length == 0 ? 0 : 1;
        EXPECT_EQ(characterCount(run + "\u0301"), length + 1 - joined);
        EXPECT_EQ(characterCount("\u0600" + run), length + 1 - joined);
        EXPECT_EQ(characterCount(run + "\r\n" + run), 2 * length + 1);
        EXPECT_EQ(characterCount(run + "\n\u0301" + run), 2 * length + 2);
    }
}

TEST(Characters, CutAtTheirBoundaries) {
    const std::string text = "a\r\nbe\u0301🇩🇪🇫🇷👩‍👧x";
    const auto characters = charactersOf(text);
    ASSERT_EQ(characters.size(), 8U);
    std::string head;
    for (std::size_t i = 0; i <= characters.size(); ++i) {
        EXPECT_EQ(prefixLength(text, i), head.size());
        EXPECT_EQ(firstCharacters(text, i), head);
        EXPECT_EQ(lastCharacters(text, characters.size() - i), text.substr(head.size()));
        if (i < characters.size()) {
            head += characters[i];
        }
    }
    EXPECT_EQ(firstCharacters(text, 1000), text);
    EXPECT_EQ(lastCharacters(text, 1000), text);
    EXPECT_EQ(firstCharacters(text, SIZE_MAX), text);
    EXPECT_EQ(lastCharacters(text, SIZE_MAX), text);
}

TEST(Characters, LastOnesNeverStartInsideAPair) {
    EXPECT_EQ(lastCharacters("ab\r\ncd", 3), "\r\ncd");
    EXPECT_EQ(lastCharacters("ab\r\ncd", 2), "cd");
    EXPECT_EQ(lastCharacters("\u0600abc", 3), "\u0600abc");
    EXPECT_EQ(lastCharacters("\u0600abc", 2), "bc");
    EXPECT_EQ(lastCharacters("abc", 0), "");
    EXPECT_EQ(lastCharacters("", 3), "");
}

TEST(Characters, LastOnesAreTheEndOfTheArrayOfAll) {
    static constexpr std::u32string_view scalars =
        U"ab \r\n\u0301\u200d\u0600\u0915\u094d\u1100\u1161\uac00\u6f22\U0001f1e9\U0001f469\ufe0f";
    std::mt19937 random(4);
    for (int round = 0; round < 50000; ++round) {
        std::string text;
        for (std::size_t i = random() % 40; i > 0; --i) {
            appendScalar(text, scalars[random() % scalars.size()]);
            if (random() % 16 == 0) {
                text += "\xf0\x9f\x91\x80\xff"[random() % 5];
            }
        }
        const auto characters = charactersOf(text);
        const std::size_t count = random() % 24;
        std::string expected;
        for (std::size_t i = characters.size() - std::min(count, characters.size());
             i < characters.size(); ++i) {
            expected += characters[i];
        }
        ASSERT_EQ(lastCharacters(text, count), expected) << testing::PrintToString(text);
    }
}

TEST(Characters, OfInvalidBytesAreOneForEachMaximalSubpart) {
    EXPECT_EQ(characterCount("\xff"), 1U);
    EXPECT_EQ(characterCount("\xff\xff"), 2U);
    EXPECT_EQ(characterCount("\x80"), 1U);
    EXPECT_EQ(characterCount("\xf0\x9f\x91"), 1U);
    EXPECT_EQ(characterCount("\xed\xa0\x80"), 3U);     // a surrogate
    EXPECT_EQ(characterCount("\xc0\xaf"), 2U);         // overlong
    EXPECT_EQ(characterCount("a\xe2\x82"), 2U);        // cut short
    EXPECT_EQ(characterCount("\xe2\x82\u0301"), 1U);   // U+FFFD can be extended
    EXPECT_EQ(characterCount("\xf4\x90\x80\x80"), 4U); // over U+10FFFF
}

TEST(Characters, MayBeCountedInManyThreadsAtOnce) {
    std::string text;
    for (char32_t scalar = 0x100; scalar < 0x30000; scalar += 37) {
        const auto c = static_cast<UChar32>(scalar);
        if (!U_IS_SURROGATE(c) && u_isdefined(c) != 0) {
            appendScalar(text, scalar);
        }
    }
    std::vector<std::size_t> counts(8);
    std::vector<std::thread> threads;
    for (std::size_t& count : counts) {
        threads.emplace_back([&] { count = characterCount(text); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(counts, std::vector<std::size_t>(8, IcuCharacters().of(text).size()));
}

} // namespace
} // namespace ombrel

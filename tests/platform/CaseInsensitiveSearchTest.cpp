#include "platform/CaseInsensitiveSearch.h"

#include <gtest/gtest.h>

namespace ombrel {
namespace {

TEST(ContainsIgnoringCase, FindsAPartInEitherCase) {
    EXPECT_TRUE(containsIgnoringCase("bug", "Bug"));
    EXPECT_TRUE(containsIgnoringCase("It is SLOW.", "low"));
    EXPECT_TRUE(containsIgnoringCase("Übung", "üBUNG"));
    EXPECT_TRUE(containsIgnoringCase("STRASSE", "straße"));
    EXPECT_TRUE(containsIgnoringCase("ΟΔΟΣ", "οδος"));
    EXPECT_FALSE(containsIgnoringCase("bug", "bugs"));
    EXPECT_FALSE(containsIgnoringCase("", "a"));
    EXPECT_FALSE(containsIgnoringCase("resume", "résumé"));
}

TEST(ContainsIgnoringCase, TakesCanonicallyEquivalentTextForTheSame) {
    EXPECT_TRUE(containsIgnoringCase("caf\u00e9", "CAFE\u0301"));
    EXPECT_TRUE(containsIgnoringCase("cafe\u0301", "CAF\u00c9"));
}

TEST(ContainsIgnoringCase, FindsWholeCharactersOnly) {
    EXPECT_FALSE(containsIgnoringCase("cafe\u0301", "cafe"));
    EXPECT_FALSE(containsIgnoringCase("x\u0302", "x"));
    EXPECT_TRUE(containsIgnoringCase("x\u0302x", "x"));
}

TEST(ContainsIgnoringCase, UsesTheCaseOfTheLocale) {
    EXPECT_TRUE(containsIgnoringCase("TITLE", "title", "en_US"));
    EXPECT_FALSE(containsIgnoringCase("TITLE", "title", "tr_TR"));
    EXPECT_TRUE(containsIgnoringCase("T\u0130TLE", "title", "tr_TR"));
    EXPECT_TRUE(containsIgnoringCase("TITLE", "t\u0131tle", "tr_TR"));
}

TEST(ContainsIgnoringCase, AcceptsAnyBytes) {
    EXPECT_TRUE(containsIgnoringCase("a\xff z", "Z"));
    EXPECT_TRUE(containsIgnoringCase("a\xff", "\xff"));
    EXPECT_TRUE(containsIgnoringCase(std::string("a\0B", 3), std::string("\0b", 2)));
}

} // namespace
} // namespace ombrel

#include "platform/NewerScalars.h"

#include "platform/Text.h"

#include <gtest/gtest.h>

namespace ombrel {
namespace {

TEST(NewerScalars, AreReadAsSwiftReadsThem) {
    EXPECT_TRUE(isLetter(0x0363));  // Alphabetic since Unicode 16, though a mark
    EXPECT_TRUE(isLetter(0x2ebf0)); // an ideograph of 15.1
    EXPECT_TRUE(isLetter(0x16ea0)); // a capital of 17
    EXPECT_TRUE(isNumber(0x4eac));  // a numeral by a correction of Unihan
    EXPECT_TRUE(isNumber(0x10d40)); // a digit of 16
    EXPECT_FALSE(isLetter(0x10d40));
    EXPECT_EQ(lowercased("\ua7cb\U00010d65"), "\u0264\U00010d85");
    EXPECT_EQ(lowercased("\u1c89"), "\u1c8a");
    EXPECT_EQ(characterCount("a\u0897"), 1U);     // a mark of 16
    EXPECT_EQ(characterCount("\U000113d1-"), 1U); // what joins the next one, of 16
    EXPECT_EQ(characterCount("\U00011a3a-"), 2U); // what no longer does so
    EXPECT_EQ(characterCount("a\U0001612a"), 1U); // a mark with a width of its own
    EXPECT_EQ(lowercased("\U00010d65\U00010d66"), "\U00010d85\U00010d66");
}

TEST(NewerScalars, LeaveAllOthersAlone) {
    for (char32_t scalar = 0; scalar < 0x250; ++scalar) {
        EXPECT_FALSE(isNewerLetter(scalar) || isNewerNumber(scalar) || isNewerMark(scalar) ||
                     isNewerPrefix(scalar) || newerLowercase(scalar) != scalar);
    }
    for (const char32_t scalar :
         {0x362U, 0x370U, 0x4e25U, 0x10d4aU, 0x1e6f6U, 0x3347aU, 0x10ffffU}) {
        EXPECT_FALSE(isNewerNumber(scalar) || isNewerMark(scalar)) << static_cast<unsigned>(scalar);
    }
    EXPECT_FALSE(isNewerLetter(0x362));
    EXPECT_FALSE(isNewerLetter(0x370));
    EXPECT_FALSE(isNewerLetter(0x10ffff));
}

} // namespace
} // namespace ombrel

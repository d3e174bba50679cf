#include "core/TokenEstimate.h"

#include <gtest/gtest.h>
#include <string>

namespace ombrel {
namespace {

TEST(EstimateTokens, IsAQuarterOfTheCharactersAndAtLeastOne) {
    EXPECT_EQ(estimateTokens(""), 1);
    EXPECT_EQ(estimateTokens("abc"), 1);
    EXPECT_EQ(estimateTokens("abcd"), 1);
    EXPECT_EQ(estimateTokens("abcdefg"), 1);
    EXPECT_EQ(estimateTokens("abcdefgh"), 2);
    EXPECT_EQ(estimateTokens(std::string(4003, 'a')), 1000);
}

TEST(EstimateTokens, CountsCharactersNotBytes) {
    EXPECT_EQ(estimateTokens("👍🏽👍🏽👍🏽👍🏽👍🏽👍🏽👍🏽"), 1);
    EXPECT_EQ(estimateTokens("👍🏽👍🏽👍🏽👍🏽👍🏽👍🏽👍🏽👍🏽"), 2);
    EXPECT_EQ(estimateTokens("\r\n\r\n\r\n\r\n"), 1);
    EXPECT_EQ(estimateTokens("e\u0301e\u0301e\u0301e\u0301"), 1);
}

} // namespace
} // namespace ombrel

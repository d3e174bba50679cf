#include "platform/ShortestDecimal.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <limits>

namespace ombrel {
namespace {

TEST(ShortestDecimal, AlwaysHasAFractionOrAnExponent) {
    EXPECT_EQ(shortestDecimal(3), "3.0");
    EXPECT_EQ(shortestDecimal(0), "0.0");
    EXPECT_EQ(shortestDecimal(-0.0), "-0.0");
    EXPECT_EQ(shortestDecimal(-2.5), "-2.5");
    EXPECT_EQ(shortestDecimal(1e16), "10000000000000000.0");
    EXPECT_EQ(shortestDecimal(2e20), "2e+20");
    EXPECT_EQ(shortestDecimal(0.0001), "0.0001");
    EXPECT_EQ(shortestDecimal(0.00001), "1e-05");
}

TEST(ShortestDecimal, HasNoMoreDigitsThanItTakesToReadBack) {
    EXPECT_EQ(shortestDecimal(0.1), "0.1");
    EXPECT_EQ(shortestDecimal(0.1 + 0.2), "0.30000000000000004");
    for (const double number : {1.0 / 3, 1e300 / 7, 5e-324, 9007199254740993.0, 123456.789e-20}) {
        EXPECT_EQ(std::strtod(shortestDecimal(number).c_str(), nullptr), number);
    }
}

TEST(ShortestDecimal, NamesWhatIsNoFiniteNumber) {
    EXPECT_EQ(shortestDecimal(std::numeric_limits<double>::infinity()), "inf");
    EXPECT_EQ(shortestDecimal(-std::numeric_limits<double>::infinity()), "-inf");
    EXPECT_EQ(shortestDecimal(std::numeric_limits<double>::quiet_NaN()), "nan");
}

} // namespace
} // namespace ombrel

#include "platform/FixedPoint.h"

#include <gtest/gtest.h>

#include <limits>

namespace ombrel {
namespace {

TEST(FixedPoint, RoundsToTheDecimals) {
    EXPECT_EQ(fixedPoint(3.456, 2), "3.46");
    EXPECT_EQ(fixedPoint(2, 1), "2.0");
    EXPECT_EQ(fixedPoint(-0.05, 0), "-0");
    EXPECT_EQ(fixedPoint(0.125, 2), "0.12");
}

TEST(FixedPoint, WritesTheLargestNumbers) {
    EXPECT_EQ(fixedPoint(-std::numeric_limits<double>::max(), 2).size(), 313U);
}

} // namespace
} // namespace ombrel

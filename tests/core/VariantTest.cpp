#include "core/Variant.h"

#include <gtest/gtest.h>

#include <cmath>

namespace ombrel {
namespace {

Variant withLatencies(std::vector<double> seconds) {
    Variant variant;
    variant.recordedLatencies = std::move(seconds);
    return variant;
}

TEST(MedianLatency, IsAbsentWithoutLatencies) {
    EXPECT_EQ(withLatencies({}).medianLatency(), std::nullopt);
}

TEST(MedianLatency, OfOneValueIsThatValue) {
    EXPECT_EQ(withLatencies({1.5}).medianLatency(), 1.5);
}

TEST(MedianLatency, OfTwoValuesIsTheLargerOne) {
    EXPECT_EQ(withLatencies({1, 3}).medianLatency(), 3);
    EXPECT_EQ(withLatencies({3, 1}).medianLatency(), 3);
}

TEST(MedianLatency, OfAnEvenNumberIsTheUpperMiddleOneUnaveraged) {
    EXPECT_EQ(withLatencies({4, 1, 3, 2}).medianLatency(), 3);
}

TEST(MedianLatency, LeavesTheOrderOfRecordingAlone) {
    const Variant variant = withLatencies({5, 1, 4, 2, 3});
    EXPECT_EQ(variant.medianLatency(), 3);
    EXPECT_EQ(variant.recordedLatencies, (std::vector<double>{5, 1, 4, 2, 3}));
}

TEST(MedianLatency, LivesWithValuesThatAreNotNumbers) {
    const double none = std::nan("");
    const auto median = withLatencies({none, 2, none, 1, none, 3, none, 0}).medianLatency();
    ASSERT_TRUE(median);
    EXPECT_TRUE(std::isnan(*median)); // the upper middle one, after the numbers
}

TEST(SummaryLabel, IsTheIndexKindAndTheName) {
    Variant variant;
    variant.name = "Default";
    EXPECT_EQ(variant.summaryLabel(), "Hybrid \u00B7 Default");
    variant.settings.index = IndexKind::spotlight;
    EXPECT_EQ(variant.summaryLabel(), "Spotlight \u00B7 Default");
}

} // namespace
} // namespace ombrel

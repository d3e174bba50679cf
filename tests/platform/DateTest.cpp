#include "platform/Date.h"

#include <ctime>
#include <gtest/gtest.h>

namespace ombrel {
namespace {

TEST(Date, CountsFromTheStartOf2001) {
    std::tm start{};
    start.tm_year = 2001 - 1900;
    start.tm_mday = 1;
    EXPECT_EQ(static_cast<double>(timegm(&start)), referenceDateSince1970);
}

TEST(Date, NowIsTheSystemsTime) {
    const auto before = static_cast<double>(std::time(nullptr));
    const double now = Date::now().secondsSinceReference + referenceDateSince1970;
    const auto after = static_cast<double>(std::time(nullptr));
    EXPECT_GE(now, before - 1); // the two clocks may differ by a tick
    EXPECT_LT(now, after + 2);
}

} // namespace
} // namespace ombrel

#include "platform/RealText.h"

#include <bit>
#include <charconv>
#include <cmath>
#include <gtest/gtest.h>
#include <random>
#include <string>

namespace ombrel {
namespace {

std::string realText(double value) {
    char text[longestRealText];
    return {text, writeReal(value, text)};
}

std::string standardText(double value) {
    char text[64];
    return {text, std::to_chars(text, text + sizeof text, value).ptr};
}

TEST(WriteReal, WritesWhatTheStandardLibraryWrites) {
    for (const double value : {0.0,
                               1.0,
                               0.1,
                               0.5,
                               0.25,
                               1.5,
                               123.456,
                               1e-4,
                               1.5e-4,
                               1e-5,
                               1.25e-5,
                               0.001,
                               0.0015,
                               1e5,
                               123456.0,
                               1e15,
                               9007199254740991.0,
                               9007199254740993.0,
                               4503599627370496.5,
                               1e22,
                               1e300,
                               5e-324,
                               2.2250738585072014e-308,
                               1.7976931348623157e308,
                               1.0 / 3,
                               2.0 / 3,
                               0x1p-17,
                               0x1p-18,
                               0x1.fffffffffffffp-18,
                               0x1p-1,
                               0x1.0000000000001p-1}) {
        EXPECT_EQ(realText(value), standardText(value));
        EXPECT_EQ(realText(-value), standardText(-value));
    }
}

TEST(WriteReal, WritesTheSameForNumbersOfEverySize) {
    std::mt19937_64 random(11);
    std::uniform_real_distribution<double> power(-20, 20);
    for (int i = 0; i < 300'000; ++i) {
        const double wild = std::bit_cast<double>(random());
        const double usual = std::exp2(power(random)) * (i % 2 == 0 ? 1 : -1);
        const double narrow = static_cast<float>(usual);
        const double decimal = std::round(usual * 1e4) / 1e4;
        const double edge = std::exp2(i % 90 - 40);
        for (const double value : {std::isfinite(wild) ? wild : 0, usual, narrow, decimal, edge,
                                   std::nextafter(edge, 0), std::nextafter(edge, 1e9)}) {
            ASSERT_EQ(realText(value), standardText(value));
        }
    }
}

} // namespace
} // namespace ombrel

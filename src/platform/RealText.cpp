#include "platform/RealText.h"

#include <array>
#include <bit>
#include <charconv>
#include <cstdint>
#include <cstring>

// The digits are found by the method of Raffaello Giulietti, "The Schubfach way to render doubles"
// (2020), here for exponents whose powers of ten are exact in 128 bits.
namespace ombrel {

namespace {

__extension__ using Wide = unsigned __int128;

constexpr int significandBits = 52;
constexpr int exponentBias = 1023 + significandBits;
constexpr int largestPower = 24;

// 10 to the powers from 0, shifted up until the top bit is set.
constexpr auto powersOfTen = [] {
    std::array<Wide, largestPower + 1> powers{};
    Wide power = 1;
    for (Wide& shifted : powers) {
        shifted = power;
        while (shifted >> 127 == 0) {
            shifted <<= 1;
        }
        power *= 10;
    }
    return powers;
}();

struct Decimal {
    std::uint64_t digits; // without zeros at the end
    int exponent;         // of ten
};

constexpr int floorLog2OfPowerOfTen(int exponent) {
    return (exponent * 1741647) >> 19;
}

// The top of a product, with its last bit set when there is anything below.
std::uint64_t roundedToOdd(Wide power, std::uint64_t factor) {
    const Wide low = Wide{static_cast<std::uint64_t>(power)} * factor;
    const Wide product = Wide{static_cast<std::uint64_t>(power >> 64)} * factor + (low >> 64);
    return static_cast<std::uint64_t>(product >> 64) |
           static_cast<std::uint64_t>(static_cast<std::uint64_t>(product) > 1);
}

// The shortest decimal within what rounds to `significand` times 2 to the `exponent`, and of those
// the closest.
Decimal shortest(std::uint64_t significand, int exponent, bool isLowerGapSmaller) {
    const int k = (exponent * 1262611 - (isLowerGapSmaller ? 524031 : 0)) >> 22;
    const int shift = exponent + floorLog2OfPowerOfTen(-k) + 1;
    const Wide power = powersOfTen[static_cast<std::size_t>(-k)];
    const std::uint64_t value = 4 * significand;
    const std::uint64_t isOdd = significand & 1;
    const std::uint64_t lower =
        roundedToOdd(power, (value - 2 + (isLowerGapSmaller ? 1 : 0)) << shift) + isOdd;
    const std::uint64_t middle = roundedToOdd(power, value << shift);
    const std::uint64_t upper = roundedToOdd(power, (value + 2) << shift) - isOdd;

    const std::uint64_t floor = middle / 4;
    const std::uint64_t tens = floor / 10;
    const bool isTensIn = lower <= 40 * tens;
    const bool isNextTensIn = 40 * tens + 40 <= upper;
    if (isTensIn != isNextTensIn) {
        return {tens + (isNextTensIn ? 1 : 0), k + 1};
    }
    const bool isFloorIn = lower <= 4 * floor;
    const bool isCeilingIn = 4 * floor + 4 <= upper;
    if (isFloorIn != isCeilingIn) {
        return {floor + (isCeilingIn ? 1 : 0), k};
    }
    const std::uint64_t half = 4 * floor + 2;
    const bool roundsUp = middle > half || (middle == half && (floor & 1) != 0);
    return {floor + (roundsUp ? 1 : 0), k};
}

constexpr auto digitPairs = [] {
    std::array<char, 200> pairs{};
    for (std::size_t i = 0; i < 100; ++i) {
        pairs[2 * i] = static_cast<char>('0' + i / 10);
        pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
    return pairs;
}();

void writePair(std::uint32_t pair, char* to) {
    std::memcpy(to, digitPairs.data() + 2 * pair, 2);
}

void writeEight(std::uint32_t digits, char* to) {
    const std::uint32_t high = digits / 10000;
    const std::uint32_t low = digits % 10000;
    writePair(high / 100, to);
    writePair(high % 100, to + 2);
    writePair(low / 100, to + 4);
    writePair(low % 100, to + 6);
}

// The digits end in front of `end`, and there is room for 20. Returns where they start.
char* writeDigits(std::uint64_t digits, char* end) {
    constexpr std::uint32_t eightDigits = 100'000'000;
    while (digits >= eightDigits) {
        end -= 8;
        writeEight(static_cast<std::uint32_t>(digits % eightDigits), end);
        digits /= eightDigits;
    }
    auto rest = static_cast<std::uint32_t>(digits);
    while (rest >= 100) {
        end -= 2;
        writePair(rest % 100, end);
        rest /= 100;
    }
    if (rest >= 10) {
        end -= 2;
        writePair(rest, end);
    } else {
        *--end = static_cast<char>('0' + rest);
    }
    return end;
}

} // namespace

char* writeReal(double value, char* to) {
    const auto bits = std::bit_cast<std::uint64_t>(value);
    const std::uint64_t fraction = bits & ((std::uint64_t{1} << significandBits) - 1);
    const int biased = static_cast<int>(bits >> significandBits) & 0x7ff;
    const int exponent = biased - exponentBias;
    const std::uint64_t significand = fraction | (std::uint64_t{1} << significandBits);
    constexpr int least = -69; // 2 to the -17 and more
    if (exponent < least || exponent >= 0 ||
        (significand & ((std::uint64_t{1} << (-exponent > 52 ? 52 : -exponent)) - 1)) == 0) {
        return std::to_chars(to, to + longestRealText, value).ptr; // whole numbers among them
    }
    Decimal decimal = shortest(significand, exponent, fraction == 0);
    while (decimal.digits % 10 == 0) {
        decimal.digits /= 10;
        ++decimal.exponent;
    }
    // Copies have a fixed size, which is fast: what is too much is written over or left behind.
    constexpr std::size_t room = 20;
    char text[2 * room] = {};
    const char* digits = writeDigits(decimal.digits, text + room);
    const int count = static_cast<int>(text + room - digits);
    const int whole = count + decimal.exponent; // digits in front of the point
    if (whole < -2 - (count > 1 ? 1 : 0)) {     // shorter with an exponent
        return std::to_chars(to, to + longestRealText, value).ptr;
    }
    *to = '-';
    to += bits >> 63;
    if (whole <= 0) {
        std::memcpy(to, "0.000", 5);
        to += 2 - whole;
        std::memcpy(to, digits, room);
        return to + count;
    }
    std::memcpy(to, digits, room);
    to[whole] = '.';
    std::memcpy(to + whole + 1, digits + whole, room);
    return to + count + 1;
}

} // namespace ombrel

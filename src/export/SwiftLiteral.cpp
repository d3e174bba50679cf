#include "export/SwiftLiteral.h"

#include "platform/Text.h"

#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>

namespace ombrel {

namespace {

// What stands for the byte in a literal, after the backslash; 0 for a byte that stands for itself.
constexpr char escapeOf(char byte) {
    switch (byte) {
    case '\r':
        return 'r';
    case '\n':
        return 'n';
    case '\t':
        return 't';
    case '"':
    case '\\':
        return byte;
    default:
        return 0;
    }
}

// The size of the text's number, rounded to the 64 bits of precision of a Swift literal on x86-64.
long double readExtended(std::string_view text) {
    // Digits that fit into 64 bits, divided by a power of ten that does so too, are rounded once.
    static constexpr auto powers = [] {
        std::array<long double, 28> values{};
        values[0] = 1;
        for (std::size_t i = 1; i < values.size(); ++i) {
            values[i] = values[i - 1] * 10;
        }
        return values;
    }();
    constexpr std::uint64_t mostDigits = 1'000'000'000'000'000'000;
    std::uint64_t digits = 0;
    std::size_t decimals = 0;
    bool isBehindPoint = false;
    long double number = 0;
    for (const char c : text) {
        if (c == '.') {
            isBehindPoint = true;
        } else if (c != '-') {
            if (c == 'e' || digits >= mostDigits || decimals + 1 == powers.size()) {
                std::from_chars(text.data(), text.data() + text.size(), number);
                return std::abs(number);
            }
            digits = digits * 10 + static_cast<std::uint64_t>(c - '0');
            decimals += isBehindPoint ? 1 : 0;
        }
    }
    return static_cast<long double>(digits) / powers[decimals];
}

double roundedTwice(long double number) {
    if constexpr (std::numeric_limits<long double>::digits > 64) {
        int exponent = 0;
        const long double fraction = std::frexp(number, &exponent);
        number = std::ldexp(std::rint(std::ldexp(fraction, 64)), exponent - 64);
    }
    return static_cast<double>(number);
}

bool readsBack(std::string_view text, double number) {
    // A number with an even last bit is what a tie between it and its neighbour is rounded to. So
    // are all those that were in single precision.
    return (std::bit_cast<std::uint64_t>(number) & 1) == 0 ||
           roundedTwice(readExtended(text)) == std::abs(number);
}

// The power of ten of the first digit.
int decimalExponent(double number) {
    char text[32];
    const auto end = std::to_chars(text, text + sizeof text, number, std::chars_format::scientific);
    const std::string_view whole(text, static_cast<std::size_t>(end.ptr - text));
    std::size_t start = whole.find('e') + 1;
    start += whole[start] == '+' ? 1 : 0;
    int exponent = 0;
    std::from_chars(text + start, end.ptr, exponent);
    return exponent;
}

} // namespace

void appendSwiftEscaped(std::string& source, std::string_view text) {
    std::string repaired;
    if (!isAscii(text) && !isValidUtf8(text)) {
        repaired = repairUtf8(text);
        text = repaired;
    }
    std::size_t copied = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (const char escape = escapeOf(text[i])) {
            source.append(text, copied, i - copied);
            source += '\\';
            source += escape;
            copied = i + 1;
        }
    }
    source.append(text, copied);
}

std::string swiftStringEscape(std::string_view text) {
    std::string escaped;
    escaped.reserve(text.size());
    appendSwiftEscaped(escaped, text);
    return escaped;
}

std::optional<char> firstRefusedCharacter(std::string_view text) {
    for (const char byte : text) {
        const auto value = static_cast<unsigned char>(byte);
        if ((value < 0x20 && value != 0 && escapeOf(byte) == 0) || value == 0x7f) {
            return byte;
        }
    }
    return std::nullopt;
}

void appendSwiftDouble(std::string& source, double number) {
    if (!std::isfinite(number)) {
        source += std::isnan(number) ? ".nan" : number > 0 ? ".infinity" : "-.infinity";
        return;
    }
    // The range in which Swift prints numbers without an exponent.
    const double size = std::abs(number);
    const bool isPlain = number == 0 || (size >= 1e-4 && size < 0x1p54);
    const auto format = isPlain ? std::chars_format::fixed : std::chars_format::scientific;
    char text[32];
    auto end = std::to_chars(text, text + sizeof text, number, format);
    if (!readsBack({text, static_cast<std::size_t>(end.ptr - text)}, number)) {
        // 17 digits are never near the middle between two numbers.
        constexpr int digits = 17;
        const int precision = isPlain ? digits - 1 - decimalExponent(number) : digits - 1;
        end = std::to_chars(text, text + sizeof text, number, format, precision);
    }
    const std::string_view written(text, static_cast<std::size_t>(end.ptr - text));
    source += written;
    if (isPlain && written.find('.') == std::string_view::npos) {
        source += ".0";
    }
}

} // namespace ombrel

#include "export/SwiftLiteral.h"

#include "platform/Text.h"

#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>

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

// The text's number, rounded to the 64 bits of precision of a Swift literal on x86-64.
long double readExtended(std::string_view text) {
    long double number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    int exponent = 0;
    const long double fraction = std::frexp(number, &exponent);
    return std::ldexp(std::rint(std::ldexp(fraction, 64)), exponent - 64);
}

bool readsBack(std::string_view text, double number) {
    // A number with an even last bit is what a tie between it and its neighbour is rounded to. So
    // are all those that were in single precision.
    return (std::bit_cast<std::uint64_t>(number) & 1) == 0 ||
           static_cast<double>(readExtended(text)) == number;
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

#pragma once

#include <optional>
#include <string>
#include <string_view>

// Values as Swift source.
namespace ombrel {

// The text as it stands between the quotes of a string literal: carriage return, line feed, tab,
// double quote and backslash are escaped, all else is as it was. Invalid UTF-8 becomes U+FFFD.
std::string swiftStringEscape(std::string_view text);
// The same, at the end of `source`.
void appendSwiftEscaped(std::string& source, std::string_view text);

// The first character that `swiftStringEscape` leaves as it is and the compiler refuses in a
// literal: a control character below U+0020 other than NUL, or U+007F. NUL is let through with a
// warning.
std::optional<char> firstRefusedCharacter(std::string_view text);

// The shortest decimal text that a Swift compiler reads as exactly this number, laid out as Swift
// prints numbers: "1.0", "0.1", "1e-05", ".infinity", ".nan". On x86-64 the compiler rounds a
// literal to 64 bits of precision first and to 53 then; where the shortest text would thus become
// another number there are as many digits as that takes.
void appendSwiftDouble(std::string& source, double number);

} // namespace ombrel

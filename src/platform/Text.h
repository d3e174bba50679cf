#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// All Unicode work. Strings are UTF-8. A character is an extended grapheme cluster. Every
// operation accepts any bytes: an invalid sequence reads as U+FFFD, one for each maximal subpart,
// and is never a crash. All functions may be called from any thread.
namespace ombrel {

bool isAscii(std::string_view text);
bool isValidUtf8(std::string_view text);
// The text with each invalid sequence replaced by U+FFFD.
std::string repairUtf8(std::string_view text);
// The text without a byte order mark at its start.
std::string_view withoutByteOrderMark(std::string_view text);

// The number of characters.
std::size_t characterCount(std::string_view text);
// The number of bytes that the first `characters` characters take; the whole length when there are
// fewer.
std::size_t prefixLength(std::string_view text, std::size_t characters);
inline std::string_view firstCharacters(std::string_view text, std::size_t characters) {
    return text.substr(0, prefixLength(text, characters));
}
// The last `characters` characters; the whole text when it has fewer.
std::string_view lastCharacters(std::string_view text, std::size_t characters);

// The classes, by scalar. `whitespaces`: U+0009 and general category Zs. `newlines`: LF, VT, FF,
// CR, NEL, U+2028, U+2029. `whitespacesAndNewlines`: both.
bool isWhitespace(char32_t scalar);
bool isNewline(char32_t scalar);

std::string_view trimWhitespaces(std::string_view text);
std::string_view trimWhitespacesAndNewlines(std::string_view text);
// Only U+0020 and U+0009.
std::string_view trimBlanksAndTabs(std::string_view text);

// Splits at every scalar of the class `newlines`; CR LF gives an empty line between. There is
// always one more piece than separators, so the empty text gives one empty piece.
std::vector<std::string_view> splitNewlines(std::string_view text);

// Walks the pieces of `splitNewlines` without an array of them. The text must outlive the cursor.
class LineCursor {
  public:
    explicit LineCursor(std::string_view text) : m_rest(text) {}
    // The next piece; nothing after the last.
    std::optional<std::string_view> next();

  private:
    std::optional<std::string_view> m_rest;
};

// Lower case scalar by scalar, without context: a capital sigma at the end of a word gives the
// ordinary small sigma, U+0130 gives i and U+0307.
std::string lowercased(std::string_view text);

// Equality of strings: canonical equivalence.
bool canonicallyEqual(std::string_view a, std::string_view b);
// A key under which canonically equivalent strings are the same bytes (NFC). Of 2 GiB and more only
// the bytes count.
std::string canonicalKey(std::string_view text);

// Of a character, told by its first scalar. A letter has the property Alphabetic; a number has a
// numeric type.
bool isLetter(char32_t firstScalar);
bool isNumber(char32_t firstScalar);
// Of the general categories L, M and N.
bool isAlphanumeric(char32_t scalar);
// Of the general category L, or N.
bool hasLetterCategory(char32_t scalar);
bool hasNumberCategory(char32_t scalar);
// Has the property White_Space; newlines are among them.
bool hasWhiteSpaceProperty(char32_t scalar);

// The scalar that starts at `offset`, with the number of bytes it takes; U+FFFD with the length of
// the maximal subpart when the bytes there are not valid. `offset` is less than the length.
struct DecodedScalar {
    char32_t scalar = 0;
    std::size_t length = 0;
};
DecodedScalar decodeScalar(std::string_view text, std::size_t offset);
void appendScalar(std::string& text, char32_t scalar);

// Walks the characters of a text from its start. The text must outlive the cursor.
class CharacterCursor {
  public:
    explicit CharacterCursor(std::string_view text);
    // The next character, or an empty view at the end.
    std::string_view next();
    // Where the next character starts, in bytes.
    std::size_t offset() const { return m_offset; }

  private:
    std::string_view m_text;
    std::size_t m_offset = 0;
};

std::string join(const std::vector<std::string>& parts, std::string_view separator);

} // namespace ombrel

#include "platform/Text.h"

#include "platform/CharacterBreaks.h"
#include "platform/NewerScalars.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <limits>
#include <unicode/bytestream.h>
#include <unicode/normalizer2.h>
#include <unicode/stringpiece.h>
#include <unicode/uchar.h>

namespace ombrel {

namespace {

constexpr char32_t replacement = 0xfffd;

// Eight bytes at a time. In the words below the high bit of each byte tells something about that
// byte; the lowest one set is exact, those above it need not be.
constexpr std::uint64_t everyByte(unsigned char byte) {
    return 0x0101010101010101U * byte;
}
constexpr std::uint64_t highBits = everyByte(0x80);

std::uint64_t loadWord(const char* bytes) {
    std::uint64_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    if constexpr (std::endian::native == std::endian::big) {
        word = __builtin_bswap64(word);
    }
    return word;
}
constexpr std::uint64_t bytesEqualTo(std::uint64_t word, unsigned char byte) {
    const std::uint64_t difference = word ^ everyByte(byte);
    return (difference - everyByte(1)) & ~difference & highBits;
}
std::size_t firstMarked(std::uint64_t marks) {
    return static_cast<std::size_t>(std::countr_zero(marks)) / 8;
}

bool isAsciiByte(char byte) {
    return static_cast<unsigned char>(byte) < 0x80;
}

// The scalar at `offset` when it is not ASCII, its bytes are valid, and the text does not end
// within four bytes; else its length is 0.
inline DecodedScalar decodeQuickly(std::string_view text, std::size_t offset) {
    if (text.size() - offset < 4) {
        return {};
    }
    const auto byteAt = [&](std::size_t i) -> char32_t {
        return static_cast<unsigned char>(text[offset + i]);
    };
    const auto continues = [&](std::size_t i) { return (byteAt(i) & 0xc0) == 0x80; };
    const char32_t first = byteAt(0);
    if (first < 0xe0) {
        const char32_t scalar = ((first & 0x1f) << 6) | (byteAt(1) & 0x3f);
        return first >= 0xc2 && continues(1) ? DecodedScalar{scalar, 2} : DecodedScalar{};
    }
    if (first < 0xf0) {
        const char32_t scalar =
            ((first & 0x0f) << 12) | ((byteAt(1) & 0x3f) << 6) | (byteAt(2) & 0x3f);
        const bool valid =
            continues(1) && continues(2) && scalar >= 0x800 && (scalar & 0xf800) != 0xd800;
        return valid ? DecodedScalar{scalar, 3} : DecodedScalar{};
    }
    return {};
}

// The length of the run from `offset` on, but not beyond `end`, of bytes that are each a character
// when they stand among themselves: ASCII without CR.
std::size_t plainRunLength(std::string_view text, std::size_t offset, std::size_t end) {
    std::size_t i = offset;
    for (; i + sizeof(std::uint64_t) <= end; i += sizeof(std::uint64_t)) {
        const std::uint64_t word = loadWord(text.data() + i);
        const std::uint64_t others = (word & highBits) | bytesEqualTo(word, '\r');
        if (others != 0) {
            return i + firstMarked(others) - offset;
        }
    }
    while (i < end && isAsciiByte(text[i]) && text[i] != '\r') {
        ++i;
    }
    return i - offset;
}

struct Walked {
    std::size_t offset = 0;     // where the next character starts
    std::size_t characters = 0; // that were passed
};

// From `offset`, where a character starts, over at most `limit` characters.
Walked walkCharacters(std::string_view text, std::size_t offset, std::size_t limit) {
    std::size_t characters = 0;
    std::size_t i = offset;
    BreakState state = BreakState::afterControl; // a character starts here, whatever comes
    while (i < text.size()) {
        const bool plain = isAsciiByte(text[i]) && text[i] != '\r';
        DecodedScalar decoded{static_cast<unsigned char>(text[i]), 1};
        if (!isAsciiByte(text[i])) {
            decoded = decodeQuickly(text, i);
            if (decoded.length == 0) {
                decoded = decodeScalar(text, i);
            }
        }
        const BreakClass scalarClass = breakClass(decoded.scalar);
        if (state == BreakState::afterOther && scalarClass == BreakClass::other) {
            // Most of all text, and easily guessed.
            if (characters == limit) {
                return {i, characters};
            }
            ++characters;
        } else {
            const BreakStep step = breakStep(state, scalarClass);
            if (characters == limit && step.breaksBefore) {
                return {i, characters};
            }
            characters += step.breaksBefore ? 1 : 0;
            state = step.next;
        }
        i += decoded.length;
        if (!plain || i == text.size() || !isAsciiByte(text[i])) {
            continue;
        }
        const std::size_t most = std::min(text.size() - i, limit - characters);
        const std::size_t run = plainRunLength(text, i, i + most);
        if (run > 0) {
            i += run;
            characters += run;
            state = breakStep(BreakState::afterControl,
                              breakClass(static_cast<unsigned char>(text[i - 1])))
                        .next;
        }
    }
    return {text.size(), characters};
}

// The last place up to `offset` where a character starts whatever is before: at a scalar that joins
// nothing by itself, after one that joins nothing behind it.
std::size_t certainBoundary(std::string_view text, std::size_t offset) {
    const auto startsScalar = [&](std::size_t i) {
        return (static_cast<unsigned char>(text[i]) & 0xc0) != 0x80;
    };
    for (std::size_t i = offset; i > 0; --i) {
        if (!startsScalar(i) || breakClass(decodeScalar(text, i).scalar) != BreakClass::other) {
            continue;
        }
        std::size_t before = i - 1;
        while (before > 0 && !startsScalar(before)) {
            --before;
        }
        const DecodedScalar decoded = decodeScalar(text, before);
        // Where invalid bytes are in between, the scalar before is a U+FFFD, which joins nothing.
        if (before + decoded.length != i || breakClass(decoded.scalar) != BreakClass::prepend) {
            return i;
        }
    }
    return 0;
}

// The length in bytes of the scalar of `isMember` at the end of the text, 0 when there is none.
// What the classes below hold takes one to three bytes, and the first byte of a sequence is never
// inside another one.
template <class IsMember>
std::size_t memberLengthAtEnd(std::string_view text, IsMember isMember) {
    for (std::size_t length = 1; length <= std::min<std::size_t>(text.size(), 3); ++length) {
        const DecodedScalar decoded = decodeScalar(text, text.size() - length);
        if (decoded.length == length && decoded.scalar != replacement) {
            return isMember(decoded.scalar) ? length : 0;
        }
    }
    return 0;
}

template <class IsMember>
std::string_view trim(std::string_view text, IsMember isMember) {
    while (!text.empty()) {
        const DecodedScalar decoded = decodeScalar(text, 0);
        if (!isMember(decoded.scalar)) {
            break;
        }
        text.remove_prefix(decoded.length);
    }
    while (const std::size_t length = memberLengthAtEnd(text, isMember)) {
        text.remove_suffix(length);
    }
    return text;
}

// Where the first newline from `offset` on starts; the length of the text when there is none.
std::size_t findNewline(std::string_view text, std::size_t offset) {
    std::size_t i = offset;
    while (i < text.size()) {
        // LF to CR are neighbours; the other newlines start with the bytes C2 or E2.
        for (; i + sizeof(std::uint64_t) <= text.size(); i += sizeof(std::uint64_t)) {
            const std::uint64_t word = loadWord(text.data() + i);
            const std::uint64_t low = word & ~highBits;
            const std::uint64_t fromLF = low + everyByte(0x80 - '\n');
            const std::uint64_t overCR = low + everyByte(0x7f - '\r');
            const std::uint64_t marks = (fromLF & ~overCR & ~word & highBits) |
                                        bytesEqualTo(word, 0xc2) | bytesEqualTo(word, 0xe2);
            if (marks != 0) {
                i += firstMarked(marks);
                break;
            }
        }
        if (i < text.size()) {
            const DecodedScalar decoded = decodeScalar(text, i);
            if (isNewline(decoded.scalar)) {
                return i;
            }
            i += decoded.length;
        }
    }
    return text.size();
}

} // namespace

bool isAscii(std::string_view text) {
    std::size_t i = 0;
    for (; i + sizeof(std::uint64_t) <= text.size(); i += sizeof(std::uint64_t)) {
        if ((loadWord(text.data() + i) & highBits) != 0) {
            return false;
        }
    }
    return std::all_of(text.begin() + static_cast<std::ptrdiff_t>(i), text.end(), isAsciiByte);
}

bool isValidUtf8(std::string_view text) {
    for (std::size_t i = 0; i < text.size();) {
        std::uint64_t word = 0; // eight bytes at once where all are ASCII
        if (text.size() - i >= sizeof word) {
            std::memcpy(&word, text.data() + i, sizeof word);
            if ((word & 0x8080808080808080U) == 0) {
                i += sizeof word;
                continue;
            }
        }
        const DecodedScalar decoded = decodeScalar(text, i);
        // The replacement character itself takes three bytes, and an invalid sequence may do so.
        if (decoded.scalar == replacement && text.substr(i, decoded.length) != "\xef\xbf\xbd") {
            return false;
        }
        i += decoded.length;
    }
    return true;
}

std::string repairUtf8(std::string_view text) {
    std::string repaired;
    repaired.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) {
        const DecodedScalar decoded = decodeScalar(text, i);
        appendScalar(repaired, decoded.scalar);
        i += decoded.length;
    }
    return repaired;
}

std::string_view withoutByteOrderMark(std::string_view text) {
    if (text.starts_with("\xef\xbb\xbf")) {
        text.remove_prefix(3);
    }
    return text;
}

std::size_t characterCount(std::string_view text) {
    return walkCharacters(text, 0, std::numeric_limits<std::size_t>::max()).characters;
}

std::size_t prefixLength(std::string_view text, std::size_t characters) {
    // Even a text of as many bytes has no more characters.
    return characters >= text.size() ? text.size() : walkCharacters(text, 0, characters).offset;
}

std::string_view lastCharacters(std::string_view text, std::size_t characters) {
    if (characters == 0) {
        return text.substr(text.size());
    }
    // From a boundary far enough before the end; mostly a character takes no more than two bytes.
    std::size_t reach = 2 * std::min(characters, text.size());
    while (reach < text.size()) {
        const std::size_t start = certainBoundary(text, text.size() - reach);
        const std::string_view end = text.substr(start);
        const std::size_t count = characterCount(end);
        if (count >= characters) {
            return end.substr(prefixLength(end, count - characters));
        }
        reach = 2 * end.size();
    }
    const std::size_t count = characterCount(text);
    return characters >= count ? text : text.substr(prefixLength(text, count - characters));
}

bool isWhitespace(char32_t scalar) {
    if (scalar < 0x80) {
        return scalar == ' ' || scalar == '\t';
    }
    return u_charType(static_cast<UChar32>(scalar)) == U_SPACE_SEPARATOR;
}

bool isNewline(char32_t scalar) {
    return (scalar >= '\n' && scalar <= '\r') || scalar == 0x85 || scalar == 0x2028 ||
           scalar == 0x2029;
}

std::string_view trimWhitespaces(std::string_view text) {
    return trim(text, isWhitespace);
}

std::string_view trimWhitespacesAndNewlines(std::string_view text) {
    return trim(text, [](char32_t scalar) { return isWhitespace(scalar) || isNewline(scalar); });
}

std::string_view trimBlanksAndTabs(std::string_view text) {
    return trim(text, [](char32_t scalar) { return scalar == ' ' || scalar == '\t'; });
}

std::optional<std::string_view> LineCursor::next() {
    if (!m_rest) {
        return std::nullopt;
    }
    const std::size_t end = findNewline(*m_rest, 0);
    const std::string_view line = m_rest->substr(0, end);
    if (end == m_rest->size()) {
        m_rest.reset();
    } else {
        m_rest->remove_prefix(end + decodeScalar(*m_rest, end).length);
    }
    return line;
}

std::vector<std::string_view> splitNewlines(std::string_view text) {
    std::vector<std::string_view> lines;
    LineCursor cursor(text);
    while (const auto line = cursor.next()) {
        lines.push_back(*line);
    }
    return lines;
}

std::string lowercased(std::string_view text) {
    std::string lower;
    lower.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) {
        if (isAsciiByte(text[i])) {
            const char byte = text[i++];
            lower += byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte + ('a' - 'A')) : byte;
            continue;
        }
        const DecodedScalar decoded = decodeScalar(text, i);
        i += decoded.length;
        if (decoded.scalar == 0x130) {
            lower += "i\xcc\x87"; // the only scalar whose lower case by itself is two scalars
        } else {
            const char32_t scalar = newerLowercase(decoded.scalar);
            appendScalar(lower, static_cast<char32_t>(u_tolower(static_cast<UChar32>(scalar))));
        }
    }
    return lower;
}

bool canonicallyEqual(std::string_view a, std::string_view b) {
    if (a == b) {
        return true;
    }
    if (isAscii(a) && isAscii(b)) {
        return false;
    }
    return canonicalKey(a) == canonicalKey(b);
}

std::string canonicalKey(std::string_view text) {
    std::string repaired;
    if (isAscii(text)) {
        return std::string(text);
    }
    if (!isValidUtf8(text)) {
        repaired = repairUtf8(text);
        text = repaired;
    }
    if (text.size() > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max())) {
        return std::string(text);
    }
    UErrorCode error = U_ZERO_ERROR;
    const icu::Normalizer2* nfc = icu::Normalizer2::getNFCInstance(error);
    const icu::StringPiece piece(text.data(), static_cast<std::int32_t>(text.size()));
    std::string key;
    icu::StringByteSink<std::string> sink(&key);
    if (U_SUCCESS(error) && !nfc->isNormalizedUTF8(piece, error)) {
        nfc->normalizeUTF8(0, piece, sink, nullptr, error);
        return U_SUCCESS(error) ? key : std::string(text);
    }
    return std::string(text);
}

bool isLetter(char32_t firstScalar) {
    return u_isUAlphabetic(static_cast<UChar32>(firstScalar)) != 0 || isNewerLetter(firstScalar);
}

bool isNumber(char32_t firstScalar) {
    return u_getIntPropertyValue(static_cast<UChar32>(firstScalar), UCHAR_NUMERIC_TYPE) !=
               U_NT_NONE ||
           isNewerNumber(firstScalar);
}

bool isAlphanumeric(char32_t scalar) {
    return (U_GET_GC_MASK(static_cast<UChar32>(scalar)) &
            (U_GC_L_MASK | U_GC_M_MASK | U_GC_N_MASK)) != 0;
}

bool hasLetterCategory(char32_t scalar) {
    return (U_GET_GC_MASK(static_cast<UChar32>(scalar)) & U_GC_L_MASK) != 0;
}

bool hasNumberCategory(char32_t scalar) {
    return (U_GET_GC_MASK(static_cast<UChar32>(scalar)) & U_GC_N_MASK) != 0;
}

bool hasWhiteSpaceProperty(char32_t scalar) {
    return u_isUWhiteSpace(static_cast<UChar32>(scalar)) != 0;
}

DecodedScalar decodeScalar(std::string_view text, std::size_t offset) {
    const auto byteAt = [&](std::size_t i) -> unsigned {
        return offset + i < text.size() ? static_cast<unsigned char>(text[offset + i]) : 0;
    };
    const unsigned first = byteAt(0);
    if (first < 0x80) {
        return {first, 1};
    }
    // The range of the second byte depends on the first: no overlong forms, no surrogates, nothing
    // over U+10FFFF.
    unsigned lowest = 0x80;
    unsigned highest = 0xbf;
    std::size_t length = 0;
    if (first >= 0xc2 && first <= 0xdf) {
        length = 2;
    } else if ((first & 0xf0) == 0xe0) {
        length = 3;
        lowest = first == 0xe0 ? 0xa0 : lowest;
        highest = first == 0xed ? 0x9f : highest;
    } else if (first >= 0xf0 && first <= 0xf4) {
        length = 4;
        lowest = first == 0xf0 ? 0x90 : lowest;
        highest = first == 0xf4 ? 0x8f : highest;
    } else {
        return {replacement, 1};
    }
    const unsigned second = byteAt(1);
    if (second < lowest || second > highest) {
        return {replacement, 1};
    }
    char32_t scalar = ((first & (0xffU >> (length + 1))) << 6) | (second & 0x3f);
    for (std::size_t i = 2; i < length; ++i) {
        const unsigned next = byteAt(i);
        if ((next & 0xc0) != 0x80) {
            return {replacement, i};
        }
        scalar = (scalar << 6) | (next & 0x3f);
    }
    return {scalar, length};
}

void appendScalar(std::string& text, char32_t scalar) {
    const auto append = [&](char32_t byte) { text += static_cast<char>(byte); };
    if (scalar < 0x80) {
        append(scalar);
    } else if (scalar < 0x800) {
        append(0xc0 | (scalar >> 6));
        append(0x80 | (scalar & 0x3f));
    } else if (scalar < 0x10000) {
        append(0xe0 | (scalar >> 12));
        append(0x80 | ((scalar >> 6) & 0x3f));
        append(0x80 | (scalar & 0x3f));
    } else {
        append(0xf0 | (scalar >> 18));
        append(0x80 | ((scalar >> 12) & 0x3f));
        append(0x80 | ((scalar >> 6) & 0x3f));
        append(0x80 | (scalar & 0x3f));
    }
}

CharacterCursor::CharacterCursor(std::string_view text) : m_text(text) {}

std::string_view CharacterCursor::next() {
    const std::size_t start = m_offset;
    if (start < m_text.size()) {
        m_offset = walkCharacters(m_text, start, 1).offset;
    }
    return m_text.substr(start, m_offset - start);
}

std::string join(const std::vector<std::string>& parts, std::string_view separator) {
    std::string joined;
    for (const std::string& part : parts) {
        if (&part != &parts.front()) {
            joined += separator;
        }
        joined += part;
    }
    return joined;
}

} // namespace ombrel

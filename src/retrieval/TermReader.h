#pragma once

#include "platform/Text.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace ombrel {

// Cuts texts into terms: the runs of characters that are letters or numbers, told by the first
// scalar of each, in the text after lower-casing. Keeps its buffers from text to text.
class TermReader {
  public:
    // Calls `take(std::string_view term)` for each term of the text in order. The view is good
    // during the call only.
    template <class Take>
    void read(std::string_view text, Take&& take);

    // The key under which canonically equivalent terms are the same bytes.
    static std::string_view key(std::string_view term, std::string& storage) {
        if (isAscii(term)) {
            return term;
        }
        storage = canonicalKey(term);
        return storage;
    }

  private:
    // The lower case of an ASCII letter or digit; 0 for every other byte. Without branches, so that
    // the compiler can do many bytes at once.
    static char word(char byte) {
        const auto lower = static_cast<unsigned char>(byte | 0x20);
        const auto fromA = static_cast<unsigned char>(lower - 'a');
        const auto from0 = static_cast<unsigned char>(byte - '0');
        const char letter = static_cast<char>(fromA < 26 ? lower : 0);
        return static_cast<char>(from0 < 10 ? byte : letter);
    }
    static bool isAsciiByte(char byte) { return static_cast<unsigned char>(byte) < 0x80; }

    // A stretch of a text that can be cut by itself.
    struct Stretch {
        std::size_t begin = 0;
        std::size_t end = 0;
    };
    // The first stretch from `offset` on that holds bytes other than ASCII, with all that could
    // make one character or one term with them; empty at the end of the text when there is none.
    static Stretch nextMixed(std::string_view text, std::size_t offset);

    template <class Take>
    void readAscii(std::string_view text, Take&& take);
    template <class Take>
    void readMixed(std::string_view text, Take&& take);

    std::string m_buffer;
};

template <class Take>
void TermReader::read(std::string_view text, Take&& take) {
    for (std::size_t offset = 0; offset < text.size();) {
        const Stretch mixed = nextMixed(text, offset);
        readAscii(text.substr(offset, mixed.begin - offset), take);
        readMixed(text.substr(mixed.begin, mixed.end - mixed.begin), take);
        offset = mixed.end;
    }
}

template <class Take>
void TermReader::readAscii(std::string_view text, Take&& take) {
    m_buffer.resize(text.size() + 1);
    for (std::size_t i = 0; i < text.size(); ++i) {
        m_buffer[i] = word(text[i]);
    }
    m_buffer[text.size()] = 0;
    const char* begin = m_buffer.data();
    const char* const end = begin + text.size();
    while (begin < end) {
        if (*begin == 0) {
            ++begin;
            continue;
        }
        const char* after = begin + 1;
        while (*after != 0) {
            ++after;
        }
        take(std::string_view(begin, static_cast<std::size_t>(after - begin)));
        begin = after + 1;
    }
}

template <class Take>
void TermReader::readMixed(std::string_view text, Take&& take) {
    if (text.empty()) {
        return;
    }
    const std::string lower = lowercased(text);
    CharacterCursor cursor(lower);
    std::size_t begin = 0; // of the term that is being read
    std::size_t end = 0;
    for (std::string_view character = cursor.next(); !character.empty();
         character = cursor.next()) {
        const char32_t first = decodeScalar(character, 0).scalar;
        if (isLetter(first) || isNumber(first)) {
            end = cursor.offset();
            continue;
        }
        if (end > begin) {
            take(std::string_view(lower).substr(begin, end - begin));
        }
        begin = end = cursor.offset();
    }
    if (end > begin) {
        take(std::string_view(lower).substr(begin, end - begin));
    }
}

} // namespace ombrel

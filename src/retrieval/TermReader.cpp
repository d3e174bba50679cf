#include "retrieval/TermReader.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace ombrel {

TermReader::Stretch TermReader::nextMixed(std::string_view text, std::size_t offset) {
    std::size_t i = offset;
    std::uint64_t bytes = 0;
    for (; i + sizeof bytes <= text.size(); i += sizeof bytes) {
        std::memcpy(&bytes, text.data() + i, sizeof bytes);
        if ((bytes & 0x8080808080808080U) != 0) {
            break;
        }
    }
    while (i < text.size() && isAsciiByte(text[i])) {
        ++i;
    }
    if (i == text.size()) {
        return {i, i};
    }
    // Between two ASCII characters there is a boundary (or both are separators, as CR LF are). So
    // the characters around here need one ASCII character before and one after, and the terms
    // need the rest of the words that these belong to.
    std::size_t begin = i;
    if (begin > offset) {
        --begin;
        while (begin > offset && word(text[begin]) != 0 && word(text[begin - 1]) != 0) {
            --begin;
        }
    }
    while (i < text.size() && !isAsciiByte(text[i])) {
        while (i < text.size() && !isAsciiByte(text[i])) {
            ++i;
        }
        i = std::min(i + 1, text.size());
        while (i < text.size() && word(text[i]) != 0) {
            ++i;
        }
    }
    return {begin, i};
}

} // namespace ombrel

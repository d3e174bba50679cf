#include "export/SwiftHighlight.h"

#include <algorithm>
#include <array>

namespace ombrel {

namespace {

constexpr std::array<std::string_view, 46> keywords = {
    "actor",    "as",      "async",   "await",    "break",    "case",      "catch",  "class",
    "continue", "default", "do",      "else",     "enum",     "extension", "false",  "for",
    "func",     "guard",   "if",      "import",   "in",       "init",      "inout",  "is",
    "let",      "nil",     "private", "protocol", "public",   "return",    "self",   "Self",
    "some",     "any",     "static",  "struct",   "switch",   "throw",     "throws", "true",
    "try",      "var",     "where",   "while",    "internal", "super"};

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

// Letters of other scripts count as well: bytes outside of ASCII.
bool isWordPart(char c) {
    return isDigit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' ||
           static_cast<unsigned char>(c) >= 0x80;
}

std::size_t endOfString(std::string_view source, std::size_t begin) {
    constexpr std::string_view fence = "\"\"\"";
    if (source.substr(begin).starts_with(fence)) {
        const std::size_t end = source.find(fence, begin + fence.size());
        return end == std::string_view::npos ? source.size() : end + fence.size();
    }
    for (std::size_t i = begin + 1; i < source.size(); ++i) {
        if (source[i] == '\n') {
            return i;
        }
        if (source[i] == '"') {
            return i + 1;
        }
        i += source[i] == '\\' ? 1 : 0;
    }
    return source.size();
}

std::size_t endOfComment(std::string_view source, std::size_t begin) {
    if (source[begin + 1] == '/') {
        return std::min(source.size(), source.find('\n', begin));
    }
    const std::size_t end = source.find("*/", begin + 2);
    return end == std::string_view::npos ? source.size() : end + 2;
}

SwiftTokenKind kindOfWord(std::string_view word) {
    if (std::ranges::find(keywords, word) != keywords.end()) {
        return SwiftTokenKind::keyword;
    }
    if (isDigit(word[0])) {
        return SwiftTokenKind::number;
    }
    return word[0] >= 'A' && word[0] <= 'Z' ? SwiftTokenKind::type : SwiftTokenKind::plain;
}

} // namespace

std::vector<SwiftToken> highlightSwift(std::string_view source) {
    std::vector<SwiftToken> tokens;
    const auto add = [&](std::size_t begin, std::size_t end, SwiftTokenKind kind) {
        if (kind == SwiftTokenKind::plain && !tokens.empty() && tokens.back().kind == kind) {
            tokens.back().length += end - begin;
        } else {
            tokens.push_back({begin, end - begin, kind});
        }
    };
    for (std::size_t i = 0; i < source.size();) {
        std::size_t end = i + 1;
        SwiftTokenKind kind = SwiftTokenKind::plain;
        if (source[i] == '"') {
            end = endOfString(source, i);
            kind = SwiftTokenKind::string;
        } else if (source[i] == '/' && end < source.size() &&
                   (source[end] == '/' || source[end] == '*')) {
            end = endOfComment(source, i);
            kind = SwiftTokenKind::comment;
        } else if (isWordPart(source[i])) {
            while (end < source.size() && isWordPart(source[end])) {
                end += 1;
            }
            kind = kindOfWord(source.substr(i, end - i));
        }
        add(i, end, kind);
        i = end;
    }
    return tokens;
}

} // namespace ombrel

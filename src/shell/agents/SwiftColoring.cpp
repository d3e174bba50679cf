#include "shell/agents/SwiftColoring.h"

#include "generable/SwiftLexer.h"
#include "generable/SwiftWord.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

namespace ombrel {

namespace {

using Part = SwiftColoring::Part;

// Words of the language that begin or modify no declaration.
constexpr std::array<std::string_view, 20> otherKeywords{
    "any",  "as",  "catch",  "else", "false", "for",    "get",  "guard", "if",    "in",
    "self", "nil", "return", "set",  "some",  "throws", "true", "try",   "where", "while"};

bool isKeyword(std::string_view word) {
    return swiftWord(word) != SwiftWord::none || word.starts_with('#') ||
           std::ranges::find(otherKeywords, word) != otherKeywords.end();
}

bool isBlank(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

} // namespace

SwiftColoring::SwiftColoring(std::string source) : m_source(std::move(source)) {
    m_lineBegins.push_back(0);
    for (std::size_t i = 0; i < m_source.size(); ++i) {
        if (m_source[i] == '\n') {
            m_lineBegins.push_back(static_cast<std::uint32_t>(i + 1));
        }
    }
    read();
}

void SwiftColoring::read() {
    const auto add = [this](std::size_t begin, std::size_t end, Part part) {
        m_stretches.push_back(
            {static_cast<std::uint32_t>(begin), static_cast<std::uint32_t>(end), part});
    };
    std::size_t done = 0;
    // What is between two tokens and is not blank is a comment, which the lexer leaves out.
    const auto addComment = [&](std::size_t end) {
        std::size_t begin = done;
        while (begin < end && isBlank(m_source[begin])) {
            ++begin;
        }
        while (end > begin && isBlank(m_source[end - 1])) {
            --end;
        }
        if (begin < end) {
            add(begin, end, Part::comment);
        }
    };
    SwiftLexer::Stream stream(m_source);
    SwiftLexer::Token token;
    std::optional<std::size_t> at; // where an "@" ended
    while (stream.next(token)) {
        addComment(token.begin);
        const std::string_view word =
            std::string_view(m_source).substr(token.begin, token.end - token.begin);
        switch (token.kind) {
        case SwiftLexer::Kind::identifier:
            if (at == token.begin) {
                add(token.begin - 1, token.end, Part::attribute);
            } else if (isKeyword(word)) {
                add(token.begin, token.end, Part::keyword);
            } else if (!word.empty() && word.front() >= 'A' && word.front() <= 'Z') {
                add(token.begin, token.end, Part::type);
            }
            break;
        case SwiftLexer::Kind::string:
            add(token.begin, token.end, Part::string);
            break;
        case SwiftLexer::Kind::number:
            add(token.begin, token.end, Part::number);
            break;
        case SwiftLexer::Kind::docComment:
            add(token.begin, token.end, Part::comment);
            break;
        case SwiftLexer::Kind::punctuation:
            break;
        }
        at = token.kind == SwiftLexer::Kind::punctuation && word == "@" ? std::optional(token.end)
                                                                        : std::nullopt;
        done = token.end;
    }
    addComment(m_source.size());
}

std::string_view SwiftColoring::line(std::size_t index) const {
    const std::size_t begin = m_lineBegins[index];
    const std::size_t end =
        index + 1 < m_lineBegins.size() ? m_lineBegins[index + 1] - 1 : m_source.size();
    return std::string_view(m_source).substr(begin, end - begin);
}

std::vector<SwiftColoring::Span> SwiftColoring::spansOfLine(std::size_t index) const {
    const std::size_t begin = m_lineBegins[index];
    const std::size_t end = begin + line(index).size();
    std::vector<Span> spans;
    auto stretch = std::ranges::partition_point(
        m_stretches, [&](const Stretch& each) { return each.end <= begin; });
    for (; stretch != m_stretches.end() && stretch->begin < end; ++stretch) {
        spans.push_back({std::max<std::size_t>(stretch->begin, begin) - begin,
                         std::min<std::size_t>(stretch->end, end) - begin, stretch->part});
    }
    return spans;
}

} // namespace ombrel

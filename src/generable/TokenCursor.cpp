#include "generable/TokenCursor.h"

#include <cstdint>

namespace ombrel {

namespace {

// '\0' for anything but punctuation of one byte.
char symbolOf(const SwiftLexer::Token& token) {
    const bool isSymbol = token.kind == SwiftLexer::Kind::punctuation && token.text.size() == 1;
    return isSymbol ? token.text.front() : '\0';
}

} // namespace

TokenCursor::TokenCursor(std::string_view source) : m_stream(source) {
    while (m_count < m_tokens.size() && m_stream.next(m_tokens[m_count])) {
        ++m_count;
    }
}

void TokenCursor::advance() {
    if (m_isRecording) {
        m_recorded.push_back(m_tokens[0]);
    }
    m_lineBefore = m_tokens[0].line;
    m_tokens[0] = m_tokens[1];
    if (m_count < m_tokens.size() || !m_stream.next(m_tokens[1])) {
        --m_count;
    }
}

bool TokenCursor::isPunctuation(std::string_view symbol) const {
    return !isAtEnd() && current().kind == SwiftLexer::Kind::punctuation &&
           current().text == symbol;
}

bool TokenCursor::isIdentifier(std::size_t ahead) const {
    return ahead < m_count && m_tokens[ahead].kind == SwiftLexer::Kind::identifier;
}

bool TokenCursor::isDocComment() const {
    return !isAtEnd() && current().kind == SwiftLexer::Kind::docComment;
}

SwiftWord TokenCursor::word(std::size_t ahead) const {
    return isIdentifier(ahead) ? swiftWord(m_tokens[ahead].text) : SwiftWord::none;
}

bool TokenCursor::startsDeclaration() const {
    return startsLine() && (word() != SwiftWord::none || isDocComment() || isPunctuation("@"));
}

bool TokenCursor::skip(std::string_view symbol) {
    if (!isPunctuation(symbol)) {
        return false;
    }
    advance();
    return true;
}

void TokenCursor::skipBalanced(std::string_view open, std::string_view close) {
    std::size_t depth = 0;
    if (!isPunctuation(open)) {
        return;
    }
    do {
        const char symbol = symbolOf(current());
        depth += symbol == open.front();
        depth -= symbol == close.front();
        advance();
    } while (depth > 0 && !isAtEnd());
}

void TokenCursor::skipExpression() {
    for (std::size_t depth = 0; !isAtEnd(); advance()) {
        const char symbol = symbolOf(current());
        if (depth == 0 && startsDeclaration()) {
            return;
        }
        switch (symbol) {
        case ',':
        case ';':
            if (depth == 0) {
                return;
            }
            break;
        case '(':
        case '[':
        case '{':
            ++depth;
            break;
        case ')':
        case ']':
        case '}':
            if (depth == 0) {
                return;
            }
            --depth;
            break;
        default:
            break;
        }
    }
}

void TokenCursor::skipFunction() {
    advance();
    for (std::int64_t depth = 0; !isAtEnd(); advance()) {
        const char symbol = symbolOf(current());
        if (depth == 0) {
            if (symbol == '{') {
                skipBalanced("{", "}");
                return;
            }
            if (symbol == '}' || startsDeclaration()) {
                return;
            }
        }
        depth += symbol == '(' || symbol == '[';
        depth -= symbol == ')' || symbol == ']';
    }
}

} // namespace ombrel

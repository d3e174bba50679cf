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

bool TokenCursor::isPunctuation(std::string_view symbol, std::size_t ahead) const {
    return m_index + ahead < m_tokens.size() &&
           m_tokens[m_index + ahead].kind == SwiftLexer::Kind::punctuation &&
           m_tokens[m_index + ahead].text == symbol;
}

bool TokenCursor::isIdentifier(std::size_t ahead) const {
    return m_index + ahead < m_tokens.size() &&
           m_tokens[m_index + ahead].kind == SwiftLexer::Kind::identifier;
}

bool TokenCursor::isDocComment() const {
    return !isAtEnd() && current().kind == SwiftLexer::Kind::docComment;
}

SwiftWord TokenCursor::word(std::size_t ahead) const {
    return isIdentifier(ahead) ? swiftWord(m_tokens[m_index + ahead].text) : SwiftWord::none;
}

bool TokenCursor::startsLine() const {
    return !isAtEnd() && m_index > 0 && m_tokens[m_index].line > m_tokens[m_index - 1].line;
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

TokenCursor::Span TokenCursor::skipBalanced(std::string_view open, std::string_view close) {
    if (!skip(open)) {
        return {};
    }
    const std::size_t start = m_index;
    for (std::size_t depth = 1; !isAtEnd(); advance()) {
        const char symbol = symbolOf(current());
        if (symbol == open.front()) {
            ++depth;
        } else if (symbol == close.front() && --depth == 0) {
            const Span inner = tokensSince(start);
            advance();
            return inner;
        }
    }
    return tokensSince(start);
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

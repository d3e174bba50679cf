#pragma once

#include "generable/SwiftLexer.h"
#include "generable/SwiftWord.h"

#include <cstddef>
#include <span>
#include <string_view>

namespace ombrel {

// A place in a list of tokens, and the ways to pass over what is not understood there. The tokens
// must outlive the cursor and the spans that it hands out.
class TokenCursor {
  public:
    using Token = SwiftLexer::Token;
    using Span = std::span<const Token>;

    explicit TokenCursor(Span tokens) : m_tokens(tokens) {}

    bool isAtEnd() const { return m_index >= m_tokens.size(); }
    std::size_t index() const { return m_index; }
    void advance() { ++m_index; }
    // Not at the end.
    const Token& current() const { return m_tokens[m_index]; }
    Span tokensSince(std::size_t start) const { return m_tokens.subspan(start, m_index - start); }

    // What the token so many places ahead is; false and none behind the end.
    bool isPunctuation(std::string_view symbol, std::size_t ahead = 0) const;
    bool isIdentifier(std::size_t ahead = 0) const;
    bool isDocComment() const;
    SwiftWord word(std::size_t ahead = 0) const;
    // Whether the current token stands on a later line than the one before it.
    bool startsLine() const;

    // Passes over the symbol if it is here.
    bool skip(std::string_view symbol);
    // Passes over everything from `open`, if it is here, to the `close` that matches it. Returns
    // what is between the two.
    Span skipBalanced(std::string_view open, std::string_view close);
    // Passes over an expression, up to where another declaration or list element plausibly begins.
    void skipExpression();
    // Passes over a function, with its keyword, and its body if it has one.
    void skipFunction();

  private:
    bool startsDeclaration() const;

    Span m_tokens;
    std::size_t m_index = 0;
};

} // namespace ombrel

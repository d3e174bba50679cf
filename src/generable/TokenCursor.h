#pragma once

#include "generable/SwiftLexer.h"
#include "generable/SwiftWord.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <string_view>
#include <vector>

namespace ombrel {

// A place in the tokens of a source, and the ways to pass over what is not understood there. The
// source and the cursor must outlive the tokens.
class TokenCursor {
  public:
    using Token = SwiftLexer::Token;
    using Span = std::span<const Token>;

    explicit TokenCursor(std::string_view source);

    bool isAtEnd() const { return m_count == 0; }
    void advance();
    // Not at the end.
    const Token& current() const { return m_tokens[0]; }

    // What the current token is, or the one after it; false and none behind the end.
    bool isPunctuation(std::string_view symbol) const;
    bool isIdentifier(std::size_t ahead = 0) const;
    bool isDocComment() const;
    SwiftWord word(std::size_t ahead = 0) const;
    // Whether the current token stands on a later line than the one before it.
    bool startsLine() const { return !isAtEnd() && current().line > m_lineBefore; }

    // Passes over the symbol if it is here.
    bool skip(std::string_view symbol);
    // Passes over everything from `open`, if it is here, to the `close` that matches it.
    void skipBalanced(std::string_view open, std::string_view close);
    // Passes over an expression, up to where another declaration or list element plausibly begins.
    void skipExpression();
    // Passes over a function, with its keyword, and its body if it has one.
    void skipFunction();

    // The tokens that `read` passes over, until others are recorded; not while others are recorded.
    template <class Read>
    const std::vector<Token>& record(Read&& read) {
        m_recorded.clear();
        m_isRecording = true;
        read();
        m_isRecording = false;
        return m_recorded;
    }

  private:
    bool startsDeclaration() const;

    SwiftLexer::Stream m_stream;
    std::array<Token, 2> m_tokens; // the current one, and the one after it
    std::size_t m_count = 0;       // of those that there are
    // Of the token before the current one; no line is later than that of none.
    std::int64_t m_lineBefore = std::numeric_limits<std::int64_t>::max();
    bool m_isRecording = false;
    std::vector<Token> m_recorded;
};

} // namespace ombrel

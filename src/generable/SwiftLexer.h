#pragma once

#include "core/Record.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

namespace ombrel {

// Cuts Swift source into tokens, as far as a reader of declarations needs them: keywords are
// identifiers, an operator is single characters but for "...", "..<" and "->", and documentation
// comments are kept. Whatever it does not know passes through as punctuation. Any thread.
struct SwiftLexer {
    enum class Kind { identifier, string, number, punctuation, docComment };

    struct Token {
        Kind kind = Kind::punctuation;
        // identifier: the name without backticks, or "#" and the name of a directive.
        // string: the contents, decoded. docComment: the text, cleaned. Else as in the source.
        std::string_view text;
        std::int64_t line = 1; // where the token starts, from 1
        // Where it stands in the source, delimiters included: bytes from `begin` up to `end`.
        std::size_t begin = 0;
        std::size_t end = 0;

        bool operator==(const Token&) const = default;
    };

    // Reads one token after the other. Never fails, whatever the bytes; linear in their number.
    // Characters are counted and told apart as `platform/Text.h` says. The texts of the tokens are
    // views of the source, or of memory of the stream where the source says them otherwise, so both
    // must outlive the tokens.
    class Stream {
      public:
        explicit Stream(std::string_view source);
        Stream(Stream&&) noexcept;
        ~Stream();

        // Whether there was another token; it is then in `token`.
        bool next(Token& token);

      private:
        class Reader;
        std::unique_ptr<Reader> m_reader;
    };

    struct Tokens {
        std::vector<Token> list;
        Stream stream; // has the texts that are not views of the source
    };
    // All tokens of the source.
    static Tokens tokenize(std::string_view source);
};

constexpr auto rawValues(SwiftLexer::Kind) {
    using K = SwiftLexer::Kind;
    return std::array{RawValue<K>{K::identifier, "identifier"}, RawValue<K>{K::string, "string"},
                      RawValue<K>{K::number, "number"}, RawValue<K>{K::punctuation, "punctuation"},
                      RawValue<K>{K::docComment, "docComment"}};
}

} // namespace ombrel

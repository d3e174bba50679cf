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
// comments are kept. Whatever it does not know passes through as punctuation.
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

    // The texts are views of the source, or of `decoded` where the source says them otherwise.
    struct Tokens {
        std::vector<Token> list;
        std::unique_ptr<char[]> decoded;
    };

    // Never fails, whatever the bytes; linear in their number. The source must outlive the tokens.
    // Characters are counted and told apart as `platform/Text.h` says. Any thread.
    static Tokens tokenize(std::string_view source);
};

constexpr auto rawValues(SwiftLexer::Kind) {
    using K = SwiftLexer::Kind;
    return std::array{RawValue<K>{K::identifier, "identifier"}, RawValue<K>{K::string, "string"},
                      RawValue<K>{K::number, "number"}, RawValue<K>{K::punctuation, "punctuation"},
                      RawValue<K>{K::docComment, "docComment"}};
}

} // namespace ombrel

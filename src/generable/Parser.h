#pragma once

#include "generable/ParsedType.h"
#include "generable/TokenCursor.h"
#include "generable/TypeRefReader.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace ombrel {

// Reads the declarations of types out of Swift source. It knows what a declaration looks like
// and passes over everything else; a mistake in the source gives fewer declarations. Linear in the
// length of the source, whatever is nested in what.
class Parser {
  public:
    explicit Parser(std::string_view source) : m_cursor(source), m_typeReader(m_cursor) {}
    Parser(const Parser&) = delete;
    Parser& operator=(const Parser&) = delete;

    // The types in the order of their names in the source.
    std::vector<ParsedType> parseDeclarations();

  private:
    struct Attribute {
        std::string_view name; // the last component
        std::vector<TokenCursor::Token> arguments;
    };
    // A body that is open, by what is kept of it.
    struct Body {
        std::optional<std::size_t> type; // none for an extension or a protocol
    };

    bool isInsideBody() const { return !m_bodies.empty(); }
    // The type whose body is open, if it is of this kind.
    ParsedType* builder(ParsedType::Kind kind);

    void collectDocComments();
    void parseAttributes();
    void parseModifiers();
    void parseDeclaration();
    void parseTypeDeclaration();
    void parseProperty();
    void parseCase();
    bool skipObservers();
    std::optional<std::string> docComment() const;

    TokenCursor m_cursor;
    TypeRefReader m_typeReader;
    std::vector<ParsedType> m_types;
    std::vector<Body> m_bodies;
    // Of the declaration that is being read.
    std::vector<std::string_view> m_docComments;
    std::vector<Attribute> m_attributes;
    bool m_isStatic = false;
};

} // namespace ombrel

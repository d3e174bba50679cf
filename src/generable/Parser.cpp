#include "generable/Parser.h"

#include "generable/Guide.h"

#include <algorithm>
#include <string>
#include <utility>

namespace ombrel {

namespace {

// What is between the parentheses around a list, of which the closing one may be missing.
TokenCursor::Span withoutParentheses(TokenCursor::Span list) {
    if (list.empty()) {
        return list;
    }
    std::int64_t depth = 0;
    for (const auto& token : list) {
        if (token.kind == SwiftLexer::Kind::punctuation) {
            depth += token.text == "(";
            depth -= token.text == ")";
        }
    }
    return list.subspan(1, list.size() - (depth == 0 ? 2 : 1));
}

} // namespace

std::vector<ParsedType> Parser::parseDeclarations() {
    while (!m_cursor.isAtEnd()) {
        m_docComments.clear();
        m_attributes.clear();
        m_isStatic = false;
        while (m_cursor.isDocComment() || m_cursor.isPunctuation(";")) {
            collectDocComments();
            m_cursor.skip(";");
        }
        if (isInsideBody() && m_cursor.skip("}")) {
            m_bodies.pop_back();
            continue;
        }
        parseAttributes();
        parseModifiers();
        parseDeclaration();
    }
    return std::move(m_types);
}

ParsedType* Parser::builder(ParsedType::Kind kind) {
    if (m_bodies.empty() || !m_bodies.back().type) {
        return nullptr;
    }
    ParsedType& type = m_types[*m_bodies.back().type];
    return type.kind == kind ? &type : nullptr;
}

void Parser::collectDocComments() {
    for (; m_cursor.isDocComment(); m_cursor.advance()) {
        m_docComments.push_back(m_cursor.current().text);
    }
}

void Parser::parseAttributes() {
    while (m_cursor.isPunctuation("@") && m_cursor.isIdentifier(1)) {
        m_cursor.advance();
        Attribute attribute{m_cursor.current().text, {}};
        std::int64_t line = m_cursor.current().line;
        m_cursor.advance();
        while (m_cursor.isPunctuation(".") && m_cursor.isIdentifier(1)) {
            m_cursor.advance();
            attribute.name = m_cursor.current().text;
            line = m_cursor.current().line;
            m_cursor.advance();
        }
        if (m_cursor.isPunctuation("(") && m_cursor.current().line == line) {
            attribute.arguments = m_cursor.record([&] { m_cursor.skipBalanced("(", ")"); });
        }
        m_attributes.push_back(std::move(attribute));
        collectDocComments();
    }
}

void Parser::parseModifiers() {
    while (true) {
        if (m_cursor.word() == SwiftWord::modifier) {
            m_isStatic = m_isStatic || m_cursor.current().text == "static";
            m_cursor.advance();
            m_cursor.skipBalanced("(", ")");
        } else if (m_cursor.isIdentifier() && m_cursor.current().text == "class" &&
                   m_cursor.word(1) != SwiftWord::none) {
            m_isStatic = true;
            m_cursor.advance();
        } else {
            return;
        }
    }
}

void Parser::parseDeclaration() {
    switch (m_cursor.word()) {
    case SwiftWord::typeWord:
        return parseTypeDeclaration();
    case SwiftWord::variable:
        return parseProperty();
    case SwiftWord::caseWord:
        return parseCase();
    case SwiftWord::function:
        return m_cursor.skipFunction();
    case SwiftWord::expression:
        m_cursor.advance();
        return m_cursor.skipExpression();
    case SwiftWord::modifier:
    case SwiftWord::none:
        break;
    }
    if (m_cursor.isPunctuation("{")) {
        m_cursor.skipBalanced("{", "}");
    } else if (m_cursor.isIdentifier()) {
        m_cursor.advance();
        m_cursor.skipBalanced("{", "}");
    } else if (isInsideBody() && m_cursor.skip("}")) {
        m_bodies.pop_back();
    } else if (!m_cursor.isAtEnd()) {
        m_cursor.advance();
    }
}

void Parser::parseTypeDeclaration() {
    const std::string_view keyword = m_cursor.current().text;
    m_cursor.advance();
    if (!m_cursor.isIdentifier()) {
        return;
    }
    ParsedType type;
    type.name = m_cursor.current().text;
    type.line = m_cursor.current().line;
    type.kind = keyword == "enum" ? ParsedType::Kind::enumeration : ParsedType::Kind::structure;
    type.isGenerable = std::any_of(m_attributes.begin(), m_attributes.end(),
                                   [](const auto& a) { return a.name == "Generable"; });
    m_cursor.advance();
    while (m_cursor.isPunctuation(".") && m_cursor.isIdentifier(1)) {
        m_cursor.advance();
        m_cursor.advance();
    }
    type.isGeneric = m_cursor.isPunctuation("<");
    while (!m_cursor.isPunctuation("{")) {
        if (m_cursor.isAtEnd() || m_cursor.isPunctuation("}")) {
            return;
        }
        m_cursor.advance();
    }
    m_cursor.advance();
    if (keyword == "extension" || keyword == "protocol") {
        m_bodies.push_back({});
        return;
    }
    m_bodies.push_back({m_types.size()});
    m_types.push_back(std::move(type));
}

void Parser::parseProperty() {
    m_cursor.advance();
    // All bindings share what their declaration says.
    Guide guide;
    ParsedProperty shared;
    ParsedType* const owner = m_isStatic ? nullptr : builder(ParsedType::Kind::structure);
    if (owner != nullptr) {
        for (const Attribute& attribute : m_attributes) {
            if (attribute.name == "Guide") {
                guide = parseGuide(withoutParentheses(attribute.arguments));
            }
        }
        if (guide.description) {
            shared.guideDescription = SharedText(std::move(*guide.description));
        }
        if (auto text = docComment()) {
            shared.docComment = SharedText(std::move(*text));
        }
        if (!guide.constraints.empty()) {
            shared.constraints = std::move(guide.constraints);
        }
        if (guide.anyOf) {
            shared.anyOf = CowArray<std::string>(std::move(*guide.anyOf));
        }
        shared.hasNonLiteralDescription = guide.hasNonLiteralDescription;
    }
    while (m_cursor.isIdentifier()) {
        ParsedProperty property = shared;
        property.name = m_cursor.current().text;
        property.line = m_cursor.current().line;
        m_cursor.advance();
        if (m_cursor.skip(":")) {
            const auto& annotation =
                m_cursor.record([&] { property.type = m_typeReader.parseTypeRef(); });
            if (owner != nullptr) {
                property.typeText = renderTokens(annotation);
            }
        }
        if (m_cursor.skip("=")) {
            m_cursor.skipExpression();
        }
        const bool isComputed = m_cursor.isPunctuation("{") && !skipObservers();
        if (owner != nullptr && !isComputed) {
            owner->properties.push_back(std::move(property));
        }
        if (!m_cursor.skip(",")) {
            return;
        }
    }
    m_cursor.skipExpression();
}

// Passes over the braces behind a binding. Whether they hold observers of a stored property.
bool Parser::skipObservers() {
    const auto& body = m_cursor.record([&] { m_cursor.skipBalanced("{", "}"); });
    for (const auto& token : body) {
        if (token.kind == SwiftLexer::Kind::identifier) {
            return token.text == "willSet" || token.text == "didSet";
        }
    }
    return false;
}

void Parser::parseCase() {
    m_cursor.advance();
    std::optional<std::string> description = docComment();
    ParsedType* const owner = builder(ParsedType::Kind::enumeration);
    while (m_cursor.isIdentifier()) {
        ParsedCase parsed;
        parsed.name = m_cursor.current().text;
        parsed.line = m_cursor.current().line;
        parsed.description = std::exchange(description, std::nullopt);
        m_cursor.advance();
        parsed.hasPayload = m_cursor.isPunctuation("(");
        m_cursor.skipBalanced("(", ")");
        if (m_cursor.skip("=")) {
            m_cursor.skipExpression();
        }
        if (owner != nullptr) {
            owner->cases.push_back(std::move(parsed));
        }
        if (!m_cursor.skip(",")) {
            return;
        }
    }
    m_cursor.skipExpression();
}

std::optional<std::string> Parser::docComment() const {
    if (m_docComments.empty()) {
        return std::nullopt;
    }
    std::string text(m_docComments.front());
    for (std::size_t i = 1; i < m_docComments.size(); ++i) {
        text += ' ';
        text += m_docComments[i];
    }
    return text;
}

} // namespace ombrel

#include "generable/TypeRefReader.h"

#include <string>
#include <utility>

namespace ombrel {

namespace {

TypeRef classify(std::string_view name, std::size_t argumentCount,
                 std::optional<TypeRef> argument) {
    if (argumentCount == 0) {
        return TypeRef::named(std::string(name));
    }
    if (argumentCount == 1 && name == "Optional") {
        return TypeRef::optional(std::move(*argument));
    }
    if (argumentCount == 1 && name == "Array") {
        return TypeRef::array(std::move(*argument));
    }
    if (name == "Dictionary") {
        return TypeRef::unsupported("a dictionary");
    }
    return TypeRef::unsupported("the generic type `" + std::string(name) + "<…>`");
}

} // namespace

TypeRef TypeRefReader::parseTypeRef() {
    m_open.clear();
    while (true) {
        std::optional<TypeRef> finished = begin();
        while (finished) {
            if (m_open.empty()) {
                return std::move(*finished);
            }
            finished = resume(std::move(*finished));
        }
    }
}

std::optional<TypeRef> TypeRefReader::wait(Open open) {
    m_open.push_back(std::move(open));
    return std::nullopt;
}

std::optional<TypeRef> TypeRefReader::begin() {
    if (m_cursor.isAtEnd()) {
        return TypeRef::unsupported("a missing type");
    }
    if (m_cursor.isIdentifier()) {
        const std::string_view name = m_cursor.current().text;
        m_cursor.advance();
        if (name == "some" || name == "any") {
            return wait({Open::Kind::existential, name});
        }
        return readName({Open::Kind::arguments, name});
    }
    if (m_cursor.skip("[")) {
        return wait({Open::Kind::element});
    }
    if (m_cursor.isPunctuation("(")) {
        m_cursor.skipBalanced("(", ")");
        return finishWithSuffixes(TypeRef::unsupported("a tuple"));
    }
    m_cursor.advance();
    return finish(TypeRef::unsupported("an unrecognized type"));
}

std::optional<TypeRef> TypeRefReader::resume(TypeRef inner) {
    Open open = std::move(m_open.back());
    m_open.pop_back();
    switch (open.kind) {
    case Open::Kind::existential:
        return finish(
            TypeRef::unsupported("an existential (`" + std::string(open.name) + "`) type"));
    case Open::Kind::arguments:
        if (open.argumentCount == 0) {
            open.argument = std::move(inner);
        }
        ++open.argumentCount;
        if (readsArgument()) {
            return wait(std::move(open));
        }
        return readName(std::move(open));
    case Open::Kind::element:
        if (m_cursor.skip(":")) {
            return wait({Open::Kind::value});
        }
        m_cursor.skip("]");
        return finishWithSuffixes(TypeRef::array(std::move(inner)));
    case Open::Kind::value:
        m_cursor.skip("]");
        return finishWithSuffixes(TypeRef::unsupported("a dictionary"));
    case Open::Kind::returned:
        break;
    }
    return TypeRef::unsupported("a function type");
}

// Behind a name, and behind the generic arguments that it has so far.
std::optional<TypeRef> TypeRefReader::readName(Open named) {
    while (true) {
        if (m_cursor.skip("<")) {
            if (readsArgument()) {
                return wait(std::move(named));
            }
        } else if (m_cursor.isPunctuation(".") && m_cursor.isIdentifier(1)) {
            m_cursor.advance();
            named = {Open::Kind::arguments, m_cursor.current().text};
            m_cursor.advance();
        } else {
            return finishWithSuffixes(
                classify(named.name, named.argumentCount, std::move(named.argument)));
        }
    }
}

// Whether another generic argument follows; if not, the list is passed.
bool TypeRefReader::readsArgument() {
    while (m_cursor.skip(",")) {
    }
    return !m_cursor.skip(">") && !m_cursor.isAtEnd();
}

std::optional<TypeRef> TypeRefReader::finishWithSuffixes(TypeRef type) {
    while (m_cursor.skip("?") || m_cursor.skip("!")) {
        type = TypeRef::optional(std::move(type));
    }
    return finish(std::move(type));
}

std::optional<TypeRef> TypeRefReader::finish(TypeRef type) {
    if (m_cursor.skip("->")) {
        return wait({Open::Kind::returned});
    }
    return type;
}

} // namespace ombrel

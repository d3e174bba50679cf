#pragma once

#include "core/CowArray.h"
#include "core/Record.h"
#include "core/SharedText.h"
#include "generable/TypeRef.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// What a declaration says of a type. Lines count from 1. Texts that the bindings of one declaration
// have in common are shared.
namespace ombrel {

// A stored instance property.
struct ParsedProperty {
    std::string name;
    std::optional<TypeRef> type; // none without an annotation
    std::string typeText;        // the annotation as text
    std::optional<SharedText> guideDescription;
    std::optional<SharedText> docComment;
    CowArray<std::string> constraints; // what else @Guide says
    std::optional<CowArray<std::string>> anyOf;
    bool hasNonLiteralDescription = false; // a description that is no plain string literal
    std::int64_t line = 1;

    bool operator==(const ParsedProperty&) const = default;
};

// A case of an enumeration.
struct ParsedCase {
    std::string name;
    std::optional<std::string> description; // the documentation comment
    bool hasPayload = false;
    std::int64_t line = 1;

    static constexpr auto keys() {
        return std::tuple(required("name", &ParsedCase::name),
                          ombrel::optional("description", &ParsedCase::description),
                          required("hasPayload", &ParsedCase::hasPayload),
                          required("line", &ParsedCase::line));
    }
    bool operator==(const ParsedCase&) const = default;
};

struct ParsedType {
    enum class Kind { structure, enumeration }; // classes and actors are structures

    std::string name; // unqualified
    Kind kind = Kind::structure;
    bool isGenerable = false;
    bool isGeneric = false;
    std::int64_t line = 1; // of the name
    std::vector<ParsedProperty> properties;
    std::vector<ParsedCase> cases;

    bool operator==(const ParsedType&) const = default;
};

constexpr auto rawValues(ParsedType::Kind) {
    using K = ParsedType::Kind;
    return std::array{RawValue<K>{K::structure, "structure"},
                      RawValue<K>{K::enumeration, "enumeration"}};
}

struct ParsedFile {
    std::vector<ParsedType> types; // by line; an outer type before those in it
    bool operator==(const ParsedFile&) const = default;
};

} // namespace ombrel

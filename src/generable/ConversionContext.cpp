#include "generable/ConversionContext.h"

#include "platform/Text.h"

#include <algorithm>
#include <array>
#include <utility>

namespace ombrel {

namespace {

constexpr std::array<std::string_view, 2> stringNames{"String", "Substring"};
constexpr std::array<std::string_view, 10> integerNames{
    "Int", "Int8", "Int16", "Int32", "Int64", "UInt", "UInt8", "UInt16", "UInt32", "UInt64"};
constexpr std::array<std::string_view, 7> floatingNames{"Double",  "Float",   "Float16", "Float32",
                                                        "Float64", "CGFloat", "Decimal"};
constexpr std::array<std::string_view, 6> knownNonGenerableNames{
    "Date", "URL", "UUID", "Data", "Character", "GeneratedContent"};

// What an element of a list weighs besides its text.
constexpr std::size_t elementWeight = 64;

bool contains(const auto& names, const auto& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

std::string quoted(std::string_view text) {
    return "`" + std::string(text) + "`";
}

std::size_t weightOf(const std::optional<SharedText>& text) {
    return text ? text->text().size() : 0;
}

// Bindings of one declaration share their lists, which are then weighed once.
class ListWeight {
  public:
    std::size_t operator()(const CowArray<std::string>& list) {
        if (list.identity() != m_identity) {
            m_identity = list.identity();
            m_weight = 0;
            for (const std::string& text : list) {
                m_weight += text.size() + elementWeight;
            }
        }
        return m_weight;
    }

  private:
    const void* m_identity = nullptr;
    std::size_t m_weight = 0;
};

std::size_t weightOf(const ParsedType& type) {
    std::size_t weight = 0;
    ListWeight constraintsWeight;
    ListWeight anyOfWeight;
    for (const ParsedProperty& property : type.properties) {
        weight += property.name.size() + property.typeText.size() +
                  weightOf(property.guideDescription) + weightOf(property.docComment) +
                  constraintsWeight(property.constraints);
        weight += property.anyOf ? anyOfWeight(*property.anyOf) : 0;
    }
    for (const ParsedCase& parsed : type.cases) {
        weight += parsed.name.size() + (parsed.description ? parsed.description->size() : 0);
    }
    return weight;
}

PropertyKind stringKind() {
    return {PropertyKind::String{}};
}

} // namespace

ConversionContext::ConversionContext(const std::vector<ParsedType>& types) {
    for (const ParsedType& type : types) {
        const std::size_t parts = type.properties.size() + type.cases.size();
        m_typesByName[canonicalKey(type.name)] = {&type, parts, weightOf(type)};
        m_roomForParts += parts;
    }
}

std::optional<AgentOutputKind> ConversionContext::convertRoot(std::string_view rootName) {
    const auto found = m_typesByName.find(canonicalKey(rootName));
    if (found == m_typesByName.end()) {
        return std::nullopt;
    }
    const ParsedType& root = *found->second.type;
    if (!takeRoom(found->second)) {
        addWarning(root.line, quoted(root.name) + " has more text than an output can hold, so it "
                                                  "wasn't imported.");
        return std::nullopt;
    }
    AgentOutputKind output;
    if (root.kind == ParsedType::Kind::enumeration) {
        output.value = AgentOutputKind::Enumeration{convertCases(root)};
    } else {
        if (root.isGeneric) {
            addWarning(root.line, quoted(root.name) +
                                      " is generic — @Generable output types can't be "
                                      "generic, so its generic parameters were ignored.");
        }
        m_visited.push_back(&root);
        output.value = AgentOutputKind::Object{convertProperties(root, 1)};
    }
    checkGenerable(root);
    return output;
}

void ConversionContext::addWarning(std::int64_t line, std::string message) {
    GenerableImportWarning warning{line, std::move(message)};
    if (m_seen.insert(warning).second) {
        warnings.push_back(std::move(warning));
    }
}

// Whether the contents of the type still fit; if so, their room is taken.
bool ConversionContext::takeRoom(const Entry& entry) {
    if (entry.parts > m_roomForParts || entry.text > m_roomForText) {
        return false;
    }
    m_roomForParts -= entry.parts;
    m_roomForText -= entry.text;
    return true;
}

void ConversionContext::checkGenerable(const ParsedType& type) {
    if (!type.isGenerable && m_warnedNonGenerable.insert(&type).second) {
        addWarning(type.line, quoted(type.name) +
                                  " isn't marked @Generable. It was imported anyway; add "
                                  "@Generable before using it with Foundation Models.");
    }
}

std::vector<AgentEnumCase> ConversionContext::convertCases(const ParsedType& type) {
    if (type.cases.empty()) {
        addWarning(type.line, "Enum " + quoted(type.name) + " has no cases.");
    }
    if (std::any_of(type.cases.begin(), type.cases.end(),
                    [](const auto& parsed) { return parsed.hasPayload; })) {
        addWarning(type.line, "Enum " + quoted(type.name) +
                                  " has cases with associated values. Only the case names were "
                                  "imported — the builder's enums don't carry payloads.");
    }
    std::vector<AgentEnumCase> cases;
    cases.reserve(type.cases.size());
    for (const ParsedCase& parsed : type.cases) {
        cases.push_back({Uuid::random(), parsed.name, parsed.description});
    }
    return cases;
}

std::vector<AgentProperty> ConversionContext::convertProperties(const ParsedType& type, int depth) {
    if (type.properties.empty()) {
        addWarning(type.line, quoted(type.name) + " has no stored properties.");
    }
    std::vector<AgentProperty> properties;
    properties.reserve(type.properties.size());
    for (const ParsedProperty& property : type.properties) {
        if (auto converted = convertProperty(property, depth)) {
            properties.push_back(std::move(*converted));
        }
    }
    return properties;
}

std::optional<AgentProperty> ConversionContext::convertProperty(const ParsedProperty& property,
                                                                int depth) {
    const std::string name = quoted(property.name);
    if (!property.type) {
        addWarning(property.line, name + " has no type annotation — @Generable needs an explicit "
                                         "type, so it was skipped.");
        return std::nullopt;
    }
    AgentProperty converted;
    converted.id = Uuid::random();
    converted.name = property.name;
    std::size_t wrappers = property.type->wrappers.size();
    while (wrappers > 0 && property.type->wrappers[wrappers - 1] == TypeRef::Wrapper::optional) {
        --wrappers;
        converted.isOptional = true;
    }
    converted.kind = convertType(*property.type, wrappers, {property.name, property.line, depth});
    const auto& description =
        property.guideDescription ? property.guideDescription : property.docComment;
    std::string text = description ? description->text() : std::string();
    if (property.hasNonLiteralDescription) {
        addWarning(property.line, "The @Guide description on " + name +
                                      " isn't a plain string literal, so it couldn't be read.");
    }
    if (property.anyOf && !property.anyOf->empty()) {
        auto* const array = std::get_if<PropertyKind::Array>(&converted.kind.value);
        PropertyKind& choice = array != nullptr ? *array->element : converted.kind;
        if (std::holds_alternative<PropertyKind::String>(choice.value)) {
            PropertyKind::Enumeration choices;
            for (const std::string& value : *property.anyOf) {
                choices.cases.push_back({Uuid::random(), value, std::nullopt});
            }
            choice.value = std::move(choices);
        } else {
            addWarning(property.line, "`.anyOf` on " + name +
                                          " only applies to String properties; it was ignored.");
        }
    }
    if (!property.constraints.empty()) {
        const std::string constraints = join(property.constraints.values(), ", ");
        text += (text.empty() ? "Constraint: " : " — Constraint: ") + constraints;
        addWarning(property.line, name + " has " + constraints +
                                      ". The builder has no constraint fields yet, so it was kept "
                                      "as description text — the model sees it, but it isn't "
                                      "enforced.");
    }
    if (!text.empty()) {
        converted.description = std::move(text);
    }
    return converted;
}

// The type in its innermost `wrappers` arrays and optionals.
PropertyKind ConversionContext::convertType(const TypeRef& ref, std::size_t wrappers, Place place) {
    const std::string property = quoted(place.propertyName);
    bool hasOptional = false;
    int arrays = 0;
    for (; wrappers > 0; --wrappers) {
        if (ref.wrappers[wrappers - 1] == TypeRef::Wrapper::optional) {
            if (!std::exchange(hasOptional, true)) {
                addWarning(place.line,
                           property + " has an optional nested inside another type (like `[T?]`). "
                                      "That isn't supported, so it was imported as non-optional.");
            }
            continue;
        }
        if (place.depth == maximumDepth) {
            break;
        }
        ++place.depth;
        ++arrays;
    }
    PropertyKind kind = stringKind();
    if (wrappers > 0) {
        addWarning(place.line, property + " is nested more than " + std::to_string(maximumDepth) +
                                   " levels deep. It was imported as String.");
    } else if (ref.kind == TypeRef::Kind::unsupported) {
        addWarning(place.line,
                   property + " uses " + ref.text +
                       ", which the builder can't represent. It was imported as String.");
    } else {
        kind = convertNamed(ref.text, place);
    }
    for (; arrays > 0; --arrays) {
        kind = {PropertyKind::Array{Box<PropertyKind>(std::move(kind))}};
    }
    return kind;
}

PropertyKind ConversionContext::convertNamed(const std::string& name, Place place) {
    if (contains(stringNames, name)) {
        return stringKind();
    }
    if (contains(integerNames, name)) {
        return {PropertyKind::Int{}};
    }
    if (contains(floatingNames, name)) {
        return {PropertyKind::Double{}};
    }
    if (name == "Bool") {
        return {PropertyKind::Bool{}};
    }
    const std::string property = quoted(place.propertyName);
    if (const auto found = m_typesByName.find(canonicalKey(name)); found != m_typesByName.end()) {
        return convertDeclared(name, found->second, place);
    }
    if (contains(knownNonGenerableNames, name)) {
        addWarning(place.line, property + " is a " + quoted(name) +
                                   ", which isn't Generable. It was imported as String (e.g. ask "
                                   "for ISO 8601 text and convert it yourself).");
    } else {
        addWarning(place.line, "Type " + quoted(name) + " (used by " + property +
                                   ") isn't declared in this code. Paste its declaration too, or "
                                   "it stays imported as String.");
    }
    return stringKind();
}

PropertyKind ConversionContext::convertDeclared(const std::string& name, const Entry& entry,
                                                Place place) {
    const ParsedType& type = *entry.type;
    const bool isStructure = type.kind == ParsedType::Kind::structure;
    const std::string property = quoted(place.propertyName);
    if (contains(m_visited, &type)) {
        addWarning(place.line, property + " refers back to " + quoted(name) +
                                   " recursively. Recursive types can't be represented, so it was "
                                   "imported as String.");
        return stringKind();
    }
    if (isStructure && place.depth == maximumDepth) {
        addWarning(place.line, property + " is nested more than " + std::to_string(maximumDepth) +
                                   " levels deep. It was imported as String.");
        return stringKind();
    }
    if (!takeRoom(entry)) {
        addWarning(place.line,
                   property + " uses " + quoted(name) +
                       ", and types are repeated in every place that uses them: the output would "
                       "become too large. It was imported as String.");
        return stringKind();
    }
    checkGenerable(type);
    if (!isStructure) {
        return {PropertyKind::Enumeration{convertCases(type)}};
    }
    m_visited.push_back(&type);
    PropertyKind kind{PropertyKind::Object{convertProperties(type, place.depth + 1)}};
    m_visited.pop_back();
    return kind;
}

} // namespace ombrel

#include "cli/FieldArgument.h"

#include "agents/PropertyEditing.h"
#include "cli/Command.h"
#include "platform/Text.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>
#include <variant>

namespace ombrel {

namespace {

constexpr int deepestArray = 16;
constexpr std::string_view enumStart = "enum(";

[[noreturn]] void refuse(std::string_view field, std::string_view type) {
    throw Failure{"“" + std::string(field) + "”: there is no type “" + std::string(type) + "”. " +
                      fieldTypesHelp,
                  true};
}

PropertyKind parseKind(std::string_view field, std::string_view text, int depth) {
    text = trimWhitespaces(text);
    const std::string lower = lowercased(text);
    for (const auto kind : {PropertyKind::BaseKind::string, PropertyKind::BaseKind::integer,
                            PropertyKind::BaseKind::number, PropertyKind::BaseKind::boolean}) {
        if (lower == lowercased(rawValue(kind))) {
            return kindAfterChange(kind, {});
        }
    }
    if (text.size() > 2 && text.starts_with('[') && text.ends_with(']') && depth < deepestArray) {
        text.remove_prefix(1);
        text.remove_suffix(1);
        return {PropertyKind::Array{parseKind(field, text, depth + 1)}};
    }
    if (!lower.starts_with(enumStart) || !lower.ends_with(')')) {
        refuse(field, text);
    }
    text.remove_prefix(enumStart.size());
    text.remove_suffix(1);
    PropertyKind::Enumeration enumeration;
    for (std::size_t start = 0; start <= text.size();) {
        const std::size_t end = std::min(text.find('|', start), text.size());
        AgentEnumCase enumCase = newEnumCase();
        enumCase.name = trimWhitespaces(text.substr(start, end - start));
        if (enumCase.name.empty()) {
            refuse(field, "Enum(" + std::string(text) + ")");
        }
        enumeration.cases.push_back(std::move(enumCase));
        start = end + 1;
    }
    return {std::move(enumeration)};
}

// The name in front of the first of the separators; `rest` becomes what follows it.
std::string takeName(std::string_view text, std::string_view separators, std::string_view& rest,
                     std::string_view form) {
    const std::size_t end = std::min(text.find_first_of(separators), text.size());
    rest = text.substr(end);
    std::string name(trimWhitespaces(text.substr(0, end)));
    if (name.empty()) {
        throw Failure{"“" + std::string(text) + "” has no name. The form is " + std::string(form) +
                          ".",
                      true};
    }
    return name;
}

std::optional<std::string> description(std::string_view rest) {
    return rest.empty() ? std::nullopt : storedDescription(std::string(rest.substr(1)));
}

} // namespace

AgentProperty parseField(const std::string& text) {
    AgentProperty property = newProperty();
    std::string_view rest;
    property.name = takeName(text, ":=", rest, fieldSyntax);
    if (rest.starts_with(':')) {
        rest.remove_prefix(1);
        const std::size_t end = std::min(rest.find('='), rest.size());
        std::string_view type = trimWhitespaces(rest.substr(0, end));
        property.isOptional = type.ends_with('?');
        type.remove_suffix(property.isOptional ? 1 : 0);
        property.kind = parseKind(text, type, 0);
        rest.remove_prefix(end);
    }
    property.description = description(rest);
    return property;
}

AgentEnumCase parseEnumCase(const std::string& text) {
    AgentEnumCase enumCase = newEnumCase();
    std::string_view rest;
    enumCase.name = takeName(text, "=", rest, "NAME[=DESCRIPTION]");
    enumCase.description = description(rest);
    return enumCase;
}

std::vector<AgentProperty> parseFields(const std::vector<std::string>& texts) {
    std::vector<AgentProperty> fields;
    std::ranges::transform(texts, std::back_inserter(fields), parseField);
    return fields;
}

std::vector<AgentEnumCase> parseEnumCases(const std::vector<std::string>& texts) {
    std::vector<AgentEnumCase> cases;
    std::ranges::transform(texts, std::back_inserter(cases), parseEnumCase);
    return cases;
}

std::string fieldTypeText(const PropertyKind& kind) {
    if (const auto* array = std::get_if<PropertyKind::Array>(&kind.value)) {
        return "[" + fieldTypeText(*array->element) + "]";
    }
    if (const auto* enumeration = std::get_if<PropertyKind::Enumeration>(&kind.value)) {
        std::vector<std::string> names;
        for (const AgentEnumCase& enumCase : enumeration->cases) {
            names.push_back(enumCase.name);
        }
        return "Enum(" + join(names, "|") + ")";
    }
    return kind.typeLabel();
}

} // namespace ombrel

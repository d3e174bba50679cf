#include "agents/AgentOutputField.h"

#include "platform/ShortestDecimal.h"
#include "platform/Text.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <optional>
#include <variant>

namespace ombrel {

namespace {

using Content = GeneratedContent;

// The description of the first case of that name, where there is one that says something.
std::optional<std::string> caseDescription(const std::vector<AgentEnumCase>& cases,
                                           const std::string& name) {
    for (const AgentEnumCase& each : cases) {
        if (each.name == name) {
            return each.description && !each.description->empty() ? each.description : std::nullopt;
        }
    }
    return std::nullopt;
}

// Rounded half away from zero; nothing when that is no 64-bit integer. What the model wrote as an
// integer is not rounded, however large.
std::optional<std::int64_t> wholeNumber(const Content::Number& number) {
    std::int64_t whole = 0;
    const char* end = number.text.data() + number.text.size();
    const auto read = std::from_chars(number.text.data(), end, whole);
    if (read.ec == std::errc() && read.ptr == end) {
        return whole;
    }
    const double rounded = std::round(number.value());
    if (rounded >= -0x1p63 && rounded < 0x1p63) {
        return static_cast<std::int64_t>(rounded);
    }
    return std::nullopt;
}

// The text of a content that has the kind; nothing of one that has not.
struct Renderer {
    const Content& content;

    template <class Kind>
    const Kind* as() const {
        return std::get_if<Kind>(&content.kind);
    }
    std::optional<std::string> operator()(const PropertyKind::String&) const {
        const auto* text = as<std::string>();
        return text ? std::optional(*text) : std::nullopt;
    }
    std::optional<std::string> operator()(const PropertyKind::Int&) const {
        const auto* number = as<Content::Number>();
        const auto whole = number ? wholeNumber(*number) : std::nullopt;
        return whole ? std::optional(std::to_string(*whole)) : std::nullopt;
    }
    std::optional<std::string> operator()(const PropertyKind::Double&) const {
        const auto* number = as<Content::Number>();
        return number && std::isfinite(number->value())
                   ? std::optional(shortestDecimal(number->value()))
                   : std::nullopt;
    }
    std::optional<std::string> operator()(const PropertyKind::Bool&) const {
        const auto* truth = as<bool>();
        return truth ? std::optional<std::string>(*truth ? "true" : "false") : std::nullopt;
    }
    std::optional<std::string> operator()(const PropertyKind::Object& object) const {
        if (!as<Content::Structure>()) {
            return std::nullopt;
        }
        std::vector<std::string> parts;
        for (const AgentProperty& property : object.properties) {
            if (const Content* value = content.find(property.name)) {
                parts.push_back(property.name + ": " + renderContent(*value, property.kind));
            }
        }
        return "{ " + join(parts, ", ") + " }";
    }
    std::optional<std::string> operator()(const PropertyKind::Array& array) const {
        const auto* elements = as<Content::Array>();
        if (!elements) {
            return std::nullopt;
        }
        std::vector<std::string> parts;
        for (const Content& element : *elements) {
            parts.push_back(renderContent(element, *array.element));
        }
        return "[" + join(parts, ", ") + "]";
    }
    std::optional<std::string> operator()(const PropertyKind::Enumeration& enumeration) const {
        const auto* name = as<std::string>();
        if (!name) {
            return std::nullopt;
        }
        const auto description = caseDescription(enumeration.cases, *name);
        return description ? *name + " — " + *description : *name;
    }
};

} // namespace

std::vector<AgentOutputField> objectFields(const GeneratedContent& content,
                                           const std::vector<AgentProperty>& properties) {
    std::vector<AgentOutputField> fields;
    if (!std::holds_alternative<Content::Structure>(content.kind)) {
        return fields;
    }
    for (const AgentProperty& property : properties) {
        fields.push_back({Uuid::random(), property.name, property.kind.typeLabel(),
                          fieldValue(content.find(property.name), property.kind)});
    }
    return fields;
}

AgentOutputFieldValue fieldValue(const GeneratedContent* content, const PropertyKind& kind) {
    using Value = AgentOutputFieldValue;
    if (!content || std::holds_alternative<Content::Null>(content->kind)) {
        return {Value::Missing{}};
    }
    const auto* enumeration = std::get_if<PropertyKind::Enumeration>(&kind.value);
    if (!enumeration) {
        return {Value::Plain{renderContent(*content, kind)}};
    }
    const auto* name = std::get_if<std::string>(&content->kind);
    if (!name) {
        return {Value::Plain{content->debugDescription()}};
    }
    return {Value::EnumCase{*name, caseDescription(enumeration->cases, *name)}};
}

std::string renderContent(const GeneratedContent& content, const PropertyKind& kind) {
    if (std::holds_alternative<Content::Null>(content.kind)) {
        return "—";
    }
    const auto text = std::visit(Renderer{content}, kind.value);
    return text ? *text : content.debugDescription();
}

} // namespace ombrel

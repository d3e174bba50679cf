#include "agents/OutputExample.h"

#include "platform/Text.h"

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <variant>

namespace ombrel {

namespace {

constexpr std::string_view placeholderEmail = "name@example.com";
constexpr std::string_view placeholderURL = "https://example.com";

bool containsAny(std::string_view name, std::initializer_list<std::string_view> parts) {
    return std::ranges::any_of(
        parts, [&](std::string_view part) { return name.find(part) != std::string_view::npos; });
}

std::string indentation(int depth) {
    return std::string(2 * static_cast<std::size_t>(depth), ' ');
}

// The first case, which stands for all.
std::string sampleCase(const std::vector<AgentEnumCase>& cases) {
    return jsonQuoted(cases.empty() ? "value" : cases.front().name);
}

std::string sampleArray(const PropertyKind& element, std::string_view name, int depth) {
    return "[\n" + indentation(depth + 1) + sampleValue(element, singular(name), depth + 1) + "\n" +
           indentation(depth) + "]";
}

} // namespace

std::optional<std::string> exampleJSON(const AgentOutputKind& output) {
    if (const auto* enumeration = std::get_if<AgentOutputKind::Enumeration>(&output.value)) {
        if (enumeration->cases.empty()) {
            return std::nullopt;
        }
        return sampleCase(enumeration->cases);
    }
    if (const auto* object = std::get_if<AgentOutputKind::Object>(&output.value)) {
        if (object->properties.empty()) {
            return std::nullopt;
        }
        return sampleObject(object->properties, 0);
    }
    return "Here is the agent's answer, as plain text.";
}

std::string sampleObject(const std::vector<AgentProperty>& properties, int depth) {
    if (properties.empty()) {
        return "{}";
    }
    std::string text = "{\n";
    for (const AgentProperty& property : properties) {
        const std::string name = property.name.empty() ? "field" : property.name;
        text += indentation(depth + 1) + jsonQuoted(name) + ": " +
                sampleValue(property.kind, name, depth + 1);
        text += &property == &properties.back() ? "\n" : ",\n";
    }
    return text + indentation(depth) + "}";
}

std::string sampleValue(const PropertyKind& kind, std::string_view name, int depth) {
    switch (kind.baseKind()) {
    case PropertyKind::BaseKind::string:
        return jsonQuoted(sampleString(name));
    case PropertyKind::BaseKind::integer:
        return sampleInteger(name);
    case PropertyKind::BaseKind::number:
        return sampleDouble(name);
    case PropertyKind::BaseKind::boolean:
        return "true";
    case PropertyKind::BaseKind::object:
        return sampleObject(std::get<PropertyKind::Object>(kind.value).properties, depth);
    case PropertyKind::BaseKind::array:
        return sampleArray(*std::get<PropertyKind::Array>(kind.value).element, name, depth);
    case PropertyKind::BaseKind::enumeration:
        break;
    }
    return sampleCase(std::get<PropertyKind::Enumeration>(kind.value).cases);
}

std::string singular(std::string_view name) {
    if (name.ends_with("ies") && characterCount(name) >= 4) {
        return std::string(name.substr(0, name.size() - 3)) + "y";
    }
    if (name.ends_with('s') && !name.ends_with("ss") && characterCount(name) > 1) {
        name.remove_suffix(1);
    }
    return std::string(name);
}

std::string sampleString(std::string_view name) {
    const std::string lower = lowercased(name);
    if (containsAny(lower, {"email"})) {
        return std::string(placeholderEmail);
    }
    if (containsAny(lower, {"url", "link"})) {
        return std::string(placeholderURL);
    }
    if (containsAny(lower, {"date"}) || (lower.ends_with("at") && characterCount(lower) >= 5)) {
        return "2026-10-03";
    }
    if (containsAny(lower, {"time"})) {
        return "14:30";
    }
    if (containsAny(lower, {"phone"})) {
        return "+1 555 0100";
    }
    if (lower.ends_with("id")) {
        return "a1b2c3";
    }
    if (containsAny(lower, {"title"})) {
        return "Example title";
    }
    if (containsAny(lower, {"name"})) {
        return "Jane Doe";
    }
    if (containsAny(lower, {"summary", "description", "reason", "explanation"})) {
        return "A short, clear explanation.";
    }
    if (containsAny(lower, {"tag", "keyword", "label", "category"})) {
        return "example";
    }
    if (containsAny(lower, {"lang"})) {
        return "en";
    }
    if (containsAny(lower, {"question"})) {
        return "What does this cover?";
    }
    if (containsAny(lower, {"answer", "text", "content", "body"})) {
        return "Generated text goes here.";
    }
    return "example " + std::string(name);
}

std::string sampleInteger(std::string_view name) {
    const std::string lower = lowercased(name);
    if (containsAny(lower, {"year"})) {
        return "2026";
    }
    if (containsAny(lower, {"age"})) {
        return "34";
    }
    if (containsAny(lower, {"priority", "rank", "level"})) {
        return "2";
    }
    if (containsAny(lower, {"count", "number", "quantity"})) {
        return "3";
    }
    return "42";
}

std::string sampleDouble(std::string_view name) {
    const std::string lower = lowercased(name);
    if (containsAny(lower, {"score", "confidence", "probability", "ratio"})) {
        return "0.87";
    }
    if (containsAny(lower, {"price", "amount", "cost"})) {
        return "19.99";
    }
    return "3.5";
}

std::string jsonQuoted(std::string_view text) {
    std::string quoted = "\"";
    for (const char c : text) {
        switch (c) {
        case '"':
            quoted += "\\\"";
            break;
        case '\\':
            quoted += "\\\\";
            break;
        case '\n':
            quoted += "\\n";
            break;
        case '\t':
            quoted += "\\t";
            break;
        default:
            quoted += c;
        }
    }
    return quoted + "\"";
}

} // namespace ombrel

#include "generable/ImportTexts.h"

#include <variant>

namespace ombrel {

std::string typeChoiceText(const ParsedType& type) {
    return type.name + " (" + (type.isGenerable ? "@Generable " : "") +
           (type.kind == ParsedType::Kind::enumeration ? "enum" : "struct") + ")";
}

std::string previewHeading(const AgentOutputKind& output) {
    if (const auto* enumeration = std::get_if<AgentOutputKind::Enumeration>(&output.value)) {
        const std::size_t count = enumeration->cases.size();
        return "Enum \u00b7 " + std::to_string(count) + (count == 1 ? " case" : " cases");
    }
    if (const auto* object = std::get_if<AgentOutputKind::Object>(&output.value)) {
        const std::size_t count = object->properties.size();
        return "Object \u00b7 " + std::to_string(count) +
               (count == 1 ? " property" : " properties");
    }
    return "Text";
}

std::string warningsHeading(std::size_t count) {
    return std::to_string(count) + (count == 1 ? " WARNING" : " WARNINGS");
}

std::string unreadableFileText(std::string_view fileName, std::string_view reason) {
    return "Couldn't read " + std::string(fileName) + ": " + std::string(reason);
}

} // namespace ombrel

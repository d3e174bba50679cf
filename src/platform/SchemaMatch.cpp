#include "platform/SchemaMatch.h"

#include "platform/Text.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <variant>

namespace ombrel {

namespace {

// How many places of a text are tried as the start of a JSON value.
constexpr int mostCandidates = 64;

std::string problem(const std::string& path, const std::string& what) {
    return (path.empty() ? "The answer " : "\"" + path + "\" ") + what;
}

std::optional<std::string> check(const GeneratedContent& content,
                                 const DynamicGenerationSchema& schema, const std::string& path);

std::optional<std::string> checkScalar(const GeneratedContent& content,
                                       DynamicGenerationSchema::Scalar scalar,
                                       const std::string& path) {
    using Scalar = DynamicGenerationSchema::Scalar;
    const auto* number = std::get_if<GeneratedContent::Number>(&content.kind);
    switch (scalar) {
    case Scalar::string:
        if (!std::holds_alternative<std::string>(content.kind)) {
            return problem(path, "is not a string");
        }
        break;
    case Scalar::integer:
        if (!number || number->value() != std::trunc(number->value())) {
            return problem(path, "is not a whole number");
        }
        break;
    case Scalar::number:
        if (!number) {
            return problem(path, "is not a number");
        }
        break;
    case Scalar::boolean:
        if (!std::holds_alternative<bool>(content.kind)) {
            return problem(path, "is not true or false");
        }
        break;
    }
    return std::nullopt;
}

std::optional<std::string> checkObject(const GeneratedContent& content,
                                       const DynamicGenerationSchema::Object& object,
                                       const std::string& path) {
    if (!std::holds_alternative<GeneratedContent::Structure>(content.kind)) {
        return problem(path, "is not an object");
    }
    for (const auto& property : object.properties) {
        const std::string inner = path.empty() ? property.name : path + "." + property.name;
        const GeneratedContent* value = content.find(property.name);
        if (!value ||
            (property.isOptional && std::holds_alternative<GeneratedContent::Null>(value->kind))) {
            if (!property.isOptional) {
                return problem(inner, "is missing");
            }
            continue;
        }
        if (auto wrong = check(*value, *property.schema, inner)) {
            return wrong;
        }
    }
    return std::nullopt;
}

std::optional<std::string> checkArray(const GeneratedContent& content,
                                      const DynamicGenerationSchema::ArrayOf& array,
                                      const std::string& path) {
    const auto* elements = std::get_if<GeneratedContent::Array>(&content.kind);
    if (!elements) {
        return problem(path, "is not a list");
    }
    const auto count = static_cast<std::int64_t>(elements->size());
    if (array.minimumElements && count < *array.minimumElements) {
        return problem(path, "has too few elements");
    }
    if (array.maximumElements && count > *array.maximumElements) {
        return problem(path, "has too many elements");
    }
    for (std::size_t i = 0; i < elements->size(); i++) {
        if (auto wrong =
                check((*elements)[i], *array.element, path + "[" + std::to_string(i) + "]")) {
            return wrong;
        }
    }
    return std::nullopt;
}

std::optional<std::string> check(const GeneratedContent& content,
                                 const DynamicGenerationSchema& schema, const std::string& path) {
    if (const auto* scalar = std::get_if<DynamicGenerationSchema::Scalar>(&schema.form)) {
        return checkScalar(content, *scalar, path);
    }
    if (const auto* object = std::get_if<DynamicGenerationSchema::Object>(&schema.form)) {
        return checkObject(content, *object, path);
    }
    if (const auto* array = std::get_if<DynamicGenerationSchema::ArrayOf>(&schema.form)) {
        return checkArray(content, *array, path);
    }
    const auto& choices = std::get<DynamicGenerationSchema::AnyOf>(schema.form).choices;
    const auto* text = std::get_if<std::string>(&content.kind);
    const auto isText = [&](const std::string& choice) { return repairUtf8(choice) == *text; };
    if (!text || std::none_of(choices.begin(), choices.end(), isText)) {
        return problem(path, "is none of the choices");
    }
    return std::nullopt;
}

// The end of the object or array that starts at the front of the text, by its brackets; 0 when it
// does not end.
std::size_t balancedLength(std::string_view text) {
    std::size_t depth = 0;
    bool isInString = false;
    for (std::size_t i = 0; i < text.size(); i++) {
        const char byte = text[i];
        if (isInString) {
            if (byte == '\\') {
                i++;
            } else if (byte == '"') {
                isInString = false;
            }
        } else if (byte == '"') {
            isInString = true;
        } else if (byte == '{' || byte == '[') {
            depth++;
        } else if (byte == '}' || byte == ']') {
            depth--;
            if (depth == 0) {
                return i + 1;
            }
        }
    }
    return 0;
}

// Calls `isWanted` for each JSON object and array in the text that is in no other, until it says
// yes to one: that one. Of objects and arrays only those whose bracket is among `brackets`.
template <class IsWanted>
std::optional<GeneratedContent> firstInText(std::string_view text, std::string_view brackets,
                                            IsWanted isWanted) {
    int candidates = 0;
    for (std::size_t i = text.find_first_of(brackets); i != std::string_view::npos;
         i = text.find_first_of(brackets, i + 1)) {
        const std::string_view rest = text.substr(i);
        if (++candidates > mostCandidates) {
            break;
        }
        const std::size_t length = balancedLength(rest);
        if (length == 0) {
            continue;
        }
        if (auto content = GeneratedContent::parse(rest.substr(0, length))) {
            if (isWanted(*content)) {
                return std::move(*content);
            }
            i += length - 1; // What is in it is not an answer of its own.
        }
    }
    return std::nullopt;
}

} // namespace

std::optional<std::string> whyNotFitting(const GeneratedContent& content,
                                         const DynamicGenerationSchema& schema) {
    return check(content, schema, "");
}

Result<GeneratedContent> contentInText(std::string_view text,
                                       const DynamicGenerationSchema& schema) {
    const std::string_view trimmed = trimWhitespacesAndNewlines(text);
    std::optional<std::string> firstProblem;
    const auto fits = [&](const GeneratedContent& content) {
        auto wrong = whyNotFitting(content, schema);
        if (wrong && !firstProblem) {
            firstProblem = wrong;
        }
        return !wrong;
    };
    if (auto whole = GeneratedContent::parse(trimmed); whole && fits(*whole)) {
        return whole;
    }
    const auto* scalar = std::get_if<DynamicGenerationSchema::Scalar>(&schema.form);
    if ((scalar && *scalar == DynamicGenerationSchema::Scalar::string) ||
        std::holds_alternative<DynamicGenerationSchema::AnyOf>(schema.form)) {
        GeneratedContent plain{std::string(trimmed)};
        if (fits(plain)) {
            return plain;
        }
    }
    if (auto within = firstInText(text, "{[", fits)) {
        return std::move(*within);
    }
    return failure(firstProblem.value_or("The answer holds no JSON") + ".");
}

std::optional<GeneratedContent> jsonInText(std::string_view text,
                                           const DynamicGenerationSchema& schema) {
    if (auto whole = GeneratedContent::parse(trimWhitespacesAndNewlines(text))) {
        return std::move(*whole);
    }
    const bool isArray = std::holds_alternative<DynamicGenerationSchema::ArrayOf>(schema.form);
    return firstInText(text, isArray ? "[" : "{", [](const GeneratedContent&) { return true; });
}

GeneratedContent withoutAbsent(GeneratedContent content, const DynamicGenerationSchema& schema) {
    if (const auto* array = std::get_if<DynamicGenerationSchema::ArrayOf>(&schema.form)) {
        if (auto* elements = std::get_if<GeneratedContent::Array>(&content.kind)) {
            for (GeneratedContent& element : *elements) {
                element = withoutAbsent(std::move(element), *array->element);
            }
        }
        return content;
    }
    const auto* object = std::get_if<DynamicGenerationSchema::Object>(&schema.form);
    auto* entries = std::get_if<GeneratedContent::Structure>(&content.kind);
    if (!object || !entries) {
        return content;
    }
    for (const auto& property : object->properties) {
        const std::string name = repairUtf8(property.name);
        const auto entry = std::ranges::find(*entries, name, &GeneratedContent::Entry::key);
        if (entry == entries->end()) {
            continue;
        }
        if (property.isOptional &&
            std::holds_alternative<GeneratedContent::Null>(entry->value.kind)) {
            entries->erase(entry);
        } else {
            entry->value = withoutAbsent(std::move(entry->value), *property.schema);
        }
    }
    return content;
}

} // namespace ombrel

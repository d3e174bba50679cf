#pragma once

#include "platform/Result.h"

#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace ombrel {

// A value that the model generated under a schema. A number keeps the text that the model wrote.
struct GeneratedContent {
    struct Null {
        bool operator==(const Null&) const = default;
    };
    struct Number {
        std::string text; // as JSON writes it
        double value() const;
        bool operator==(const Number&) const = default;
    };
    using Array = std::vector<GeneratedContent>;
    // In the order in which the model wrote them; the first of repeated keys counts.
    using Structure = std::vector<std::pair<std::string, GeneratedContent>>;

    std::variant<Null, bool, Number, std::string, Array, Structure> kind;

    bool operator==(const GeneratedContent& other) const;

    // The content under a key of a structure, or nothing.
    const GeneratedContent* find(std::string_view key) const;

    // Compact JSON text of the value: the plain text form.
    std::string text() const;
    // The form shown where a value does not have the type that was asked for; here the JSON text.
    std::string debugDescription() const { return text(); }

    // Reads one JSON value. Text before and after it other than white space is an error.
    static Result<GeneratedContent> parse(std::string_view json);
};

} // namespace ombrel

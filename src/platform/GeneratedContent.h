#pragma once

#include "platform/Result.h"

#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace ombrel {

// A value that the model generated under a schema. A number keeps the text that the model wrote.
struct GeneratedContent {
    struct Null {
        bool operator==(const Null&) const = default;
    };
    struct Number {
        std::string text;     // as JSON writes it, such as "1e400"
        double value() const; // the nearest; infinite or zero beyond what a double holds
        bool operator==(const Number&) const = default;
    };
    using Array = std::vector<GeneratedContent>;
    // In the order in which the model wrote them; the first of repeated keys counts.
    struct Entry;
    using Structure = std::vector<Entry>;

    std::variant<Null, bool, Number, std::string, Array, Structure> kind;

    // Numbers by their text, structures with their order.
    bool operator==(const GeneratedContent& other) const;

    // The content under a key of a structure, or nothing. Invalid UTF-8 in the key reads as U+FFFD,
    // as it does in what was parsed.
    const GeneratedContent* find(std::string_view key) const;

    // Compact JSON text of the value: the plain text form.
    std::string text() const;
    // The form shown where a value does not have the type that was asked for; here the JSON text.
    std::string debugDescription() const { return text(); }

    // Reads one JSON value, in which arrays and structures stand at most 256 deep. Text before and
    // after it other than white space is an error. Bytes that are not UTF-8 read as U+FFFD.
    static Result<GeneratedContent> parse(std::string_view json);
};

struct GeneratedContent::Entry {
    std::string key;
    GeneratedContent value;
    bool operator==(const Entry& other) const;
};

} // namespace ombrel

#pragma once

#include "core/AgentOutputKind.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

// What a result of an output may look like, with values made up from the names of the fields.
namespace ombrel {

// The example: JSON text, or a sentence for an output of text. Nothing for an enumeration without
// cases and an object without properties.
std::optional<std::string> exampleJSON(const AgentOutputKind& output);

// `depth` is how many steps of two blanks the line is indented that the value begins on.
std::string sampleObject(const std::vector<AgentProperty>& properties, int depth);
std::string sampleValue(const PropertyKind& kind, std::string_view name, int depth);

// The name for one element of an array with the name: "tags" gives "tag", "categories" "category".
std::string singular(std::string_view name);

// The value for a field with the name: the first rule that its lower-cased name meets decides.
std::string sampleString(std::string_view name);
std::string sampleInteger(std::string_view name);
std::string sampleDouble(std::string_view name);

// The text between double quotes, with quotes, backslashes, newlines and tabs escaped. Other
// control characters stay as they are.
std::string jsonQuoted(std::string_view text);

} // namespace ombrel

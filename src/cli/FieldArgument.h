#pragma once

#include "core/AgentEnumCase.h"
#include "core/AgentProperty.h"

#include <string>
#include <vector>

// Typed fields and cases as they are written on the command line.
namespace ombrel {

inline constexpr const char* fieldSyntax = "NAME[:TYPE][=DESCRIPTION]";
// For the help of commands that take fields.
inline constexpr const char* fieldTypesHelp =
    "A TYPE is String (the default), Int, Double, Bool, Enum(one|two) or [TYPE], with ? behind it "
    "when the field is optional.";

// Throw `Failure` when the text is not of the form.
AgentProperty parseField(const std::string& text);
AgentEnumCase parseEnumCase(const std::string& text); // NAME[=DESCRIPTION]

std::vector<AgentProperty> parseFields(const std::vector<std::string>& texts);
std::vector<AgentEnumCase> parseEnumCases(const std::vector<std::string>& texts);

// The type as it would be written; "Object" and "[Object]" for what can't be.
std::string fieldTypeText(const PropertyKind& kind);

} // namespace ombrel

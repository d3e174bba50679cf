#pragma once

#include "generable/TokenCursor.h"

#include <optional>
#include <string>
#include <vector>

namespace ombrel {

// The tokens as text: `[String: Int]`, `.range(0...10)`.
std::string renderTokens(TokenCursor::Span tokens);

// What the arguments of @Guide say.
struct Guide {
    std::optional<std::string> description;
    std::vector<std::string> constraints; // all that is neither a description nor a choice
    std::optional<std::vector<std::string>> anyOf;
    bool hasNonLiteralDescription = false;
};

Guide parseGuide(TokenCursor::Span arguments);

} // namespace ombrel

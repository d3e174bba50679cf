#pragma once

#include <cstdint>
#include <string_view>

namespace ombrel {

// Characters for each token, everywhere.
inline constexpr std::int64_t charactersPerToken = 4;

// The one measure of size: characters divided by four, rounded down, never less than 1.
std::int64_t estimateTokens(std::string_view text);

} // namespace ombrel

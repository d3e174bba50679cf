#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace ombrel {

// Characters for each token, everywhere.
inline constexpr std::int64_t charactersPerToken = 4;

// The one measure of size: characters divided by four, rounded down, never less than 1.
std::int64_t estimateTokens(std::string_view text);
// The same for a text whose characters have been counted.
std::int64_t estimateTokensOf(std::size_t characters);

} // namespace ombrel

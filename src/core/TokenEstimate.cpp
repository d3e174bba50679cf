#include "core/TokenEstimate.h"

#include "platform/Text.h"

#include <algorithm>

namespace ombrel {

std::int64_t estimateTokens(std::string_view text) {
    return estimateTokensOf(characterCount(text));
}

std::int64_t estimateTokensOf(std::size_t characters) {
    return std::max<std::int64_t>(static_cast<std::int64_t>(characters) / charactersPerToken, 1);
}

} // namespace ombrel

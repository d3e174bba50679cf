#include "core/TokenEstimate.h"

#include "platform/Text.h"

#include <algorithm>

namespace ombrel {

std::int64_t estimateTokens(std::string_view text) {
    const auto characters = static_cast<std::int64_t>(characterCount(text));
    return std::max<std::int64_t>(characters / charactersPerToken, 1);
}

} // namespace ombrel

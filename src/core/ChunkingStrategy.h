#pragma once

#include "core/Record.h"

namespace ombrel {

enum class ChunkingStrategy { fixed, paragraph, headingAware };

constexpr auto rawValues(ChunkingStrategy) {
    using enum ChunkingStrategy;
    return std::array{RawValue<ChunkingStrategy>{fixed, "Fixed"},
                      RawValue<ChunkingStrategy>{paragraph, "Paragraph"},
                      RawValue<ChunkingStrategy>{headingAware, "Heading-aware"}};
}

} // namespace ombrel

#pragma once

#include "core/Record.h"

namespace ombrel {

// How an attached index is searched during a run.
enum class WireRAGIndexKind { keyword, vector, hybrid };

constexpr auto rawValues(WireRAGIndexKind) {
    using enum WireRAGIndexKind;
    return std::array{RawValue<WireRAGIndexKind>{keyword, "keyword"},
                      RawValue<WireRAGIndexKind>{vector, "vector"},
                      RawValue<WireRAGIndexKind>{hybrid, "hybrid"}};
}

} // namespace ombrel

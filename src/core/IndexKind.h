#pragma once

#include "core/Record.h"

namespace ombrel {

enum class IndexKind { spotlight, keyword, vector, hybrid };

constexpr auto rawValues(IndexKind) {
    using enum IndexKind;
    return std::array{RawValue<IndexKind>{spotlight, "Spotlight"},
                      RawValue<IndexKind>{keyword, "Keyword"},
                      RawValue<IndexKind>{vector, "Vector"}, RawValue<IndexKind>{hybrid, "Hybrid"}};
}

// What the tile says below the label.
std::string_view subtitle(IndexKind kind);

} // namespace ombrel

#pragma once

#include "core/IndexKind.h"
#include "core/Record.h"

#include <optional>

namespace ombrel {

enum class QueryTransform { direct, rewrite, multiQuery, hyde, tool };

constexpr auto rawValues(QueryTransform) {
    using enum QueryTransform;
    return std::array{RawValue<QueryTransform>{direct, "Direct"},
                      RawValue<QueryTransform>{rewrite, "Query rewrite"},
                      RawValue<QueryTransform>{multiQuery, "Multi-query"},
                      RawValue<QueryTransform>{hyde, "HyDE"},
                      RawValue<QueryTransform>{tool, "Tool (agentic)"}};
}

// What the tile says while it can be selected.
std::string_view subtitle(QueryTransform transform);

// Why the transform cannot be chosen beside the index kind, or nothing when it can. The only rule
// of combination that there is.
std::optional<std::string_view> disabledReason(QueryTransform transform, IndexKind index);

} // namespace ombrel

#include "core/QueryTransform.h"

namespace ombrel {

std::string_view subtitle(QueryTransform transform) {
    switch (transform) {
    case QueryTransform::direct:
        return "Search with the question as asked";
    case QueryTransform::rewrite:
        return "Model turns the question into a search query";
    case QueryTransform::multiQuery:
        return "2\u20133 variants, results merged";
    case QueryTransform::hyde:
        return "Search with a drafted answer";
    case QueryTransform::tool:
        return "Model decides when, what, and how many times to search";
    }
    return {};
}

std::optional<std::string_view> disabledReason(QueryTransform transform, IndexKind index) {
    const bool hasVectors = index == IndexKind::vector || index == IndexKind::hybrid;
    if (transform == QueryTransform::hyde && !hasVectors) {
        return "Needs a vector-only index";
    }
    return std::nullopt;
}

} // namespace ombrel

#include "core/IndexKind.h"

namespace ombrel {

std::string_view subtitle(IndexKind kind) {
    switch (kind) {
    case IndexKind::spotlight:
        return "Apple's SpotlightSearchTool; Tool mode only";
    case IndexKind::keyword:
        return "BM25 full-text; exact names and codes";
    case IndexKind::vector:
        return "Embeddings built on Mac, shipped in bundle";
    case IndexKind::hybrid:
        return "Keyword + vector, rank fusion";
    }
    return {};
}

} // namespace ombrel

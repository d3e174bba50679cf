#include "retrieval/EffectiveIndexKind.h"

namespace ombrel {

IndexKind effectiveIndexKind(IndexKind selected, const IndexedChunks& pairs) {
    const bool needsEmbeddings = selected == IndexKind::vector || selected == IndexKind::hybrid;
    return needsEmbeddings && allHaveEmbeddings(pairs) ? selected : IndexKind::keyword;
}

} // namespace ombrel

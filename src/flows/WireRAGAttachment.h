#pragma once

#include "core/CowArray.h"
#include "flows/WireRAGChunk.h"
#include "flows/WireRAGIndexKind.h"

#include <cstdint>

namespace ombrel {

// An agent's knowledge, in full.
struct WireRAGAttachment {
    WireRAGIndexKind indexKind = WireRAGIndexKind::keyword;
    std::int64_t topK = 0;         // passages to retrieve
    double threshold = 0;          // the least score of a passage
    CowArray<WireRAGChunk> chunks; // in document order

    static constexpr auto keys() {
        return std::tuple(required("indexKind", &WireRAGAttachment::indexKind),
                          required("topK", &WireRAGAttachment::topK),
                          required("threshold", &WireRAGAttachment::threshold),
                          required("chunks", &WireRAGAttachment::chunks));
    }
    bool operator==(const WireRAGAttachment&) const = default;
};

} // namespace ombrel

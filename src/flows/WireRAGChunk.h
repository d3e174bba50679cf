#pragma once

#include "core/Record.h"
#include "core/SharedReals.h"
#include "core/SharedText.h"
#include "platform/Uuid.h"

#include <optional>

namespace ombrel {

// One passage of an attached index. Texts and vectors are the project's own, not copies.
struct WireRAGChunk {
    Uuid id;
    SharedText breadcrumb;     // its parts with " > " between
    SharedText searchableText; // what the index searches
    SharedText packableText;   // what goes into the prompt
    std::optional<SharedReals> embedding;

    static constexpr auto keys() {
        return std::tuple(required("id", &WireRAGChunk::id),
                          required("breadcrumb", &WireRAGChunk::breadcrumb),
                          required("searchableText", &WireRAGChunk::searchableText),
                          required("packableText", &WireRAGChunk::packableText),
                          optional("embedding", &WireRAGChunk::embedding));
    }
    bool operator==(const WireRAGChunk&) const = default;
};

} // namespace ombrel

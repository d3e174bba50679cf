#pragma once

#include "core/Record.h"
#include "platform/Uuid.h"

#include <string>

namespace ombrel {

// A piece of knowledge that reached an agent.
struct RetrievedContextChunk {
    Uuid id;                // new for each run
    std::string breadcrumb; // its parts with " > " between
    std::string text;       // the parent's where there is one
    double score = 0;       // as the search gave it

    static constexpr auto keys() {
        return std::tuple(required("id", &RetrievedContextChunk::id),
                          required("breadcrumb", &RetrievedContextChunk::breadcrumb),
                          required("text", &RetrievedContextChunk::text),
                          required("score", &RetrievedContextChunk::score));
    }
    bool operator==(const RetrievedContextChunk&) const = default;
};

} // namespace ombrel

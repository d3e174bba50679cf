#pragma once

#include "core/Record.h"
#include "platform/Uuid.h"

#include <cstdint>

namespace ombrel {

// A knowledge index attached to an agent. The index may be gone: then it is skipped.
struct AgentRAGAttachment {
    Uuid id;
    Uuid ragIndexID;
    std::int64_t topK = 5;
    double threshold = 0; // the least score that a hit must reach

    static constexpr auto keys() {
        return std::tuple(required("id", &AgentRAGAttachment::id),
                          required("ragIndexID", &AgentRAGAttachment::ragIndexID),
                          required("topK", &AgentRAGAttachment::topK),
                          required("threshold", &AgentRAGAttachment::threshold));
    }
    bool operator==(const AgentRAGAttachment&) const = default;
};

} // namespace ombrel

#pragma once

#include "agents/RetrievedContextChunk.h"
#include "core/Record.h"
#include "platform/Uuid.h"

#include <string>
#include <vector>

namespace ombrel {

// What one attached knowledge index contributed to a run.
struct AgentRetrievedContext {
    Uuid id; // new for each run
    std::string ragIndexName;
    std::vector<RetrievedContextChunk> chunks; // those that cleared the attachment's threshold

    static constexpr auto keys() {
        return std::tuple(required("id", &AgentRetrievedContext::id),
                          required("ragIndexName", &AgentRetrievedContext::ragIndexName),
                          required("chunks", &AgentRetrievedContext::chunks));
    }
    bool operator==(const AgentRetrievedContext&) const = default;
};

} // namespace ombrel

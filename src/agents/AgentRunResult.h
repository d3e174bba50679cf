#pragma once

#include "agents/AgentOutputField.h"
#include "agents/AgentRetrievedContext.h"
#include "core/Record.h"

#include <string>
#include <vector>

namespace ombrel {

// The outcome of one run of an agent.
struct AgentRunResult {
    std::string outputText; // the answer, JSON of an object, or what went wrong
    double durationSeconds = 0;
    bool isError = false;
    std::vector<AgentRetrievedContext> retrievedContext; // one for each attachment that exists
    std::vector<AgentOutputField> objectFields;          // of an object output only

    static constexpr auto keys() {
        return std::tuple(required("outputText", &AgentRunResult::outputText),
                          required("durationSeconds", &AgentRunResult::durationSeconds),
                          required("isError", &AgentRunResult::isError),
                          required("retrievedContext", &AgentRunResult::retrievedContext),
                          required("objectFields", &AgentRunResult::objectFields));
    }
    bool operator==(const AgentRunResult&) const = default;
};

} // namespace ombrel

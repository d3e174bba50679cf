#pragma once

#include "agents/AgentRunResult.h"
#include "cli/Command.h"
#include "core/AppState.h"

#include <cstdint>
#include <vector>

// What the commands about agents print, for people or as JSON.
namespace ombrel {

void printAgents(const AppState& state, const Invocation& invocation);
void printAgent(const AppState& state, Uuid id, const Invocation& invocation);
void printCases(const Agent& agent, const Invocation& invocation);
void printRun(const AgentRunResult& result, const Invocation& invocation);
// Throws `Failure` when the output has no example yet.
void printExample(const AgentOutputKind& output, const Invocation& invocation);

struct CaseResults {
    std::vector<AgentEvaluationCase> evaluationCases; // those that ran
    std::int64_t passed = 0;
    std::int64_t failed = 0;
    std::int64_t unjudged = 0;

    static constexpr auto keys() {
        return std::tuple(required("evaluationCases", &CaseResults::evaluationCases),
                          required("passed", &CaseResults::passed),
                          required("failed", &CaseResults::failed),
                          required("unjudged", &CaseResults::unjudged));
    }
};

// Cases that ran, with how many passed.
void printResults(const Agent& agent, const CaseResults& results, const Invocation& invocation);

} // namespace ombrel

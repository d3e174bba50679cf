#pragma once

#include "core/AgentEvaluationCase.h"
#include "core/AgentOutputKind.h"
#include "core/AgentProperty.h"
#include "core/AgentRAGAttachment.h"
#include "platform/Uuid.h"

#include <string>
#include <string_view>
#include <vector>

namespace ombrel {

// A model with instructions, typed input, typed output and knowledge.
struct Agent {
    Uuid id;
    std::string name;
    std::string summary;
    std::string instructions; // may hold {{context.field}} placeholders
    std::vector<AgentProperty> input;
    AgentOutputKind output;
    std::vector<Uuid> toolIDs;
    std::vector<std::string> contextFieldNames;
    std::vector<AgentRAGAttachment> ragAttachments;
    std::vector<AgentEvaluationCase> evaluationCases;

    static constexpr auto keys() {
        return std::tuple(required("id", &Agent::id), required("name", &Agent::name),
                          required("summary", &Agent::summary),
                          required("instructions", &Agent::instructions),
                          required("input", &Agent::input), required("output", &Agent::output),
                          required("toolIDs", &Agent::toolIDs),
                          required("contextFieldNames", &Agent::contextFieldNames),
                          defaulted("ragAttachments", &Agent::ragAttachments),
                          defaulted("evaluationCases", &Agent::evaluationCases));
    }
    bool operator==(const Agent&) const = default;
};

// A new agent: a new id, the name, output as text, nothing else.
Agent newAgent(std::string name);

// "{{context.NAME}}".
std::string contextPlaceholder(std::string_view fieldName);

} // namespace ombrel

#pragma once

#include "core/Record.h"
#include "platform/Uuid.h"

#include <map>
#include <optional>
#include <string>

namespace ombrel {

// A sample input with what is expected of the answer.
struct AgentEvaluationCase {
    Uuid id;
    std::string input;
    std::string expectedEnumCase;                            // empty: no expectation
    std::map<std::string, std::string> expectedObjectFields; // text by field name
    std::optional<std::string> lastOutput;
    std::optional<bool> lastPassed; // absent when there was nothing to judge

    static constexpr auto keys() {
        return std::tuple(
            required("id", &AgentEvaluationCase::id),
            required("input", &AgentEvaluationCase::input),
            defaulted("expectedEnumCase", &AgentEvaluationCase::expectedEnumCase),
            defaulted("expectedObjectFields", &AgentEvaluationCase::expectedObjectFields),
            optional("lastOutput", &AgentEvaluationCase::lastOutput),
            optional("lastPassed", &AgentEvaluationCase::lastPassed));
    }
    bool operator==(const AgentEvaluationCase&) const = default;
};

} // namespace ombrel

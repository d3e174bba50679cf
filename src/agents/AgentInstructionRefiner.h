#pragma once

#include "core/Agent.h"
#include "platform/OnDeviceModel.h"
#include "platform/Result.h"
#include "platform/Task.h"

#include <memory>
#include <string>
#include <string_view>

namespace ombrel {

// Rewrites an agent's instructions with the model, which is told what the agent takes and gives.
struct AgentInstructionRefiner {
    struct Result {
        std::string instructions;
        std::string summary; // what was changed, and why

        static constexpr auto keys() {
            return std::tuple(required("instructions", &Result::instructions),
                              required("summary", &Result::summary));
        }
        bool operator==(const Result&) const = default;
    };

    // The one failure that is not the model's own.
    struct RefinementError {
        static constexpr std::string_view modelUnavailable =
            "On-device model unavailable \u2014 enable Apple Intelligence to refine instructions.";
    };

    // The proposal. Main thread. Fails with `RefinementError::modelUnavailable` or with the model's
    // error; the agent is a copy, and nothing changes it.
    static Task<ombrel::Result<Result>> refine(std::shared_ptr<OnDeviceModel> model, Agent agent);

    // The agent's name, summary, input, output and context fields, each on a line.
    static std::string setupDescription(const Agent& agent);
};

// Whether there are instructions to refine.
bool canRefineInstructions(const Agent& agent);

} // namespace ombrel

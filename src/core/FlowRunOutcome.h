#pragma once

#include "core/FlowTraceEvent.h"
#include "core/Record.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace ombrel {

// What came back from a run of a flow.
struct FlowRunOutcome {
    std::vector<FlowTraceEvent> trace;       // empty when the run failed
    std::vector<std::string> resultLines;    // every line that begins "RESULT:", as it stands
    std::optional<std::string> resultLine;   // the last of them
    std::string rawOutput;                   // standard output, a line feed and standard error
    std::optional<std::string> errorMessage; // set when the run failed

    static FlowRunOutcome failed(std::string message, std::string rawOutput = {}) {
        FlowRunOutcome outcome;
        outcome.rawOutput = std::move(rawOutput);
        outcome.errorMessage = std::move(message);
        return outcome;
    }

    static constexpr auto keys() {
        return std::tuple(required("trace", &FlowRunOutcome::trace),
                          required("resultLines", &FlowRunOutcome::resultLines),
                          optional("resultLine", &FlowRunOutcome::resultLine),
                          required("rawOutput", &FlowRunOutcome::rawOutput),
                          optional("errorMessage", &FlowRunOutcome::errorMessage));
    }
    bool operator==(const FlowRunOutcome&) const = default;
};

} // namespace ombrel

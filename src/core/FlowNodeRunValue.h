#pragma once

#include "core/Record.h"

#include <cstdint>
#include <optional>
#include <string>

namespace ombrel {

// What a node of a flow saw during a run.
struct FlowNodeRunValue {
    std::optional<std::string> input;
    std::optional<std::string> output;
    std::optional<std::int64_t> tokenEstimate;
    std::optional<std::string> retrieval;
    std::optional<std::string> error;
    std::int64_t step = 0; // its place on the path, from 1; 0 while the path has not reached it

    static constexpr auto keys() {
        return std::tuple(optional("input", &FlowNodeRunValue::input),
                          optional("output", &FlowNodeRunValue::output),
                          optional("tokenEstimate", &FlowNodeRunValue::tokenEstimate),
                          optional("retrieval", &FlowNodeRunValue::retrieval),
                          optional("error", &FlowNodeRunValue::error),
                          required("step", &FlowNodeRunValue::step));
    }
    bool operator==(const FlowNodeRunValue&) const = default;
};

} // namespace ombrel

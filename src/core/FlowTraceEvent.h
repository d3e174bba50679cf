#pragma once

#include "core/Record.h"
#include "platform/Uuid.h"

#include <cstdint>
#include <optional>
#include <string>

namespace ombrel {

// One step of a run, as the running flow reports it.
struct FlowTraceEvent {
    Uuid id;                         // made on reading
    std::int64_t elapsedMS = 0;      // since the run began
    std::string kind;                // open vocabulary: a reader passes over what it doesn't know
    std::optional<std::string> node; // name of the agent or tool
    std::string detail;
    std::optional<std::int64_t> tokenEstimate; // of a prompt

    static constexpr auto keys() {
        return std::tuple(
            required("id", &FlowTraceEvent::id), required("elapsedMS", &FlowTraceEvent::elapsedMS),
            required("kind", &FlowTraceEvent::kind), optional("node", &FlowTraceEvent::node),
            required("detail", &FlowTraceEvent::detail),
            optional("tokenEstimate", &FlowTraceEvent::tokenEstimate));
    }
    bool operator==(const FlowTraceEvent&) const = default;
};

} // namespace ombrel

#pragma once

#include "core/Record.h"
#include "platform/Uuid.h"

#include <optional>
#include <string>

namespace ombrel {

// Something that is wrong with a flow. Errors keep it from being run and exported.
struct FlowIssue {
    enum class Severity { error, warning };

    Uuid id; // a new one at every validation
    Severity severity = Severity::error;
    std::string message;
    std::optional<Uuid> nodeID; // none when the flow as a whole is meant

    // What is told of it; the id means nothing outside one list of issues.
    static constexpr auto keys() {
        return std::tuple(required("severity", &FlowIssue::severity),
                          required("message", &FlowIssue::message),
                          optional("nodeID", &FlowIssue::nodeID));
    }
    bool operator==(const FlowIssue&) const = default;
};

constexpr auto rawValues(FlowIssue::Severity) {
    using S = FlowIssue::Severity;
    return std::array{RawValue<S>{S::error, "error"}, RawValue<S>{S::warning, "warning"}};
}

} // namespace ombrel

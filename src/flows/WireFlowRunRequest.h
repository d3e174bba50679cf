#pragma once

#include "flows/WireFlowSpec.h"

#include <string>

namespace ombrel {

// What the tool that runs a flow is asked.
struct WireFlowRunRequest {
    WireFlowSpec flow;
    std::string runtimePath;      // absolute: the package that the generated one depends on
    std::string packageDirectory; // absolute: where this flow is generated and built
    std::string inputJSON; // a JSON text: an object, or of a conversation an array of strings

    static constexpr auto keys() {
        return std::tuple(required("flow", &WireFlowRunRequest::flow),
                          required("runtimePath", &WireFlowRunRequest::runtimePath),
                          required("packageDirectory", &WireFlowRunRequest::packageDirectory),
                          required("inputJSON", &WireFlowRunRequest::inputJSON));
    }
    bool operator==(const WireFlowRunRequest&) const = default;
};

[[nodiscard]] bool encode(JsonWriter& writer, const WireFlowRunRequest& request);

} // namespace ombrel

#pragma once

#include "flows/WireFlowSpec.h"

#include <string>
#include <vector>

namespace ombrel {

// What the tool that exports the flows of a project is asked.
struct WireProjectExportRequest {
    std::vector<WireFlowSpec> flows; // in project order
    std::string packageName;
    std::string destinationDirectory; // absolute, chosen by the user
    std::string runtimeSourcePath;    // absolute: the package to copy

    static constexpr auto keys() {
        return std::tuple(
            required("flows", &WireProjectExportRequest::flows),
            required("packageName", &WireProjectExportRequest::packageName),
            required("destinationDirectory", &WireProjectExportRequest::destinationDirectory),
            required("runtimeSourcePath", &WireProjectExportRequest::runtimeSourcePath));
    }
    bool operator==(const WireProjectExportRequest&) const = default;
};

[[nodiscard]] bool encode(JsonWriter& writer, const WireProjectExportRequest& request);

} // namespace ombrel

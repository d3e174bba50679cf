#pragma once

#include "core/BuildSettings.h"
#include "platform/Date.h"

#include <optional>
#include <string>

namespace ombrel {

// The header of a project.
struct Project {
    std::string name = "New Project";
    std::string lastBuiltDescription = "Not built yet"; // or "Build Succeeded"
    std::optional<Date> lastBuildFinishedAt;
    std::optional<BuildSettings> lastBuiltSettings; // of the variant selected at its end

    static constexpr auto keys() {
        return std::tuple(required("name", &Project::name),
                          required("lastBuiltDescription", &Project::lastBuiltDescription),
                          optional("lastBuildFinishedAt", &Project::lastBuildFinishedAt),
                          optional("lastBuiltSettings", &Project::lastBuiltSettings));
    }

    bool operator==(const Project&) const = default;
};

} // namespace ombrel

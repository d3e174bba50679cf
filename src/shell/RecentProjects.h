#pragma once

#include "shell/RecentProject.h"
#include "shell/StudioSettings.h"

#include <filesystem>
#include <vector>

namespace ombrel {

// Remembers that a project was opened or saved there: it becomes the first of the recent ones.
void noteRecentProject(StudioSettings& settings, const std::filesystem::path& path);

// The projects that were opened, most recent first, those that still exist.
std::vector<RecentProject> loadRecentProjects(const StudioSettings& settings);

} // namespace ombrel

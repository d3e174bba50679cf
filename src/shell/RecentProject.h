#pragma once

#include "platform/Date.h"

#include <filesystem>
#include <optional>

namespace ombrel {

// A row of the welcome window.
struct RecentProject {
    std::filesystem::path url;
    std::optional<Date> modified; // absent when it can't be read
    bool operator==(const RecentProject&) const = default;
};

} // namespace ombrel

#pragma once

#include <filesystem>
#include <system_error>

namespace ombrel {

// Whether something is there, followed through links; false when that can't be told. Any thread.
inline bool fileExists(const std::filesystem::path& path) {
    std::error_code error;
    return std::filesystem::exists(path, error);
}

} // namespace ombrel

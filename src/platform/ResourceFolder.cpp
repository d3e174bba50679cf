#include "platform/ResourceFolder.h"

#include <system_error>

namespace ombrel {

std::filesystem::path resourceFolder() {
    std::error_code error;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
    if (!error) {
        auto installed = program.parent_path().parent_path() / "share" / "ombrel";
        if (std::filesystem::is_directory(installed, error)) {
            return installed;
        }
    }
    return OMBREL_RESOURCES;
}

} // namespace ombrel

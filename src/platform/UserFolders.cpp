#include "platform/UserFolders.h"

#include <cstdlib>
#include <pwd.h>
#include <unistd.h>

namespace ombrel {

namespace {

std::filesystem::path homeFolder() {
    if (const char* home = std::getenv("HOME"); home && *home) {
        return home;
    }
    const passwd* user = getpwuid(getuid());
    return user && user->pw_dir ? user->pw_dir : "/";
}

std::filesystem::path folder(const char* variable, const char* fallback) {
    const char* value = std::getenv(variable);
    // A relative path in one of these variables is to be ignored.
    if (value && *value == '/') {
        return std::filesystem::path(value) / "Ombrel";
    }
    return homeFolder() / fallback / "Ombrel";
}

} // namespace

std::filesystem::path userDataFolder() {
    return folder("XDG_DATA_HOME", ".local/share");
}
std::filesystem::path userCacheFolder() {
    return folder("XDG_CACHE_HOME", ".cache");
}
std::filesystem::path userConfigFolder() {
    return folder("XDG_CONFIG_HOME", ".config");
}

} // namespace ombrel

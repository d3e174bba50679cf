#pragma once

#include <filesystem>

// This user's folders, as the XDG base directory specification places them. None is created.
namespace ombrel {

// $XDG_DATA_HOME/Ombrel, by default ~/.local/share/Ombrel: Tools, Models, Packages.
std::filesystem::path userDataFolder();
// $XDG_CACHE_HOME/Ombrel, by default ~/.cache/Ombrel: what can be made again.
std::filesystem::path userCacheFolder();
// $XDG_CONFIG_HOME/Ombrel, by default ~/.config/Ombrel: settings.json.
std::filesystem::path userConfigFolder();

} // namespace ombrel

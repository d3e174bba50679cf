#pragma once

#include "platform/FileOperations.h"

#include <filesystem>
#include <optional>
#include <string_view>

// The Swift packages that the program ships as sources are built in copies of this user's own. A
// shipped package and its copy carry the same stamp (".ombrel-bundle-stamp", a text) when they are
// the same.
namespace ombrel {

// The copy of a shipped package in the folder `root`, under the same name. It is made, or made anew
// when its stamp is not the shipped one's (also when that is older), when either has none, and when
// its manifest is gone. Its build results (".build") stay. The old copy is moved aside, the new one
// moved into its place and the old one removed, so that a failure at any point leaves a copy that
// works; then that one is given. None when there is no shipped package, and when there is no copy
// and none could be made.
std::optional<std::filesystem::path>
installPackage(const std::filesystem::path& shipped, const std::filesystem::path& root,
               FileOperations& files = FileOperations::system());

// The same for the package that the program ships under the name: the copy is
// `userDataFolder()`/Packages/NAME.
std::optional<std::filesystem::path> installedPackagePath(std::string_view name);

} // namespace ombrel

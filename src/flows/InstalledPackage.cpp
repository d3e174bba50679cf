#include "flows/InstalledPackage.h"

#include "platform/FileExists.h"
#include "platform/ResourceFolder.h"
#include "platform/TextFile.h"
#include "platform/UserFolders.h"
#include "platform/Uuid.h"

#include <string>
#include <system_error>

namespace ombrel {

namespace {

namespace fs = std::filesystem;

constexpr const char* manifestName = "Package.swift";
constexpr const char* buildFolderName = ".build";

std::optional<std::string> stampOf(const fs::path& package) {
    auto stamp = readTextFile(package / ".ombrel-bundle-stamp");
    return stamp ? std::optional(std::move(*stamp)) : std::nullopt;
}

bool isCurrent(const fs::path& installed, const fs::path& shipped) {
    const auto wanted = stampOf(shipped);
    return wanted && stampOf(installed) == wanted && fileExists(installed / manifestName);
}

bool move(FileOperations& files, const fs::path& from, const fs::path& to) {
    return files.rename(from.string(), to.string()) == 0;
}

// Puts `made` in the place of an installed package, which keeps its build results.
bool replace(const fs::path& installed, const fs::path& made, const fs::path& aside,
             FileOperations& files) {
    if (!fileExists(installed)) {
        return move(files, made, installed);
    }
    if (!move(files, installed, aside)) {
        return false;
    }
    const bool hasBuild = fileExists(aside / buildFolderName);
    const bool hasMovedBuild =
        hasBuild && move(files, aside / buildFolderName, made / buildFolderName);
    if (hasBuild == hasMovedBuild && move(files, made, installed)) {
        return true;
    }
    if (hasMovedBuild) {
        move(files, made / buildFolderName, aside / buildFolderName);
    }
    move(files, aside, installed);
    return false;
}

} // namespace

std::optional<fs::path> installPackage(const fs::path& shipped, const fs::path& root,
                                       FileOperations& files) {
    if (!fileExists(shipped / manifestName)) {
        return std::nullopt;
    }
    const fs::path installed = root / shipped.filename();
    if (isCurrent(installed, shipped)) {
        return installed;
    }
    const std::string unique = Uuid::random().text();
    const fs::path made = root / (".installing-" + unique);
    const fs::path aside = root / (".replaced-" + unique);
    std::error_code error;
    fs::create_directories(root, error);
    if (!error) {
        fs::copy(shipped, made, fs::copy_options::recursive, error);
    }
    if (!error && replace(installed, made, aside, files)) {
        fs::remove_all(aside, error);
    }
    return fileExists(installed / manifestName) ? std::optional(installed) : std::nullopt;
}

std::optional<fs::path> installedPackagePath(std::string_view name) {
    return installPackage(resourceFolder() / name, userDataFolder() / "Packages");
}

} // namespace ombrel

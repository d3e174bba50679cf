#include "flows/ToolChain.h"

#include "flows/InstalledPackage.h"
#include "platform/FileExists.h"
#include "platform/Process.h"
#include "platform/UserFolders.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>
#include <utility>
#include <vector>

namespace ombrel {

namespace {

namespace fs = std::filesystem;

std::string variable(const char* name) {
    const char* const value = std::getenv(name);
    return value ? value : "";
}

std::string packagePath(const char* variableName, std::string_view package) {
    if (const char* const given = std::getenv(variableName)) {
        return given;
    }
    if (const auto installed = installedPackagePath(package)) {
        return installed->string();
    }
    return (fs::path(OMBREL_PACKAGES) / package).string();
}

std::vector<fs::path> foldersOfPath() {
    std::vector<fs::path> folders;
    const std::string path = variable("PATH");
    for (std::string_view rest = path; !rest.empty();) {
        const std::string_view folder = rest.substr(0, rest.find(':'));
        rest.remove_prefix(std::min(rest.size(), folder.size() + 1));
        if (!folder.empty()) {
            folders.emplace_back(folder);
        }
    }
    return folders;
}

// Another program is called `swift` too; the tool chain's has the compiler beside it.
std::optional<fs::path> compilerIn(const std::vector<fs::path>& folders) {
    for (const fs::path& folder : folders) {
        auto swift = findProgram((folder / "swift").string());
        if (swift && findProgram((folder / "swiftc").string())) {
            return swift;
        }
    }
    return std::nullopt;
}

} // namespace

ToolChain::ToolChain(std::vector<fs::path> usualFolders)
    : m_usualFolders(std::move(usualFolders)) {}

std::vector<fs::path> ToolChain::usualCompilerFolders() {
    std::vector<fs::path> folders;
    if (const std::string bin = variable("SWIFTLY_BIN_DIR"); !bin.empty()) {
        folders.emplace_back(bin);
    }
    if (const std::string home = variable("HOME"); !home.empty()) {
        folders.push_back(fs::path(home) / ".local/share/swiftly/bin");
        folders.push_back(fs::path(home) / ".swiftly/bin");
    }
    for (const char* folder : {"/opt/swift/usr/bin", "/usr/local/swift/usr/bin", "/opt/swift/bin",
                               "/usr/libexec/swift/bin", "/usr/lib/swift/bin"}) {
        folders.emplace_back(folder);
    }
    return folders;
}

const std::shared_ptr<ToolChain>& ToolChain::ofThisProcess() {
    static const auto shared = std::make_shared<ToolChain>();
    return shared;
}

const std::string& ToolChain::runtimePath() {
    if (!m_runtimePath) {
        m_runtimePath = packagePath("OMBREL_RUNTIME_PATH", "OmbrelRuntime");
    }
    return *m_runtimePath;
}

const std::string& ToolChain::studioCorePath() {
    if (!m_studioCorePath) {
        // It is built with the runtime that lies beside it, whichever one flows are built with.
        if (!std::getenv("OMBREL_STUDIO_CORE_PATH")) {
            installedPackagePath("OmbrelRuntime");
        }
        m_studioCorePath = packagePath("OMBREL_STUDIO_CORE_PATH", "OmbrelStudioCore");
    }
    return *m_studioCorePath;
}

const std::optional<fs::path>& ToolChain::compiler() {
    if (!m_compiler) {
        m_compiler = compilerIn(foldersOfPath());
        if (!*m_compiler) {
            m_compiler = compilerIn(m_usualFolders);
        }
    }
    return *m_compiler;
}

std::string ToolChain::swift() {
    return compiler() ? compiler()->string() : "swift";
}

EnvironmentVariables ToolChain::environment() {
    if (!compiler() || findProgram("swift") == compiler()) {
        return {};
    }
    const std::string path = variable("PATH");
    return {{"PATH", compiler()->parent_path().string() + (path.empty() ? "" : ":") + path}};
}

std::optional<std::string> ToolChain::checkTooling() {
    if (!isSwiftToolchainAvailable()) {
        return "Running and exporting flows needs Apple's Swift toolchain. Install Xcode 26 or "
               "later from the App Store, or run `xcode-select --install` in Terminal, then try "
               "again.";
    }
    if (!fileExists(runtimePath())) {
        return "OmbrelRuntime not found at " + runtimePath() +
               ". The app's bundled copy may be missing \u2014 rebuild the app, or set "
               "OMBREL_RUNTIME_PATH.";
    }
    if (!fileExists(studioCorePath())) {
        return "OmbrelStudioCore not found at " + studioCorePath() +
               ". The app's bundled copy may be missing \u2014 rebuild the app, or set "
               "OMBREL_STUDIO_CORE_PATH.";
    }
    return std::nullopt;
}

fs::path packageDirectory(Uuid flowID) {
    return userCacheFolder() / "Builds" / flowID.text();
}

} // namespace ombrel

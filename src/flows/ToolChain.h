#pragma once

#include "platform/ModelEndpoints.h"
#include "platform/Uuid.h"

#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace ombrel {

// The built StudioCLI, once it is known to be up to date, so that later runs don't check again. Any
// thread.
struct PreparedCLIBox {
    std::mutex lock; // held for the access to `url` only
    std::optional<std::filesystem::path> url;
};

// The Swift compiler and the two packages that flows are run and exported with. Each value is
// worked out when it is first asked for, and then stays: a tool chain that is installed later
// counts after the next launch. Main thread.
class ToolChain {
  public:
    // `usualFolders`: where a compiler is looked for that is not on the PATH.
    explicit ToolChain(std::vector<std::filesystem::path> usualFolders = usualCompilerFolders());
    // The one that all workspaces of the process share.
    static const std::shared_ptr<ToolChain>& ofThisProcess();

    // The folders of OmbrelRuntime and of OmbrelStudioCore: what the environment variables
    // OMBREL_RUNTIME_PATH and OMBREL_STUDIO_CORE_PATH say, whatever that is; else the user's copies
    // of the packages that were shipped; else the packages of the source tree.
    const std::string& runtimePath();
    const std::string& studioCorePath();

    // Whether there is a Swift compiler: on the PATH, or where it is usually installed.
    bool isSwiftToolchainAvailable() { return compiler().has_value(); }
    // The program `swift`, which builds packages; the bare name when there is none.
    std::string swift();
    // What programs that call `swift` need to find it: a PATH, or nothing.
    EnvironmentVariables environment();

    // Why no flow can be run or exported; nothing when all that it takes is there.
    std::optional<std::string> checkTooling();

    PreparedCLIBox preparedCLI;

  private:
    static std::vector<std::filesystem::path> usualCompilerFolders();
    const std::optional<std::filesystem::path>& compiler();

    std::vector<std::filesystem::path> m_usualFolders;
    std::optional<std::string> m_runtimePath;
    std::optional<std::string> m_studioCorePath;
    std::optional<std::optional<std::filesystem::path>> m_compiler;
};

// Where the package of a flow is generated and built: one folder for each flow, kept between runs.
// Nothing is made.
std::filesystem::path packageDirectory(Uuid flowID);

} // namespace ombrel

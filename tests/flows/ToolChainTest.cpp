#include "flows/ToolChain.h"

#include "platform/Process.h"
#include "tests/flows/ScriptedTools.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace ombrel {
namespace {

namespace fs = std::filesystem;
using test::ScriptedTools;

TEST(ToolChain, TakesTheFoldersThatTheEnvironmentNames) {
    const ScriptedTools tools;
    ToolChain toolChain;
    EXPECT_EQ(toolChain.runtimePath(), tools.runtime());
    EXPECT_EQ(toolChain.studioCorePath(), tools.core());
    EXPECT_EQ(toolChain.checkTooling(), std::nullopt);
    EXPECT_FALSE(fs::exists(tools.folder / "data")); // Nothing was installed.
}

TEST(ToolChain, NamesTheMissingRuntimeFolderOfTheEnvironmentAndTriesNoOther) {
    ScriptedTools tools;
    tools.set("OMBREL_RUNTIME_PATH", "/no/such/runtime");
    ToolChain toolChain;
    EXPECT_EQ(toolChain.checkTooling(),
              "OmbrelRuntime not found at /no/such/runtime. The app's bundled copy may be missing "
              "— rebuild the app, or set OMBREL_RUNTIME_PATH.");
    EXPECT_FALSE(fs::exists(tools.folder / "data"));
}

TEST(ToolChain, NamesTheMissingStudioCoreFolderOfTheEnvironmentAndTriesNoOther) {
    ScriptedTools tools;
    tools.set("OMBREL_STUDIO_CORE_PATH", "/no/such/core");
    ToolChain toolChain;
    EXPECT_EQ(toolChain.checkTooling(),
              "OmbrelStudioCore not found at /no/such/core. The app's bundled copy may be missing "
              "— rebuild the app, or set OMBREL_STUDIO_CORE_PATH.");
    EXPECT_FALSE(fs::exists(tools.folder / "data"));
}

TEST(ToolChain, TakesAnEmptyVariableAsItIs) {
    ScriptedTools tools;
    tools.set("OMBREL_RUNTIME_PATH", "");
    ToolChain toolChain;
    EXPECT_EQ(toolChain.runtimePath(), "");
    EXPECT_EQ(toolChain.checkTooling(),
              "OmbrelRuntime not found at . The app's bundled copy may be missing — rebuild the "
              "app, or set OMBREL_RUNTIME_PATH.");
}

TEST(ToolChain, InstallsBothPackagesSideBySideWithoutVariables) {
    ScriptedTools tools;
    tools.set("OMBREL_RUNTIME_PATH", std::nullopt);
    tools.set("OMBREL_STUDIO_CORE_PATH", std::nullopt);
    ToolChain toolChain;
    const fs::path packages = tools.folder / "data/Ombrel/Packages";
    EXPECT_EQ(toolChain.studioCorePath(), packages / "OmbrelStudioCore");
    EXPECT_TRUE(fs::exists(packages / "OmbrelRuntime/Package.swift"));
    EXPECT_EQ(toolChain.runtimePath(), packages / "OmbrelRuntime");
    EXPECT_EQ(toolChain.checkTooling(), std::nullopt);
}

TEST(ToolChain, SaysWhatIsMissingWithoutACompiler) {
    ScriptedTools tools;
    tools.set("PATH", "/bin/no/such/folder");
    ToolChain toolChain{std::vector<fs::path>()};
    EXPECT_EQ(toolChain.checkTooling(),
              "Running and exporting flows needs Apple's Swift toolchain. Install Xcode 26 or "
              "later from the App Store, or run `xcode-select --install` in Terminal, then try "
              "again.");
}

TEST(ToolChain, TakesNoInterpreterWithoutItsCompiler) {
    ScriptedTools tools;
    tools.set("PATH", (tools.folder / "bin").string());
    fs::remove(tools.folder / "bin/swiftc");
    ToolChain toolChain{std::vector<fs::path>()};
    EXPECT_FALSE(toolChain.isSwiftToolchainAvailable());
}

TEST(ToolChain, FindsTheCompilerOnceForAll) {
    const ScriptedTools tools;
    ToolChain toolChain;
    EXPECT_TRUE(toolChain.isSwiftToolchainAvailable());
    EXPECT_EQ(toolChain.swift(), tools.folder / "bin/swift");
    fs::remove(tools.folder / "bin/swift");
    EXPECT_TRUE(toolChain.isSwiftToolchainAvailable());
    EXPECT_EQ(toolChain.swift(), tools.folder / "bin/swift");
}

TEST(ToolChain, FindsACompilerThatIsNotOnThePathAndTellsChildrenOfIt) {
    ScriptedTools tools;
    const fs::path bin = tools.folder / "home/.local/share/swiftly/bin";
    fs::create_directories(bin.parent_path());
    fs::rename(tools.folder / "bin", bin);
    tools.set("HOME", (tools.folder / "home").string());
    tools.set("PATH", "/bin");
    ToolChain toolChain;
    EXPECT_EQ(toolChain.swift(), bin / "swift");
    EXPECT_EQ(toolChain.environment(), (EnvironmentVariables{{"PATH", bin.string() + ":/bin"}}));
}

TEST(ToolChain, TellsChildrenNothingOfACompilerOnThePath) {
    const ScriptedTools tools;
    ToolChain toolChain;
    EXPECT_EQ(toolChain.environment(), EnvironmentVariables());
}

TEST(ToolChain, PassesAnotherProgramOfTheNameOver) {
    ScriptedTools tools;
    tools.folder.write("other/swift", "#!/bin/sh\n");
    fs::permissions(tools.folder / "other/swift", fs::perms::owner_all);
    const std::string path = std::getenv("PATH");
    tools.set("PATH", (tools.folder / "other").string() + ":" + path);
    ToolChain toolChain;
    EXPECT_EQ(toolChain.swift(), tools.folder / "bin/swift");
    ASSERT_EQ(toolChain.environment().size(), 1U);
    EXPECT_TRUE(toolChain.environment()[0].second.starts_with(
        (tools.folder / "bin").string() + ":" + (tools.folder / "other").string()));
}

TEST(ToolChain, KeepsOnePackageFolderForEachFlow) {
    const ScriptedTools tools;
    const Uuid id = Uuid::random();
    EXPECT_EQ(packageDirectory(id), tools.folder / "cache/Ombrel/Builds" / id.text());
    EXPECT_FALSE(fs::exists(tools.folder / "cache"));
}

} // namespace
} // namespace ombrel

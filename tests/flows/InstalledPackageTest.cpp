#include "flows/InstalledPackage.h"

#include "tests/flows/ScriptedTools.h"
#include "tests/support/FailingFiles.h"
#include "tests/support/FileContents.h"
#include "tests/support/TemporaryFolder.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <sys/stat.h>

namespace ombrel {
namespace {

namespace fs = std::filesystem;
using test::contentsOf;
using test::FailingFiles;

// A shipped package, and the folder that copies are installed into.
struct Packages {
    test::TemporaryFolder folder;
    fs::path shipped = folder / "resources/Runtime";
    fs::path root = folder / "data/Packages";
    fs::path installed = root / "Runtime";

    Packages() {
        ship("old", "stamp 1");
        folder.write("resources/Runtime/Sources/Runtime/A.swift", "let a = 1");
    }
    // Makes the shipped package another one; without a stamp, it has none.
    void ship(std::string_view manifest, const std::optional<std::string>& stamp) const {
        folder.write("resources/Runtime/Package.swift", manifest);
        fs::remove(shipped / ".ombrel-bundle-stamp");
        if (stamp) {
            folder.write("resources/Runtime/.ombrel-bundle-stamp", *stamp);
        }
    }
    std::optional<fs::path> install(FileOperations& files = FileOperations::system()) const {
        return installPackage(shipped, root, files);
    }
    std::string manifest() const { return contentsOf(installed / "Package.swift"); }
    void build() const { folder.write("data/Packages/Runtime/.build/cache", "compiled"); }
    std::string cache() const { return contentsOf(installed / ".build/cache"); }
    std::size_t foldersInRoot() const {
        return static_cast<std::size_t>(
            std::distance(fs::directory_iterator(root), fs::directory_iterator()));
    }
};

TEST(InstalledPackage, IsACopyOfTheShippedOne) {
    const Packages packages;
    EXPECT_EQ(packages.install(), packages.installed);
    EXPECT_EQ(packages.manifest(), "old");
    EXPECT_EQ(contentsOf(packages.installed / "Sources/Runtime/A.swift"), "let a = 1");
    EXPECT_EQ(packages.foldersInRoot(), 1U);
}

TEST(InstalledPackage, IsNotTouchedWhileTheStampsAreTheSame) {
    const Packages packages;
    packages.install();
    packages.folder.write("data/Packages/Runtime/Sources/Runtime/A.swift", "let a = 2");
    EXPECT_EQ(packages.install(), packages.installed);
    EXPECT_EQ(contentsOf(packages.installed / "Sources/Runtime/A.swift"), "let a = 2");
}

TEST(InstalledPackage, IsMadeAnewWhenTheStampHasChangedAndKeepsItsBuildResults) {
    const Packages packages;
    packages.install();
    packages.build();
    packages.folder.write("data/Packages/Runtime/Sources/Runtime/Gone.swift", "");
    packages.ship("new", "stamp 2");
    EXPECT_EQ(packages.install(), packages.installed);
    EXPECT_EQ(packages.manifest(), "new");
    EXPECT_EQ(packages.cache(), "compiled");
    EXPECT_FALSE(fs::exists(packages.installed / "Sources/Runtime/Gone.swift"));
    EXPECT_EQ(packages.foldersInRoot(), 1U);
}

TEST(InstalledPackage, IsMadeAnewFromAnOlderShippedOneToo) {
    const Packages packages;
    packages.ship("new", "stamp 2");
    packages.install();
    packages.ship("old", "stamp 1");
    packages.install();
    EXPECT_EQ(packages.manifest(), "old");
}

TEST(InstalledPackage, IsMadeAnewWhenItsManifestIsGone) {
    const Packages packages;
    packages.install();
    packages.build();
    fs::remove(packages.installed / "Package.swift");
    EXPECT_EQ(packages.install(), packages.installed);
    EXPECT_EQ(packages.manifest(), "old");
    EXPECT_EQ(packages.cache(), "compiled");
}

TEST(InstalledPackage, IsMadeAnewEveryTimeWithoutStamps) {
    const Packages packages;
    packages.ship("old", std::nullopt);
    packages.install();
    packages.ship("new", std::nullopt);
    EXPECT_EQ(packages.install(), packages.installed);
    EXPECT_EQ(packages.manifest(), "new");
}

TEST(InstalledPackage, IsNoneWhenNothingIsShipped) {
    const Packages packages;
    packages.install();
    fs::remove(packages.shipped / "Package.swift");
    EXPECT_EQ(packages.install(), std::nullopt);
}

TEST(InstalledPackage, IsNoneWhenItCannotBeMade) {
    const Packages packages;
    packages.folder.write("data/Packages", "a file in the folder's place");
    EXPECT_EQ(packages.install(), std::nullopt);
}

TEST(InstalledPackage, StaysAsItIsWhenTheNewOneCannotBeCopied) {
    const Packages packages;
    packages.install();
    packages.ship("new", "stamp 2");
    ASSERT_EQ(mkfifo((packages.shipped / "pipe").c_str(), 0600), 0); // What can't be copied.
    EXPECT_EQ(packages.install(), packages.installed);
    EXPECT_EQ(packages.manifest(), "old");
}

TEST(InstalledPackage, WorksWhicheverOfTheMovesFails) {
    // The old one aside, its build results into the new one, the new one into its place.
    constexpr int moves = 3;
    for (int failing = 0; failing < moves; ++failing) {
        const Packages packages;
        packages.install();
        packages.build();
        packages.ship("new", "stamp 2");
        FailingFiles files(failing, FailingFiles::Ending::fails);
        EXPECT_EQ(packages.install(files), packages.installed) << failing;
        EXPECT_EQ(packages.manifest(), "old") << failing;
        EXPECT_EQ(packages.cache(), "compiled") << failing;
        // And the next time it goes well.
        EXPECT_EQ(packages.install(), packages.installed) << failing;
        EXPECT_EQ(packages.manifest(), "new") << failing;
        EXPECT_EQ(packages.cache(), "compiled") << failing;
    }
    const Packages packages;
    packages.install();
    packages.build();
    packages.ship("new", "stamp 2");
    FailingFiles counting(-1, FailingFiles::Ending::fails);
    packages.install(counting);
    EXPECT_EQ(counting.count(), moves);
}

TEST(InstalledPackage, OfTheProgramIsThatOfItsResourceFolder) {
    const test::TemporaryFolder folder;
    const test::VariableForNow data("XDG_DATA_HOME", folder.path().string());
    const auto installed = installedPackagePath("OmbrelRuntime");
    ASSERT_EQ(installed, folder / "Ombrel/Packages/OmbrelRuntime");
    EXPECT_EQ(contentsOf(*installed / ".ombrel-bundle-stamp").size(), 65U);
    EXPECT_TRUE(fs::exists(*installed / "Sources/OmbrelRuntime"));
    EXPECT_FALSE(fs::exists(*installed / "Tests"));
    EXPECT_FALSE(fs::exists(*installed / ".build"));
}

} // namespace
} // namespace ombrel

#include "core/ProjectFile.h"

#include "tests/core/SampleProject.h"
#include "tests/support/FileContents.h"
#include "tests/support/TemporaryFolder.h"

#include <cstdlib>
#include <gtest/gtest.h>

namespace ombrel {
namespace {

using test::contentsOf;
using test::TemporaryFolder;

// Runs a command with the folder as its working folder; whether it ended well.
bool succeeds(const TemporaryFolder& folder, const std::string& command) {
    return std::system(("cd '" + folder.path().string() + "' && " + command).c_str()) == 0;
}

// More objects than one or two bytes count, so that references grow to what others must read.
PersistedProject largeProject() {
    PersistedProject project = test::sampleProject();
    auto& chunks = project.ragIndexes[0].chunksByDocument.begin()->second.edit();
    chunks[0].embedding->resize(70'000, 0.125);
    return project;
}

TEST(PropertyListInterop, PythonReadsWhatIsWrittenAndWritesWhatIsRead) {
    for (const PersistedProject& project : {test::sampleProject(), largeProject()}) {
        const TemporaryFolder folder;
        test::writeContents(folder / "ours", *writeFile(project));
        test::writeContents(folder / "convert.py", R"(
import plistlib
with open("ours", "rb") as file:
    project = plistlib.load(file)
assert project["project"]["name"] == "Handbuch für Ärzte 🩺"
assert project["ragIndexes"][0]["sources"][0]["bookmarkData"] == b"/home/\xff\x00x"
assert project["ragIndexes"][0]["sources"][0]["status"] == {"oversized": {"_0": 2}}
assert project["ragIndexes"][0]["testQuestions"][0]["lastRank"] == 5000000000
assert project["project"]["lastBuildFinishedAt"].microsecond == 250000
with open("theirs", "wb") as file:
    plistlib.dump(project, file, fmt=plistlib.FMT_BINARY, sort_keys=True)
)");
        ASSERT_TRUE(succeeds(folder, "python3 convert.py"));
        const std::string theirs = contentsOf(folder / "theirs");
        const auto read = readSnapshot(theirs);
        ASSERT_TRUE(read) << read.error().message;
        EXPECT_EQ(read->snapshot, project);
        EXPECT_FALSE(read->leftBehind.any());
    }
}

TEST(PropertyListInterop, LibplistReadsWhatIsWrittenAndWritesWhatIsRead) {
    for (const PersistedProject& project : {test::sampleProject(), largeProject()}) {
        const TemporaryFolder folder;
        test::writeContents(folder / "ours", *writeFile(project));
        ASSERT_TRUE(succeeds(folder, "plistutil -i ours -f bin -o theirs"));
        const std::string theirs = contentsOf(folder / "theirs");
        const auto read = readSnapshot(theirs);
        ASSERT_TRUE(read) << read.error().message;
        EXPECT_EQ(read->snapshot, project);
    }
}

TEST(PropertyListInterop, RefusesTheXmlThatOthersWrite) {
    const TemporaryFolder folder;
    test::writeContents(folder / "ours", *writeFile(test::sampleProject()));
    ASSERT_TRUE(succeeds(folder, "plistutil -i ours -f xml -o theirs"));
    const auto read = readSnapshot(contentsOf(folder / "theirs"));
    ASSERT_FALSE(read);
    EXPECT_NE(read.error().message.find("XML property list"), std::string::npos);
}

} // namespace
} // namespace ombrel

#include "core/ProjectDocument.h"

#include "tests/core/SampleProject.h"
#include "tests/support/FailingFiles.h"
#include "tests/support/FileContents.h"
#include "tests/support/PropertyListOfJson.h"
#include "tests/support/TemporaryFolder.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace ombrel {
namespace {

using test::contentsOf;
using test::FailingFiles;
using test::TemporaryFolder;
using test::writeContents;
using Reason = SaveError::Reason;

PersistedProject namedProject(std::string name) {
    PersistedProject project = test::sampleProject();
    project.project.name = std::move(name);
    return project;
}

std::string nameIn(const std::filesystem::path& file) {
    const auto opened = ProjectDocument::open(file);
    return opened ? opened->snapshot.project.name : opened.error().message;
}

std::size_t filesIn(const TemporaryFolder& folder) {
    const std::filesystem::directory_iterator entries(folder.path());
    return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

// A file whose indexes cannot be read.
void writeUnreadableIndexes(const std::filesystem::path& file) {
    writeContents(
        file, test::propertyListOfJson(R"({"formatVersion":2,"project":{"name":"Half",)"
                                       R"("lastBuiltDescription":""},"ragIndexes":[{"id":"x"}]})"));
}

TEST(ProjectDocument, OpensWhatItCreatedAndSavesItAgain) {
    const TemporaryFolder folder;
    auto created = ProjectDocument::create(folder / "a.ombrel", test::sampleProject());
    ASSERT_TRUE(created) << created.error().message;
    EXPECT_TRUE(created->isCurrent());
    auto opened = ProjectDocument::open(folder / "a.ombrel");
    ASSERT_TRUE(opened) << opened.error().message;
    EXPECT_EQ(opened->snapshot, test::sampleProject());
    EXPECT_FALSE(opened->leftBehind.any());
    EXPECT_TRUE(opened->document.isCurrent());
    EXPECT_EQ(opened->document.path(), folder / "a.ombrel");
    for (const char* name : {"first", "second", "third"}) {
        const auto saved = opened->document.save(namedProject(name));
        ASSERT_TRUE(saved) << saved.error().message;
        EXPECT_EQ(saved->keptOldFile, std::nullopt);
        EXPECT_EQ(nameIn(folder / "a.ombrel"), name);
    }
    EXPECT_EQ(filesIn(folder), 1U);
}

TEST(ProjectDocument, OpensAProjectThatIsLargerThanItsWindows) {
    PersistedProject project = test::sampleProject();
    auto& chunks = project.ragIndexes[0].chunksByDocument.begin()->second.edit();
    for (int i = 0; i < 60; ++i) {
        DocumentChunk chunk = chunks[0];
        chunk.embedding->resize(5000, 0.25 * i);
        chunks.push_back(std::move(chunk));
    }
    const TemporaryFolder folder;
    ASSERT_TRUE(ProjectDocument::create(folder / "a.ombrel", project));
    EXPECT_GT(std::filesystem::file_size(folder / "a.ombrel"), 8'000'000U);
    const auto opened = ProjectDocument::open(folder / "a.ombrel");
    ASSERT_TRUE(opened) << opened.error().message;
    EXPECT_EQ(opened->snapshot, project);
}

TEST(ProjectDocument, DoesNotCreateAFileOverAnother) {
    const TemporaryFolder folder;
    writeContents(folder / "a.ombrel", "something else");
    const auto refused = ProjectDocument::create(folder / "a.ombrel", namedProject("new"));
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().reason, Reason::exists);
    EXPECT_EQ(refused.error().message,
              "The project couldn't be saved: there is already a file “a.ombrel”.");
    EXPECT_EQ(contentsOf(folder / "a.ombrel"), "something else");
    ASSERT_TRUE(
        ProjectDocument::create(folder / "a.ombrel", namedProject("new"), Overwrite::anything));
    EXPECT_EQ(nameIn(folder / "a.ombrel"), "new");
}

TEST(ProjectDocument, OverwritesNothingThatAnotherProgramSaved) {
    const TemporaryFolder folder;
    ASSERT_TRUE(ProjectDocument::create(folder / "a.ombrel", namedProject("start")));
    auto mine = ProjectDocument::open(folder / "a.ombrel");
    auto theirs = ProjectDocument::open(folder / "a.ombrel");
    ASSERT_TRUE(mine && theirs);
    ASSERT_TRUE(theirs->document.save(namedProject("theirs")));
    EXPECT_FALSE(mine->document.isCurrent());
    for (int attempt = 0; attempt < 2; ++attempt) {
        const auto refused = mine->document.save(namedProject("mine"));
        ASSERT_FALSE(refused);
        EXPECT_EQ(refused.error().reason, Reason::changedOnDisk);
        EXPECT_EQ(
            refused.error().message,
            "The project couldn't be saved: “a.ombrel” was changed on disk by another program "
            "since it was opened. Nothing was overwritten.");
        EXPECT_EQ(nameIn(folder / "a.ombrel"), "theirs");
    }
    ASSERT_TRUE(
        mine->document.save(namedProject("mine"), Overwrite::anything)); // the user's choice
    EXPECT_EQ(nameIn(folder / "a.ombrel"), "mine");
    ASSERT_TRUE(mine->document.save(namedProject("mine again")));
    EXPECT_FALSE(theirs->document.save(namedProject("theirs")));
}

TEST(ProjectDocument, SeesAFileThatWasWrittenInPlace) {
    const TemporaryFolder folder;
    auto document = ProjectDocument::create(folder / "a.ombrel", namedProject("start"));
    ASSERT_TRUE(document);
    writeContents(folder / "a.ombrel", *writeFile(namedProject("another name")));
    const auto refused = document->save(namedProject("mine"));
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().reason, Reason::changedOnDisk);
}

TEST(ProjectDocument, SavesAgainWhereItsFileWasRemoved) {
    const TemporaryFolder folder;
    auto document = ProjectDocument::create(folder / "a.ombrel", namedProject("start"));
    ASSERT_TRUE(document);
    std::filesystem::remove(folder / "a.ombrel");
    ASSERT_TRUE(document->save(namedProject("again")));
    EXPECT_EQ(nameIn(folder / "a.ombrel"), "again");
}

TEST(ProjectDocument, KeepsTheOldFileBesideTheFirstSaveThatWouldLoseSomething) {
    const TemporaryFolder folder;
    writeUnreadableIndexes(folder / "Handbook.ombrel");
    const std::string original = contentsOf(folder / "Handbook.ombrel");
    auto opened = ProjectDocument::open(folder / "Handbook.ombrel");
    ASSERT_TRUE(opened) << opened.error().message;
    ASSERT_TRUE(opened->leftBehind.ragIndexes);
    const auto saved = opened->document.save(opened->snapshot);
    ASSERT_TRUE(saved) << saved.error().message;
    ASSERT_TRUE(saved->keptOldFile);
    EXPECT_EQ(contentsOf(*saved->keptOldFile), original);
    EXPECT_EQ(saved->keptOldFile->parent_path(), folder.path());
    const std::string name = saved->keptOldFile->filename();
    std::string shape = name;
    std::replace_if(
        shape.begin(), shape.end(), [](char c) { return c >= '0' && c <= '9'; }, '0');
    EXPECT_EQ(shape, "Handbook (before 0000-00-00 00.00.00).ombrel");

    const auto second = opened->document.save(opened->snapshot);
    ASSERT_TRUE(second);
    EXPECT_EQ(second->keptOldFile, std::nullopt);
    EXPECT_EQ(filesIn(folder), 2U);
}

TEST(ProjectDocument, KeepsTheOldFileOfANewerVersion) {
    const TemporaryFolder folder;
    writeContents(folder / "a.ombrel",
                  test::propertyListOfJson(R"({"formatVersion":3,"project":{"name":"New",)"
                                           R"("lastBuiltDescription":"","theme":1}})"));
    auto opened = ProjectDocument::open(folder / "a.ombrel");
    ASSERT_TRUE(opened) << opened.error().message;
    EXPECT_EQ(opened->leftBehind.unknownKeys.paths, std::vector<std::string>{"project.theme"});
    EXPECT_TRUE(opened->document.save(opened->snapshot)->keptOldFile);
}

TEST(ProjectDocument, StillKeepsTheOldFileAfterASaveThatFailed) {
    const TemporaryFolder folder;
    writeUnreadableIndexes(folder / "a.ombrel");
    auto opened = ProjectDocument::open(folder / "a.ombrel");
    ASSERT_TRUE(opened);
    FailingFiles failing(3, FailingFiles::Ending::fails, ENOSPC);
    const auto refused = opened->document.save(opened->snapshot, Overwrite::onlyKnown, failing);
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().message, "The project couldn't be saved: No space left on device.");
    EXPECT_TRUE(opened->document.save(opened->snapshot)->keptOldFile);
}

TEST(ProjectDocument, SavesUnderAnotherNameAndStaysThere) {
    const TemporaryFolder folder;
    writeUnreadableIndexes(folder / "a.ombrel");
    const std::string original = contentsOf(folder / "a.ombrel");
    auto opened = ProjectDocument::open(folder / "a.ombrel");
    ASSERT_TRUE(opened);
    ProjectDocument& document = opened->document;
    ASSERT_TRUE(document.saveAs(folder / "b.ombrel", namedProject("b")));
    EXPECT_EQ(document.path(), folder / "b.ombrel");
    ASSERT_TRUE(document.save(namedProject("b again")));
    EXPECT_EQ(nameIn(folder / "b.ombrel"), "b again");
    EXPECT_EQ(contentsOf(folder / "a.ombrel"), original);
    EXPECT_EQ(filesIn(folder), 2U); // the old file is where it was, so no second one is needed

    writeContents(folder / "c.ombrel", "something else");
    EXPECT_EQ(document.saveAs(folder / "c.ombrel", namedProject("c")).error().reason,
              Reason::exists);
    EXPECT_EQ(document.path(), folder / "b.ombrel");
}

TEST(ProjectDocument, ComparesFilesWhenItSavesUnderItsOwnName) {
    const TemporaryFolder folder;
    auto document = ProjectDocument::create(folder / "a.ombrel", namedProject("a"));
    ASSERT_TRUE(document);
    const auto sameFile = folder.path() / "." / "a.ombrel";
    ASSERT_TRUE(document->saveAs(sameFile, namedProject("again")));
    EXPECT_EQ(nameIn(folder / "a.ombrel"), "again");
}

TEST(ProjectDocument, LeavesTheOldProjectOrTheNewOneWhicheverOperationFails) {
    FailingFiles counted(-1, FailingFiles::Ending::fails);
    {
        const TemporaryFolder folder;
        auto document = ProjectDocument::create(folder / "a.ombrel", namedProject("old"));
        ASSERT_TRUE(document && document->save(namedProject("new"), Overwrite::onlyKnown, counted));
    }
    for (int at = 0; at < counted.count(); ++at) {
        const TemporaryFolder folder;
        auto document = ProjectDocument::create(folder / "a.ombrel", namedProject("old"));
        ASSERT_TRUE(document);
        FailingFiles files(at, FailingFiles::Ending::fails);
        const auto saved = document->save(namedProject("new"), Overwrite::onlyKnown, files);
        const std::string found = nameIn(folder / "a.ombrel");
        EXPECT_TRUE(saved ? found == "new" : found == "old" || found == "new") << at << found;
        EXPECT_EQ(filesIn(folder), 1U) << at;
        // Whatever happened, the document knows its file.
        const auto next = document->save(namedProject("next"));
        ASSERT_TRUE(next) << at << next.error().message;
        EXPECT_EQ(nameIn(folder / "a.ombrel"), "next");
    }
}

TEST(ProjectDocument, SaysWhyAFileCannotBeOpened) {
    const TemporaryFolder folder;
    const std::string start = "The project couldn't be opened: ";
    const std::string damaged = start + "The file isn't a project file or is damaged. ";
    EXPECT_EQ(nameIn(folder / "none"), start + "No such file or directory.");
    EXPECT_EQ(nameIn(folder.path()), damaged + "It is not a regular file.");
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    EXPECT_EQ(nameIn(folder / "pipe"), damaged + "It is not a regular file.");
    writeContents(folder / "empty", "");
    EXPECT_EQ(nameIn(folder / "empty"), damaged + "It is not a binary property list.");
    writeContents(folder / "xml", "<?xml version=\"1.0\"?><plist><dict/></plist>");
    EXPECT_EQ(nameIn(folder / "xml"),
              damaged + "It is an XML property list, and only binary ones can be read.");
}

TEST(ProjectDocument, NeedsAFileToSaveTo) {
    ProjectDocument document;
    EXPECT_FALSE(document.hasFile());
    EXPECT_FALSE(document.isCurrent());
    EXPECT_EQ(document.save(PersistedProject()).error().message,
              "The project couldn't be saved: it has no file yet.");
}

} // namespace
} // namespace ombrel

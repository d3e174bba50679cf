#include "platform/AtomicFile.h"

#include "tests/support/FailingFiles.h"
#include "tests/support/FileContents.h"
#include "tests/support/TemporaryFolder.h"

#include <algorithm>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace ombrel {
namespace {

using std::filesystem::path;
using test::contentsOf;
using test::FailingFiles;
using test::TemporaryFolder;
using test::writeContents;
using Reason = ReplaceError::Reason;

const std::string oldContents = "the old contents";
const std::string newContents = std::string(300'000, 'n') + " the new contents";

Replacement anyFile() {
    Replacement replacement;
    replacement.replaceAny = true;
    return replacement;
}

Result<Replaced, ReplaceError> replaceWith(const path& file, const Replacement& replacement,
                                           std::string_view contents,
                                           FileOperations& files = FileOperations::system()) {
    return replaceFile(
        file, replacement,
        [contents](const ByteSink& sink) {
            const std::size_t half = contents.size() / 2;
            return sink(contents.substr(0, half)) && sink(contents.substr(half));
        },
        files);
}

FileStamp stampOf(const path& file) {
    struct stat status {};
    EXPECT_EQ(::stat(file.c_str(), &status), 0) << file;
    return FileStamp::of(status);
}

mode_t modeOf(const path& file) {
    struct stat status {};
    EXPECT_EQ(::stat(file.c_str(), &status), 0) << file;
    return status.st_mode & 07777;
}

std::vector<std::string> namesIn(const path& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        names.push_back(entry.path().filename());
    }
    std::sort(names.begin(), names.end());
    return names;
}

// Runs in a process of its own that may do as it likes to itself; gives its exit status.
template <class Work>
int inChild(const Work& work) {
    const pid_t child = fork();
    if (child == 0) {
        _exit(work());
    }
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

// Permissions do not hold root back, so tests of them become an ordinary user first.
void becomeOrdinaryUser() {
    if (geteuid() == 0 && (setegid(65534) != 0 || seteuid(65534) != 0)) {
        _exit(100);
    }
}

TEST(AtomicFile, MakesAFileWithThePermissionsThatNewFilesHave) {
    const TemporaryFolder folder;
    const mode_t mask = umask(027);
    const auto replaced = replaceWith(folder / "new", {}, newContents);
    umask(mask);
    ASSERT_TRUE(replaced) << replaced.error().message;
    EXPECT_EQ(contentsOf(folder / "new"), newContents);
    EXPECT_EQ(modeOf(folder / "new"), 0640U);
    EXPECT_EQ(replaced->stamp, stampOf(folder / "new"));
    EXPECT_EQ(namesIn(folder.path()), std::vector<std::string>{"new"});
}

TEST(AtomicFile, DoesNotMakeAFileWhereThereIsOne) {
    const TemporaryFolder folder;
    writeContents(folder / "file", oldContents);
    const auto replaced = replaceWith(folder / "file", {}, newContents);
    ASSERT_FALSE(replaced);
    EXPECT_EQ(replaced.error().reason, Reason::exists);
    EXPECT_EQ(contentsOf(folder / "file"), oldContents);
    EXPECT_EQ(namesIn(folder.path()).size(), 1U);
}

TEST(AtomicFile, ReplacesTheFileThatIsExpectedAndNoOther) {
    const TemporaryFolder folder;
    writeContents(folder / "file", oldContents);
    Replacement replacement;
    replacement.expected = stampOf(folder / "file");
    const auto first = replaceWith(folder / "file", replacement, newContents);
    ASSERT_TRUE(first) << first.error().message;

    const auto second = replaceWith(folder / "file", replacement, "newer"); // the stamp is old now
    ASSERT_FALSE(second);
    EXPECT_EQ(second.error().reason, Reason::changed);
    EXPECT_EQ(contentsOf(folder / "file"), newContents);

    replacement.expected = first->stamp;
    ASSERT_TRUE(replaceWith(folder / "file", replacement, "newer"));
    EXPECT_EQ(contentsOf(folder / "file"), "newer");
}

TEST(AtomicFile, SeesAFileThatWasWrittenInPlaceWhileTheNewOneWasMade) {
    const TemporaryFolder folder;
    writeContents(folder / "file", oldContents);
    Replacement replacement;
    replacement.expected = stampOf(folder / "file");
    const auto replaced = replaceFile(folder / "file", replacement, [&](const ByteSink& sink) {
        writeContents(folder / "file", "somebody else's longer contents");
        return sink(newContents);
    });
    ASSERT_FALSE(replaced);
    EXPECT_EQ(replaced.error().reason, Reason::changed);
    EXPECT_EQ(contentsOf(folder / "file"), "somebody else's longer contents");
    EXPECT_EQ(namesIn(folder.path()).size(), 1U);
}

TEST(AtomicFile, MakesAnExpectedFileAnewThatHasGone) {
    const TemporaryFolder folder;
    writeContents(folder / "file", oldContents);
    Replacement replacement;
    replacement.expected = stampOf(folder / "file");
    std::filesystem::remove(folder / "file");
    ASSERT_TRUE(replaceWith(folder / "file", replacement, newContents));
    EXPECT_EQ(contentsOf(folder / "file"), newContents);
}

TEST(AtomicFile, ReplacesAnyFileWhenToldTo) {
    const TemporaryFolder folder;
    writeContents(folder / "file", oldContents);
    ASSERT_TRUE(replaceWith(folder / "file", anyFile(), newContents));
    EXPECT_EQ(contentsOf(folder / "file"), newContents);
}

TEST(AtomicFile, KeepsThePermissions) {
    const TemporaryFolder folder;
    for (const mode_t mode : {0600U, 0644U, 0664U, 0777U, 0640U}) {
        writeContents(folder / "file", oldContents);
        ASSERT_EQ(::chmod((folder / "file").c_str(), mode), 0);
        ASSERT_TRUE(replaceWith(folder / "file", anyFile(), newContents));
        EXPECT_EQ(modeOf(folder / "file"), mode);
    }
}

TEST(AtomicFile, KeepsTheOwnerWhereThatIsAllowed) {
    const TemporaryFolder folder;
    writeContents(folder / "file", oldContents);
    const bool isRoot = geteuid() == 0;
    const uid_t user = isRoot ? 4711 : geteuid();
    const gid_t group = isRoot ? 4712 : getegid();
    ASSERT_EQ(::chown((folder / "file").c_str(), user, group), 0);
    ASSERT_TRUE(replaceWith(folder / "file", anyFile(), newContents));
    struct stat status {};
    ASSERT_EQ(::stat((folder / "file").c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, user);
    EXPECT_EQ(status.st_gid, group);
}

TEST(AtomicFile, GivesTheGroupNoMoreThanOthersWhenTheGroupCannotBeKept) {
    class NoOwners : public FileOperations {
        int setOwner(int, uid_t, gid_t) override {
            errno = EPERM;
            return -1;
        }
        int status(int descriptor, struct stat& status) override {
            const int result = FileOperations::status(descriptor, status);
            status.st_gid += 1; // the new file is another group's
            return result;
        }
    } files;
    const TemporaryFolder folder;
    writeContents(folder / "file", oldContents);
    ASSERT_EQ(::chmod((folder / "file").c_str(), 0664), 0);
    ASSERT_TRUE(replaceWith(folder / "file", anyFile(), newContents, files));
    EXPECT_EQ(modeOf(folder / "file"), 0644U);
}

TEST(AtomicFile, FollowsSymbolicLinks) {
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder / "there");
    writeContents(folder / "there/file", oldContents);
    std::filesystem::create_symlink("there/file", folder / "near");
    std::filesystem::create_symlink(folder / "near", folder / "link");
    ASSERT_TRUE(replaceWith(folder / "link", anyFile(), newContents));
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "link"));
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "near"));
    EXPECT_FALSE(std::filesystem::is_symlink(folder / "there/file"));
    EXPECT_EQ(contentsOf(folder / "there/file"), newContents);
    EXPECT_EQ(namesIn(folder / "there").size(), 1U);
}

TEST(AtomicFile, MakesTheFileThatADanglingLinkNames) {
    const TemporaryFolder folder;
    std::filesystem::create_symlink("file", folder / "link");
    ASSERT_TRUE(replaceWith(folder / "link", {}, newContents));
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "link"));
    EXPECT_EQ(contentsOf(folder / "file"), newContents);
}

TEST(AtomicFile, RefusesACircleOfLinks) {
    const TemporaryFolder folder;
    std::filesystem::create_symlink("b", folder / "a");
    std::filesystem::create_symlink("a", folder / "b");
    const auto replaced = replaceWith(folder / "a", anyFile(), newContents);
    ASSERT_FALSE(replaced);
    EXPECT_EQ(replaced.error().message, "Too many levels of symbolic links");
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "a"));
}

TEST(AtomicFile, RefusesWhatIsNoRegularFile) {
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder / "folder");
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    for (const char* name : {"folder", "pipe"}) {
        const auto replaced = replaceWith(folder / name, anyFile(), newContents);
        ASSERT_FALSE(replaced);
        EXPECT_EQ(replaced.error().message, "It is not a regular file");
    }
}

TEST(AtomicFile, RefusesAFolderThatDoesNotExist) {
    const TemporaryFolder folder;
    const auto replaced = replaceWith(folder / "none/file", anyFile(), newContents);
    ASSERT_FALSE(replaced);
    EXPECT_EQ(replaced.error().message, "No such file or directory");
}

TEST(AtomicFile, RefusesAReadOnlyFolderAndAReadOnlyFile) {
    const TemporaryFolder folder;
    ASSERT_EQ(::chmod(folder.path().c_str(), 0755), 0);
    std::filesystem::create_directory(folder / "locked");
    writeContents(folder / "locked/file", oldContents);
    std::filesystem::create_directory(folder / "open");
    writeContents(folder / "open/file", oldContents);
    ASSERT_EQ(::chmod((folder / "open").c_str(), 0777), 0);
    ASSERT_EQ(::chmod((folder / "open/file").c_str(), 0444), 0);
    ASSERT_EQ(::chmod((folder / "locked/file").c_str(), 0666), 0);
    ASSERT_EQ(::chmod((folder / "locked").c_str(), 0555), 0);
    for (const char* name : {"locked/file", "open/file"}) {
        const int status = inChild([&] {
            becomeOrdinaryUser();
            const auto replaced = replaceWith(folder / name, anyFile(), newContents);
            return !replaced && replaced.error().message == "Permission denied" ? 0 : 1;
        });
        EXPECT_EQ(status, 0) << name;
        EXPECT_EQ(contentsOf(folder / name), oldContents);
        EXPECT_EQ(namesIn((folder / name).parent_path()).size(), 1U);
    }
    ::chmod((folder / "locked").c_str(), 0755);
}

TEST(AtomicFile, LeavesTheOldFileOnAFullDisk) {
    const TemporaryFolder folder;
    const path disk = folder / "disk";
    std::filesystem::create_directory(disk);
    const bool isMounted =
        ::mount("tmpfs", disk.c_str(), "tmpfs", 0, "size=64k") == 0; // needs privileges
    writeContents(disk / "file", oldContents);
    const int status = inChild([&] {
        if (!isMounted) { // then what a file may hold is limited, which the system enforces as well
            ::signal(SIGXFSZ, SIG_IGN);
            const rlimit limit{65536, 65536};
            ::setrlimit(RLIMIT_FSIZE, &limit);
        }
        const auto replaced = replaceWith(disk / "file", anyFile(), newContents);
        const std::string expected = isMounted ? "No space left on device" : "File too large";
        return !replaced && replaced.error().reason == Reason::failed &&
                       replaced.error().message == expected
                   ? 0
                   : 1;
    });
    EXPECT_EQ(status, 0);
    EXPECT_EQ(contentsOf(disk / "file"), oldContents);
    EXPECT_EQ(namesIn(disk), std::vector<std::string>{"file"});
    if (isMounted) {
        ::umount(disk.c_str());
    }
}

TEST(AtomicFile, WritesNothingWhenTheContentsAreRejected) {
    const TemporaryFolder folder;
    writeContents(folder / "file", oldContents);
    const auto replaced = replaceFile(folder / "file", anyFile(), [](const ByteSink& sink) {
        EXPECT_TRUE(sink("half of it"));
        return false;
    });
    ASSERT_FALSE(replaced);
    EXPECT_EQ(replaced.error().reason, Reason::rejected);
    EXPECT_EQ(contentsOf(folder / "file"), oldContents);
    EXPECT_EQ(namesIn(folder.path()).size(), 1U);
}

TEST(AtomicFile, KeepsTheOldFileUnderANameThatIsFree) {
    const TemporaryFolder folder;
    writeContents(folder / "a.b.ombrel", oldContents);
    writeContents(folder / "a.b (before).ombrel", "not ours");
    Replacement replacement = anyFile();
    replacement.keepOldAs = "before";
    const auto replaced = replaceWith(folder / "a.b.ombrel", replacement, newContents);
    ASSERT_TRUE(replaced) << replaced.error().message;
    EXPECT_EQ(replaced->keptOldFile, folder / "a.b (before 2).ombrel");
    EXPECT_EQ(contentsOf(folder / "a.b.ombrel"), newContents);
    EXPECT_EQ(contentsOf(folder / "a.b (before).ombrel"), "not ours");
    EXPECT_EQ(contentsOf(folder / "a.b (before 2).ombrel"), oldContents);
    EXPECT_EQ(namesIn(folder.path()).size(), 3U);
}

TEST(AtomicFile, CutsALongNameBetweenCharactersForTheFileThatIsKept) {
    const TemporaryFolder folder;
    std::string stem = "x"; // then 124 letters of two bytes: 249 bytes and the extension
    for (int i = 0; i < 124; ++i) {
        stem += "é";
    }
    writeContents(folder / (stem + ".om"), oldContents);
    Replacement replacement = anyFile();
    replacement.keepOldAs = "before";
    const auto replaced = replaceWith(folder / (stem + ".om"), replacement, newContents);
    ASSERT_TRUE(replaced) << replaced.error().message;
    EXPECT_EQ(replaced->keptOldFile, folder / (stem.substr(0, 243) + " (before).om"));
    EXPECT_EQ(contentsOf(*replaced->keptOldFile), oldContents);
}

TEST(AtomicFile, CopiesTheOldFileWhereFilesHaveOneNameOnly) {
    class NoLinks : public FileOperations {
        int link(const std::string&, const std::string&) override {
            errno = EPERM;
            return -1;
        }
    } files;
    const TemporaryFolder folder;
    writeContents(folder / "file.ombrel", oldContents);
    ASSERT_EQ(::chmod((folder / "file.ombrel").c_str(), 0640), 0);
    Replacement replacement = anyFile();
    replacement.keepOldAs = "before";
    const auto replaced = replaceWith(folder / "file.ombrel", replacement, newContents, files);
    ASSERT_TRUE(replaced) << replaced.error().message;
    EXPECT_EQ(contentsOf(folder / "file (before).ombrel"), oldContents);
    EXPECT_EQ(modeOf(folder / "file (before).ombrel"), 0640U);
    EXPECT_EQ(contentsOf(folder / "file.ombrel"), newContents);
}

TEST(AtomicFile, WritesUnderANameWhereUnnamedFilesAreUnknown) {
    class NoUnnamedFiles : public FileOperations {
        int open(const std::string& file, int flags, mode_t mode) override {
            if ((flags & O_TMPFILE) == O_TMPFILE) {
                errno = EOPNOTSUPP;
                return -1;
            }
            return FileOperations::open(file, flags, mode);
        }
    } files;
    const TemporaryFolder folder;
    ASSERT_TRUE(replaceWith(folder / "file", {}, oldContents, files));
    ASSERT_TRUE(replaceWith(folder / "file", anyFile(), newContents, files));
    EXPECT_EQ(contentsOf(folder / "file"), newContents);
    EXPECT_EQ(namesIn(folder.path()), std::vector<std::string>{"file"});
}

// How many operations a save takes when none of them fails.
int operationsOfASave(const Replacement& replacement) {
    const TemporaryFolder folder;
    writeContents(folder / "file.ombrel", oldContents);
    FailingFiles files(-1, FailingFiles::Ending::fails);
    EXPECT_TRUE(replaceWith(folder / "file.ombrel", replacement, newContents, files));
    return files.count();
}

TEST(AtomicFile, LeavesTheOldFileOrTheNewOneWhicheverOperationFails) {
    Replacement replacement = anyFile();
    replacement.keepOldAs = "before";
    const int count = operationsOfASave(replacement);
    int failed = 0;
    for (int at = 0; at < count; ++at) {
        const TemporaryFolder folder;
        writeContents(folder / "file.ombrel", oldContents);
        FailingFiles files(at, FailingFiles::Ending::fails);
        const auto replaced = replaceWith(folder / "file.ombrel", replacement, newContents, files);
        const auto names = namesIn(folder.path());
        if (replaced) {
            EXPECT_EQ(contentsOf(folder / "file.ombrel"), newContents) << at;
            EXPECT_EQ(contentsOf(folder / "file (before).ombrel"), oldContents) << at;
            EXPECT_EQ(names.size(), 2U) << at;
        } else {
            ++failed;
            EXPECT_EQ(replaced.error().message, "Input/output error") << at;
            EXPECT_EQ(contentsOf(folder / "file.ombrel"), oldContents) << at;
            EXPECT_EQ(names.size(), 1U) << at;
        }
    }
    EXPECT_GE(count, 12);
    EXPECT_GE(failed, 9);
}

TEST(AtomicFile, SaysThatAFileWhoseFolderWasNotSynchronisedMayBeLost) {
    class UnsafeFolder : public FileOperations {
        int synchronise(int descriptor) override {
            struct stat status {};
            ::fstat(descriptor, &status);
            if (S_ISDIR(status.st_mode)) {
                errno = EIO;
                return -1;
            }
            return FileOperations::synchronise(descriptor);
        }
    } files;
    const TemporaryFolder folder;
    const auto replaced = replaceWith(folder / "file", {}, newContents, files);
    ASSERT_TRUE(replaced);
    EXPECT_EQ(replaced->notDurable, "Input/output error");
    EXPECT_EQ(replaced->stamp, stampOf(folder / "file"));
}

TEST(AtomicFile, LeavesTheOldFileOrTheNewOneWheneverTheProcessEnds) {
    const int count = operationsOfASave(anyFile());
    bool sawOld = false;
    bool sawNew = false;
    for (int at = 0; at < count; ++at) {
        for (const auto ending :
             {FailingFiles::Ending::killsBefore, FailingFiles::Ending::killsAfter}) {
            const TemporaryFolder folder;
            writeContents(folder / "file", oldContents);
            const int status = inChild([&] {
                FailingFiles files(at, ending);
                static_cast<void>(replaceWith(folder / "file", anyFile(), newContents, files));
                return 0;
            });
            EXPECT_EQ(status, 9) << at;
            const std::string contents = contentsOf(folder / "file");
            EXPECT_TRUE(contents == oldContents || contents == newContents) << at;
            sawOld = sawOld || contents == oldContents;
            sawNew = sawNew || contents == newContents;
            // The next save does not mind what is left of this one.
            EXPECT_TRUE(replaceWith(folder / "file", anyFile(), "next"));
        }
    }
    EXPECT_TRUE(sawOld);
    EXPECT_TRUE(sawNew);
}

TEST(AtomicFile, LeavesNoTraceWhenTheProcessEndsWhileItWrites) {
    const TemporaryFolder folder;
    writeContents(folder / "file", oldContents);
    const int status = inChild([&] {
        static_cast<void>(replaceFile(folder / "file", anyFile(), [](const ByteSink& sink) {
            sink(newContents);
            _exit(9);
            return true;
        }));
        return 0;
    });
    EXPECT_EQ(status, 9);
    EXPECT_EQ(contentsOf(folder / "file"), oldContents);
    EXPECT_EQ(namesIn(folder.path()), std::vector<std::string>{"file"});
}

TEST(AtomicFile, WaitsForAnotherSaveInTheSameFolder) {
    const TemporaryFolder folder;
    writeContents(folder / "file", oldContents);
    const int held = ::open(folder.path().c_str(), O_RDONLY | O_DIRECTORY);
    ASSERT_EQ(::flock(held, LOCK_EX), 0);
    // The holder writes the file and only then lets go, so whoever does not wait overwrites it.
    Replacement replacement;
    replacement.expected = stampOf(folder / "file");
    std::thread holder;
    const auto replaced = replaceFile(folder / "file", replacement, [&](const ByteSink& sink) {
        const bool written = sink(newContents);
        holder = std::thread([&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
            writeContents(folder / "file", "the holder's longer contents");
            ::close(held);
        });
        return written;
    });
    holder.join();
    ASSERT_FALSE(replaced);
    EXPECT_EQ(replaced.error().reason, Reason::changed);
    EXPECT_EQ(contentsOf(folder / "file"), "the holder's longer contents");
}

TEST(AtomicFile, LetsOneOfManySavesAtOnceWin) {
    const TemporaryFolder folder;
    writeContents(folder / "file", oldContents);
    Replacement replacement;
    replacement.expected = stampOf(folder / "file");
    constexpr int count = 8;
    std::vector<int> won(count, 0);
    std::vector<std::thread> threads;
    for (int i = 0; i < count; ++i) {
        threads.emplace_back([&, i] {
            const auto replaced =
                replaceWith(folder / "file", replacement, "saved by " + std::to_string(i));
            won[static_cast<std::size_t>(i)] = replaced ? 1 : 0;
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    const auto winner = std::find(won.begin(), won.end(), 1);
    EXPECT_EQ(std::count(won.begin(), won.end(), 1), 1);
    EXPECT_EQ(contentsOf(folder / "file"), "saved by " + std::to_string(winner - won.begin()));
    EXPECT_EQ(namesIn(folder.path()).size(), 1U);
}

} // namespace
} // namespace ombrel

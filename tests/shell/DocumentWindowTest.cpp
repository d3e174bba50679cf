#include "shell/DocumentWindow.h"

#include "core/ProjectDocument.h"
#include "shell/RecoveryDialog.h"
#include "shell/RecoveryStore.h"
#include "tests/shell/Studio.h"

#include <QDialog>
#include <QFileDialog>

#include <chrono>
#include <fstream>

namespace ombrel {
namespace {

using namespace test;
using namespace std::chrono_literals;

std::string savedName(const std::filesystem::path& path) {
    const auto opened = ProjectDocument::open(path);
    return opened ? opened->snapshot.project.name : opened.error().message;
}

void rename(Studio& studio, DocumentWindow& window, const std::string& name) {
    auto& state = *window.document().state();
    state.project.edit()->name = name;
    state.scheduleCheckpoint();
    studio.advance(500ms);
}

// Saves a new document to a file, as if the user had chosen it in the panel.
std::filesystem::path saveAs(Studio& studio, DocumentWindow& window, const std::string& name) {
    const auto path = studio.folder / (name + ".ombrel");
    trigger(window, "command.saveAs");
    studio.settle();
    Q_EMIT find<QFileDialog>(window, "savePanel").fileSelected(toQt(path));
    EXPECT_TRUE(studio.until([&] { return !window.document().isSaving(); }));
    find<QFileDialog>(window, "savePanel").close();
    studio.settle();
    return path;
}

TEST(DocumentWindow, IsEditedFromTheFirstUndoStepUntilItIsSaved) {
    Studio studio;
    auto& window = studio.newDocument();
    EXPECT_FALSE(window.isWindowModified());
    rename(studio, window, "Handbook");
    EXPECT_TRUE(window.isWindowModified());
    const auto path = saveAs(studio, window, "Handbook");
    EXPECT_FALSE(window.isWindowModified());
    EXPECT_EQ(savedName(path), "Handbook");
    EXPECT_TRUE(window.windowTitle().startsWith("Handbook"));
}

TEST(DocumentWindow, IsUneditedAgainWhenEveryStepSinceTheSaveIsUndone) {
    Studio studio;
    auto& window = studio.newDocument();
    saveAs(studio, window, "Handbook");
    rename(studio, window, "one");
    rename(studio, window, "two");
    trigger(window, "command.undo");
    EXPECT_TRUE(window.isWindowModified());
    trigger(window, "command.undo");
    EXPECT_FALSE(window.isWindowModified());
}

TEST(DocumentWindow, IsEditedWhenAStepReplacesOneThatWasSaved) {
    Studio studio;
    auto& window = studio.newDocument();
    rename(studio, window, "one");
    saveAs(studio, window, "Handbook");
    trigger(window, "command.undo");
    rename(studio, window, "two");
    EXPECT_TRUE(window.isWindowModified());
}

TEST(DocumentWindow, SavesAnEditWhoseCheckpointIsStillToCome) {
    Studio studio;
    auto& window = studio.newDocument();
    const auto path = saveAs(studio, window, "Handbook");
    auto& state = *window.document().state();
    state.project.edit()->name = "just typed";
    state.scheduleCheckpoint();
    EXPECT_TRUE(window.document().isEdited());
    trigger(window, "command.save");
    ASSERT_TRUE(studio.until([&] { return !window.document().isSaving(); }));
    EXPECT_EQ(savedName(path), "just typed");
    studio.advance(500ms);
    EXPECT_FALSE(window.document().isEdited());
}

TEST(DocumentWindow, AsksBeforeAFileIsReplacedThatAnotherProgramWrote) {
    Studio studio;
    auto& window = studio.newDocument();
    const auto path = saveAs(studio, window, "Handbook");
    const auto other = AppState::make(studio.platform.platform);
    other->project.edit()->name = "somebody else's";
    ASSERT_TRUE(ProjectDocument::create(path, other->makeSnapshot(), Overwrite::anything));
    rename(studio, window, "mine");

    trigger(window, "command.save");
    ASSERT_TRUE(studio.until([&] { return window.findChild<QDialog*>("conflict") != nullptr; }));
    EXPECT_EQ(textOf(window, "conflict.title"), "The file changed on disk");
    click(window, "conflict.first");
    studio.settle();
    EXPECT_EQ(savedName(path), "somebody else's");
    EXPECT_TRUE(window.isWindowModified());

    trigger(window, "command.save");
    ASSERT_TRUE(studio.until([&] { return window.findChild<QDialog*>("conflict") != nullptr; }));
    click(window, "conflict.third");
    ASSERT_TRUE(studio.until([&] { return !window.document().isEdited(); }));
    EXPECT_EQ(savedName(path), "mine");
}

TEST(DocumentWindow, TellsWhyItCouldNotBeSaved) {
    Studio studio;
    auto& window = studio.newDocument();
    trigger(window, "command.saveAs");
    studio.settle();
    Q_EMIT find<QFileDialog>(window, "savePanel")
        .fileSelected(toQt(studio.folder / "nowhere" / "x.ombrel"));
    ASSERT_TRUE(studio.until([&] { return window.findChild<QDialog*>("alert") != nullptr; }));
    EXPECT_EQ(textOf(window, "alert.title"), "Couldn't save the project");
    EXPECT_FALSE(window.document().hasFile());
}

TEST(Closing, DoesNotAskWhenNothingWouldBeLost) {
    Studio studio;
    auto& window = studio.newDocument();
    EXPECT_TRUE(window.close());
    studio.settle();
    EXPECT_TRUE(studio.application().documentWindows().isEmpty());
}

TEST(Closing, AsksOnceAndLosesNothingWhenTheUserCancels) {
    Studio studio;
    auto& window = studio.newDocument();
    rename(studio, window, "Handbook");
    EXPECT_FALSE(window.close());
    EXPECT_FALSE(window.close());
    studio.settle();
    EXPECT_EQ(window.findChildren<QDialog*>("closing").size(), 1);
    click(window, "closing.first");
    studio.settle();
    ASSERT_EQ(studio.application().documentWindows().size(), 1);
    EXPECT_EQ(window.document().state()->project->name, "Handbook");
}

TEST(Closing, SavesFirstWhenTheUserSaysSo) {
    Studio studio;
    auto& window = studio.newDocument();
    const auto path = saveAs(studio, window, "Handbook");
    rename(studio, window, "changed");
    window.close();
    studio.settle();
    click(window, "closing.third");
    ASSERT_TRUE(studio.until([&] { return studio.application().documentWindows().isEmpty(); }));
    EXPECT_EQ(savedName(path), "changed");
}

TEST(Closing, LeavesTheFileAloneWhenTheUserDoesNotSave) {
    Studio studio;
    auto& window = studio.newDocument();
    const auto path = saveAs(studio, window, "Handbook");
    rename(studio, window, "changed");
    window.close();
    studio.settle();
    click(window, "closing.second");
    studio.settle();
    EXPECT_TRUE(studio.application().documentWindows().isEmpty());
    EXPECT_EQ(savedName(path), "New Project");
    EXPECT_TRUE(RecoveryStore(studio.services().recoveryFolder()).list().empty());
}

TEST(Closing, AsksWhileWorkRuns) {
    Studio studio;
    auto& window = studio.newDocument();
    window.document().state()->editCurrentIndex()->isEnriching = true;
    EXPECT_FALSE(window.close());
    studio.settle();
    EXPECT_EQ(window.findChildren<QDialog*>("closing").size(), 1);
    click(window, "closing.second");
    studio.settle();
    EXPECT_TRUE(studio.application().documentWindows().isEmpty());
}

TEST(Quitting, StopsAtTheFirstWindowWhoseUserCancels) {
    Studio studio;
    auto& edited = studio.newDocument();
    rename(studio, edited, "edited");
    auto& unedited = studio.newDocument();
    studio.application().windowActivated(&unedited);
    studio.application().quit();
    studio.settle();
    ASSERT_EQ(studio.application().documentWindows().size(), 1);
    click(edited, "closing.first");
    studio.settle();
    EXPECT_EQ(studio.application().documentWindows().size(), 1);
}

TEST(Recovery, OffersWhatAKilledStudioHadNotSaved) {
    Studio studio;
    auto& window = studio.newDocument();
    const auto path = saveAs(studio, window, "Handbook");
    rename(studio, window, "not saved");
    window.document().keepForRecoveryNow();
    studio.restart();

    studio.application().launch({});
    studio.settle();
    QPointer<RecoveryDialog> dialog;
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (auto* found = qobject_cast<RecoveryDialog*>(widget)) {
            dialog = found;
        }
    }
    ASSERT_TRUE(dialog);
    click(*dialog, "recovery.recover");
    ASSERT_TRUE(studio.until([&] {
        const auto& windows = studio.application().documentWindows();
        return windows.size() == 1 && windows.first()->content();
    }));
    auto& recovered = *studio.application().documentWindows().first();
    EXPECT_EQ(recovered.document().state()->project->name, "not saved");
    EXPECT_EQ(recovered.document().path(), path);
    EXPECT_TRUE(recovered.document().isEdited());
    EXPECT_EQ(savedName(path), "New Project");

    trigger(recovered, "command.save");
    ASSERT_TRUE(studio.until([&] { return !recovered.document().isEdited(); }));
    EXPECT_EQ(savedName(path), "not saved");
    EXPECT_TRUE(RecoveryStore(studio.services().recoveryFolder()).list().empty());
}

TEST(Recovery, OpensWithoutAFileWhatWasSavedElsewhereSince) {
    Studio studio;
    auto& window = studio.newDocument();
    const auto path = saveAs(studio, window, "Handbook");
    rename(studio, window, "not saved");
    window.document().keepForRecoveryNow();
    std::filesystem::last_write_time(path, std::filesystem::file_time_type::clock::now() + 1h);
    studio.restart();
    studio.application().launch({});
    studio.settle();
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (auto* found = qobject_cast<RecoveryDialog*>(widget)) {
            click(*found, "recovery.recover");
        }
    }
    ASSERT_TRUE(studio.until([&] {
        const auto& windows = studio.application().documentWindows();
        return windows.size() == 1 && windows.first()->content();
    }));
    auto& recovered = studio.application().documentWindows().first()->document();
    EXPECT_FALSE(recovered.hasFile());
    EXPECT_EQ(recovered.name(), "Handbook");
    EXPECT_EQ(recovered.state()->project->name, "not saved");
}

TEST(Recovery, IsEmptyAgainOnceTheEditIsUndone) {
    Studio studio;
    auto& window = studio.newDocument();
    rename(studio, window, "edited");
    window.document().keepForRecoveryNow();
    const RecoveryStore store(studio.services().recoveryFolder());
    EXPECT_EQ(store.list().size(), 1U);
    trigger(window, "command.undo");
    EXPECT_TRUE(store.list().empty());
}

TEST(RecoveryStore, PassesOverWhatItDoesNotUnderstand) {
    TemporaryFolder folder;
    folder.write("readme.txt", "x");
    folder.write("9DE0B8A6-3F4C-4D8E-9B9B-1B1B1B1B1B1B.ombrel", "x"); // without its note
    folder.write("no id.ombrel", "x");
    EXPECT_TRUE(RecoveryStore(folder.path()).list().empty());
    EXPECT_TRUE(RecoveryStore(folder / "absent").list().empty());
}

} // namespace
} // namespace ombrel

#include "core/AppState.h"

#include "tests/core/Workspace.h"

#include <gtest/gtest.h>

namespace ombrel {
namespace {

using namespace test;

// A workspace in a window: it has an undo stack.
struct UndoWorkspace : Workspace {
    UndoWorkspace() { state->undoManager = std::make_shared<UndoManager>(); }
    UndoManager& undo() const { return *state->undoManager; }
    void rename(std::string name) const {
        state->project.edit()->name = std::move(name);
        state->scheduleCheckpoint();
    }
};

TEST(Checkpoint, IsOneStepForEditsLessThan400MillisecondsApartTimedFromTheLast) {
    const UndoWorkspace workspace;
    workspace.rename("a");
    workspace.advance(300);
    workspace.rename("b");
    workspace.advance(399);
    EXPECT_EQ(workspace.undo().count(), 0u);
    EXPECT_TRUE(workspace->hasPendingCheckpoint());
    workspace.advance(1);
    EXPECT_EQ(workspace.undo().count(), 1u);
    EXPECT_FALSE(workspace->hasPendingCheckpoint());
    workspace.advance(10000);
    EXPECT_EQ(workspace.undo().count(), 1u);
    workspace.undo().undo();
    EXPECT_EQ(workspace->project->name, "New Project");
}

TEST(Checkpoint, IsTwoStepsForEdits500MillisecondsApart) {
    const UndoWorkspace workspace;
    workspace.rename("a");
    workspace.advance(500);
    workspace.rename("b");
    workspace.advance(500);
    EXPECT_EQ(workspace.undo().count(), 2u);
    workspace.undo().undo();
    EXPECT_EQ(workspace->project->name, "a");
    workspace.undo().undo();
    EXPECT_EQ(workspace->project->name, "New Project");
}

TEST(Checkpoint, CanBeTakenBeforeItsTime) {
    const UndoWorkspace workspace;
    workspace->flushCheckpoint();
    EXPECT_EQ(workspace.undo().count(), 0u);
    workspace.rename("a");
    workspace->flushCheckpoint();
    EXPECT_EQ(workspace.undo().count(), 1u);
    EXPECT_FALSE(workspace->hasPendingCheckpoint());
    workspace.advance(10000);
    EXPECT_EQ(workspace.undo().count(), 1u);
}

TEST(Checkpoint, LeavesNothingBehindOfAReplacedOne) {
    const UndoWorkspace workspace;
    workspace.rename("a");
    workspace.rename("b");
    EXPECT_EQ(workspace.platform.executor->delayedCount(), 1u);
}

TEST(Checkpoint, HasALastSnapshotFromTheStart) {
    const UndoWorkspace workspace;
    ASSERT_TRUE(workspace->lastSnapshot);
    EXPECT_EQ(*workspace->lastSnapshot, workspace->makeSnapshot());
    workspace->checkpoint();
    EXPECT_EQ(workspace.undo().count(), 1u);
}

TEST(Checkpoint, OnlyStoresTheSnapshotWhenThereWasNone) {
    const UndoWorkspace workspace;
    workspace->lastSnapshot.reset();
    workspace->checkpoint();
    EXPECT_EQ(workspace.undo().count(), 0u);
    ASSERT_TRUE(workspace->lastSnapshot);
    EXPECT_EQ(*workspace->lastSnapshot, workspace->makeSnapshot());
}

TEST(Checkpoint, AddsAStepEvenWhenNothingHasChanged) {
    const UndoWorkspace workspace;
    workspace->checkpoint();
    workspace->checkpoint();
    EXPECT_EQ(workspace.undo().count(), 2u);
}

TEST(Checkpoint, KeepsUpWithTheStateWithoutAnUndoStack) {
    const UndoWorkspace workspace;
    const auto undo = std::move(workspace->undoManager);
    workspace.rename("a");
    workspace.settle();
    EXPECT_EQ(workspace->lastSnapshot->project.name, "a");
    workspace->undoManager = undo;
    workspace.rename("b");
    workspace.settle();
    workspace.undo().undo();
    EXPECT_EQ(workspace->project->name, "a");
}

TEST(Checkpoint, OfAClosedWindowEndsWithoutEffect) {
    UndoWorkspace workspace;
    const auto undo = workspace->undoManager;
    workspace.rename("a");
    const std::weak_ptr<AppState> watched = workspace.state;
    workspace.state.reset();
    EXPECT_TRUE(watched.expired());
    EXPECT_EQ(workspace.platform.executor->delayedCount(), 0u);
    workspace.advance(1000);
    EXPECT_EQ(undo->count(), 0u);
}

TEST(Undo, OfAClosedWindowsActionDoesNothing) {
    UndoWorkspace workspace;
    const auto undo = workspace->undoManager;
    workspace->checkpoint();
    workspace.state.reset();
    undo->undo();
    EXPECT_FALSE(undo->canUndo());
}

TEST(Undo, LeavesNoRedoAndSchedulesNothing) {
    const UndoWorkspace workspace;
    workspace.rename("a");
    workspace.settle();
    EXPECT_FALSE(workspace.undo().canRedo());
    workspace.undo().undo();
    EXPECT_FALSE(workspace.undo().canRedo());
    EXPECT_FALSE(workspace.undo().canUndo());
    EXPECT_FALSE(workspace->hasPendingCheckpoint());
}

TEST(Undo, OfAddingAnAgentRestoresTheListAndTheSelection) {
    const UndoWorkspace workspace;
    const Uuid first = workspace->addAgent().id;
    workspace.settle();
    workspace->addAgent();
    workspace.settle();
    workspace.undo().undo();
    ASSERT_EQ(workspace->agents->size(), 1u);
    EXPECT_EQ(workspace->selectedNavigatorItem(), showsAgent(first));
    workspace.undo().undo();
    EXPECT_TRUE(workspace->agents->empty());
    EXPECT_EQ(workspace->selectedNavigatorItem(), showsIndex(*workspace->selectedRAGIndexID));
}

TEST(Undo, ShowsTheSelectedIndexOfTheSnapshot) {
    const UndoWorkspace workspace;
    const Uuid first = workspace->ragIndexes->front().id;
    workspace->addRAGIndex();
    workspace.settle();
    workspace.undo().undo();
    EXPECT_EQ(workspace->ragIndexes->size(), 1u);
    EXPECT_EQ(*workspace->selectedRAGIndexID, first);
    EXPECT_EQ(workspace->selectedNavigatorItem(), showsIndex(first));
}

TEST(Undo, OfDeletingAToolBringsBackTheToolAndBothReferencesInOneStep) {
    const UndoWorkspace workspace;
    const Uuid tool = workspace->addTool().id;
    for (int i = 0; i < 2; ++i) {
        Agent agent = workspace->addAgent();
        agent.toolIDs = {tool};
        workspace->updateAgent(agent);
    }
    workspace.settle();
    const PersistedProject before = workspace->makeSnapshot();
    workspace->deleteTool(tool);
    workspace.settle();
    EXPECT_TRUE(workspace->agents->front().toolIDs.empty());
    workspace.undo().undo();
    EXPECT_EQ(workspace->makeSnapshot(), before);
    EXPECT_EQ(workspace->agents->at(0).toolIDs, std::vector{tool});
    EXPECT_EQ(workspace->agents->at(1).toolIDs, std::vector{tool});
}

TEST(Undo, OfAResetBringsBackTheKnowledge) {
    const UndoWorkspace workspace;
    workspace->addRAGIndex();
    workspace.settle();
    const PersistedProject before = workspace->makeSnapshot();
    workspace->resetProject();
    workspace.settle();
    workspace.undo().undo();
    EXPECT_EQ(workspace->makeSnapshot(), before);
}

TEST(Undo, IsWhereTheNextEditGoesOnFrom) {
    const UndoWorkspace workspace;
    workspace.rename("a");
    workspace.settle();
    workspace.undo().undo();
    workspace.rename("b");
    workspace.settle();
    EXPECT_EQ(workspace.undo().count(), 1u);
    workspace.undo().undo();
    EXPECT_EQ(workspace->project->name, "New Project");
}

TEST(Undo, LosesWhatASnapshotDoesNotHold) {
    const UndoWorkspace workspace;
    workspace.rename("a");
    workspace.settle();
    workspace->editCurrentIndex()->playgroundResult.emplace();
    workspace.undo().undo();
    EXPECT_FALSE(workspace->currentIndex().playgroundResult.has_value());
}

TEST(Load, IsNotAnUndoStepAndIsWhatTheFirstEditUndoesTo) {
    const Workspace source;
    source->project.edit()->name = "From a file";
    PersistedProject snapshot = source->makeSnapshot();
    snapshot.formatVersion = 1;
    const UndoWorkspace workspace;
    workspace->load(snapshot);
    EXPECT_FALSE(workspace->hasPendingCheckpoint());
    EXPECT_EQ(workspace.undo().count(), 0u);
    EXPECT_EQ(*workspace->lastSnapshot, snapshot);
    EXPECT_EQ(workspace->makeSnapshot().formatVersion, 2);
    workspace.rename("a");
    workspace.settle();
    workspace.undo().undo();
    EXPECT_EQ(workspace->project->name, "From a file");
}

} // namespace
} // namespace ombrel

#include "shell/DocumentCommands.h"

#include "tests/shell/Studio.h"

#include <QDialog>
#include <QMenu>

#include <chrono>

namespace ombrel {
namespace {

using namespace test;
using namespace std::chrono_literals;

struct Fixture {
    Studio studio;
    DocumentWindow& window = studio.newDocument();
    AppState& state = *window.document().state();

    bool isEnabled(const char* command) {
        auto& action = find<QAction>(window, command);
        // What the menu would show: enablement follows changes soon.
        find<QMenu>(window, "menu.build").aboutToShow();
        return action.isEnabled();
    }
    void addChunk() {
        SourceDocument source;
        source.id = Uuid::random();
        source.name = "a.md";
        source.chunkCount = 1;
        DocumentChunk chunk;
        chunk.id = Uuid::random();
        chunk.text = "text";
        auto index = state.editCurrentIndex();
        index->chunksByDocument[source.id] = ChunkArray(std::vector{chunk});
        index->sources.push_back(source);
    }
    void setIndexKind(IndexKind kind) {
        Variant variant = state.currentVariant();
        variant.settings.index = kind;
        state.updateVariant(variant);
    }
};

TEST(BuildMenu, HasItsCommandsInOrder) {
    Fixture f;
    QStringList titles;
    const auto actions = find<QMenu>(f.window, "menu.build").actions();
    for (const QAction* action : actions) {
        if (!action->isSeparator()) {
            titles.append(action->text());
        }
    }
    EXPECT_EQ(titles.join('|'), "Build|Re-scan Sources|Warm Up Model|Run Playground Query|Run "
                                "Evaluation|Draft Test Questions|Duplicate Variant|Reset Project…");
    EXPECT_EQ(find<QAction>(f.window, "command.build").shortcut(), QKeySequence("Ctrl+B"));
}

TEST(BuildMenu, BuildIsDisabledWhileEnrichmentRunsAndRescanIsNot) {
    Fixture f;
    EXPECT_TRUE(f.isEnabled("command.build"));
    f.state.editCurrentIndex()->isEnriching = true;
    EXPECT_FALSE(f.isEnabled("command.build"));
    EXPECT_TRUE(f.isEnabled("command.rescan"));
    EXPECT_FALSE(find<QAbstractButton>(f.window, "topBar.build").isEnabled() &&
                 !f.studio.until(
                     [&] { return !find<QAbstractButton>(f.window, "topBar.build").isEnabled(); }));
}

TEST(BuildMenu, FollowsChangesOfTheStateByItself) {
    Fixture f;
    auto& build = find<QAction>(f.window, "command.build");
    f.state.editCurrentIndex()->isEnriching = true;
    EXPECT_TRUE(f.studio.until([&] { return !build.isEnabled(); }));
    f.state.editCurrentIndex()->isEnriching = false;
    EXPECT_TRUE(f.studio.until([&] { return build.isEnabled(); }));
}

TEST(BuildMenu, WarmUpNeedsAnIndexThatNeitherAsksNorWarmsUp) {
    Fixture f;
    EXPECT_TRUE(f.isEnabled("command.warmUp"));
    f.state.editCurrentIndex()->isAsking = true;
    EXPECT_FALSE(f.isEnabled("command.warmUp"));
    f.state.editCurrentIndex()->isAsking = false;
    f.state.editCurrentIndex()->isWarmingUp = true;
    EXPECT_FALSE(f.isEnabled("command.warmUp"));
}

TEST(BuildMenu, AQueryNeedsChunksAndAQuestionThatIsNotBlank) {
    Fixture f;
    f.state.editCurrentIndex()->playgroundQuestion = "why?";
    EXPECT_FALSE(f.isEnabled("command.runQuery"));
    f.addChunk();
    EXPECT_TRUE(f.isEnabled("command.runQuery"));
    f.state.editCurrentIndex()->playgroundQuestion = " \n";
    EXPECT_FALSE(f.isEnabled("command.runQuery"));
    f.state.editCurrentIndex()->playgroundQuestion = "why?";
    f.state.editCurrentIndex()->isAsking = true;
    EXPECT_FALSE(f.isEnabled("command.runQuery"));
}

TEST(BuildMenu, RunEvaluationIsDisabledUnderSpotlight) {
    Fixture f;
    f.addChunk();
    EXPECT_FALSE(f.isEnabled("command.runEvaluation"));
    TestQuestion question;
    question.id = Uuid::random();
    f.state.editCurrentIndex()->testQuestions.push_back(question);
    EXPECT_TRUE(f.isEnabled("command.runEvaluation"));
    f.setIndexKind(IndexKind::spotlight);
    EXPECT_FALSE(f.isEnabled("command.runEvaluation"));
}

TEST(BuildMenu, DraftingNeedsChunksAndNoDraftingThatRuns) {
    Fixture f;
    EXPECT_FALSE(f.isEnabled("command.draftQuestions"));
    f.addChunk();
    EXPECT_TRUE(f.isEnabled("command.draftQuestions"));
    f.state.editCurrentIndex()->isDrafting = true;
    EXPECT_FALSE(f.isEnabled("command.draftQuestions"));
}

TEST(BuildMenu, DuplicatesTheVariant) {
    Fixture f;
    trigger(f.window, "command.duplicateVariant");
    EXPECT_EQ(f.state.currentIndex().variants.size(), 2U);
    EXPECT_EQ(f.state.currentVariant().name, "Default copy");
}

TEST(BuildMenu, ResetsTheProjectOnceItIsConfirmed) {
    Fixture f;
    f.addChunk();
    trigger(f.window, "command.resetProject");
    EXPECT_EQ(textOf(f.window, "confirmation.title"), "Reset this project?");
    EXPECT_EQ(textOf(f.window, "confirmation.message"),
              "This removes every source, chunk, variant, and test question in \"New Project\". "
              "You can undo it with Ctrl+Z right after.");
    click(f.window, "confirmation.cancel");
    f.studio.settle();
    EXPECT_EQ(f.state.currentIndex().sources.size(), 1U);
    trigger(f.window, "command.resetProject");
    click(f.window, "confirmation.confirm");
    f.studio.settle();
    EXPECT_TRUE(f.state.currentIndex().sources.empty());
}

TEST(NewMenu, AddsAgentsAndTools) {
    Fixture f;
    EXPECT_EQ(find<QAction>(f.window, "command.newAgent").shortcut(), QKeySequence("Ctrl+Shift+N"));
    trigger(f.window, "command.newAgent");
    trigger(f.window, "command.newTool");
    EXPECT_EQ(f.state.agents->size(), 1U);
    EXPECT_EQ(f.state.tools->size(), 1U);
}

TEST(GoMenu, HasEveryTabButTheProjects) {
    Fixture f;
    QStringList entries;
    const auto actions = find<QMenu>(f.window, "menu.go").actions();
    for (const QAction* action : actions) {
        entries.append(action->text() + ' ' + action->shortcut().toString());
    }
    EXPECT_EQ(entries.join('|'), "Sources Ctrl+1|Settings Ctrl+2|Index Ctrl+3|Evaluation "
                                 "Ctrl+4|Playground Ctrl+5|Export Ctrl+6");
}

TEST(GoMenu, ChangesTheTabAndLeavesAnAgentSelected) {
    Fixture f;
    f.state.addAgent();
    const NavigatorSelection agent = f.state.selectedNavigatorItem();
    f.state.setSelectedTab(AppTab::exportPackage);
    trigger(f.window, "command.goSources");
    EXPECT_EQ(f.state.selectedTab(), AppTab::sources);
    EXPECT_EQ(f.state.selectedNavigatorItem(), agent);
}

TEST(EditMenu, UndoesAndNeverRedoes) {
    Fixture f;
    EXPECT_FALSE(find<QAction>(f.window, "command.undo").isEnabled());
    f.state.addAgent();
    f.studio.advance(500ms);
    EXPECT_TRUE(find<QAction>(f.window, "command.undo").isEnabled());
    trigger(f.window, "command.undo");
    EXPECT_TRUE(f.state.agents->empty());
    EXPECT_FALSE(find<QAction>(f.window, "command.undo").isEnabled());
    EXPECT_FALSE(find<QAction>(f.window, "command.redo").isEnabled());
}

TEST(EditMenu, UndoesAnEditOfTheLastMomentAlone) {
    Fixture f;
    f.state.addAgent();
    f.studio.advance(500ms);
    f.state.addTool();
    trigger(f.window, "command.undo");
    EXPECT_TRUE(f.state.tools->empty());
    EXPECT_EQ(f.state.agents->size(), 1U);
    f.studio.advance(500ms);
    trigger(f.window, "command.undo");
    EXPECT_TRUE(f.state.agents->empty());
    EXPECT_FALSE(find<QAction>(f.window, "command.undo").isEnabled());
}

TEST(Commands, OfAProjectThatIsStillReadAreDisabled) {
    Studio studio;
    const auto path = studio.folder / "slow.ombrel";
    ASSERT_TRUE(
        ProjectDocument::create(path, AppState::make(studio.platform.platform)->makeSnapshot()));
    studio.application().openDocument(path);
    DocumentWindow& window = *studio.application().documentWindows().first();
    for (const char* command : {"command.build", "command.rescan", "command.save",
                                "command.newAgent", "command.goSources", "command.resetProject"}) {
        EXPECT_FALSE(find<QAction>(window, command).isEnabled()) << command;
    }
    EXPECT_TRUE(isShown(window, "opening"));
    ASSERT_TRUE(studio.until([&] { return window.content() != nullptr; }));
    EXPECT_TRUE(find<QAction>(window, "command.save").isEnabled());
}

} // namespace
} // namespace ombrel

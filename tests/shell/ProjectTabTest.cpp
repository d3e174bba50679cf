#include "shell/tabs/ProjectTab.h"

#include "tests/shell/Studio.h"

#include <QDialog>

#include <chrono>

namespace ombrel {
namespace {

using namespace test;
using namespace std::chrono_literals;

struct Fixture {
    Studio studio;
    DocumentWindow& window = studio.newDocument();
    AppState& state = *window.document().state();

    Fixture() {
        state.setSelectedTab(AppTab::project);
        studio.until([&] { return isShown(window, "tab.project"); });
    }
};

TEST(ProjectTab, NamesTheProjectAsAnUndoableEdit) {
    Fixture f;
    EXPECT_EQ(textOf(f.window, "project.name"), "New Project");
    type(f.window, "project.name", "Handbook");
    EXPECT_EQ(f.state.project->name, "Handbook");
    f.studio.advance(500ms);
    trigger(f.window, "command.undo");
    EXPECT_EQ(f.state.project->name, "New Project");
    EXPECT_TRUE(f.studio.until([&] { return textOf(f.window, "project.name") == "New Project"; }));
}

TEST(ProjectTab, ReportsTheLastBuild) {
    Fixture f;
    EXPECT_EQ(textOf(f.window, "fact.lastBuild"), "Not built yet");
    EXPECT_FALSE(isShown(f.window, "fact.lastBuilt"));
    {
        auto project = f.state.project.edit();
        project->lastBuiltDescription = "Build Succeeded";
        project->lastBuildFinishedAt = Date{0};
    }
    EXPECT_TRUE(
        f.studio.until([&] { return textOf(f.window, "fact.lastBuild") == "Build Succeeded"; }));
    EXPECT_NE(textOf(f.window, "fact.lastBuilt").find(" at "), std::string::npos);
}

TEST(ProjectTab, ResetsTheProjectOnceItIsConfirmed) {
    Fixture f;
    f.state.addRAGIndex();
    f.state.setSelectedNavigatorItem({NavigatorSelection::Rag{*f.state.selectedRAGIndexID}});
    f.studio.settle();
    click(f.window, "project.reset");
    EXPECT_EQ(textOf(f.window, "confirmation.title"), "Reset this project?");
    click(f.window, "confirmation.confirm");
    f.studio.settle();
    EXPECT_EQ(f.state.ragIndexes->size(), 1U);
}

} // namespace
} // namespace ombrel

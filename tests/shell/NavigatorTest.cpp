#include "shell/NavigatorView.h"

#include "shell/design/SegmentedControl.h"
#include "tests/shell/Studio.h"

#include <QDialog>
#include <QListView>
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
    QListView& list = find<QListView>(window, "navigator.list");

    std::string rows() {
        QStringList titles;
        for (int row = 0; row < list.model()->rowCount(); ++row) {
            titles.append(list.model()->index(row, 0).data().toString());
        }
        return fromQt(titles.join('|'));
    }
    bool shows(const std::string& wanted) {
        return studio.until([&] { return rows() == wanted; });
    }
    void choose(int row) {
        list.setCurrentIndex(list.model()->index(row, 0));
        studio.settle();
    }
    void openMenu(int row) {
        Q_EMIT list.customContextMenuRequested(
            list.visualRect(list.model()->index(row, 0)).center());
        studio.settle();
    }
};

TEST(Navigator, ListsTheKindsInOrder) {
    Fixture f;
    QStringList names;
    auto& kinds = find<SegmentedControl>(f.window, "navigator.kinds");
    for (int i = 0; i < 4; ++i) {
        names.append(kinds.button(i)->text());
    }
    EXPECT_EQ(names.join('|'), "Flows|Agents|Tools|RAGs");
}

TEST(Navigator, SaysWhatAKindIsWhereThereIsNone) {
    Fixture f;
    const std::pair<const char*, const char*> texts[] = {
        {"flows", "A flow wires agents, tools and branches into one runnable pipeline."},
        {"agents", "An agent is a model with instructions, a typed input and a typed output."},
        {"tools", "A tool is a function an agent can call, with typed arguments."}};
    for (const auto& [kind, text] : texts) {
        click(f.window, (std::string("navigator.kinds.") + kind).c_str());
        auto& empty = find<QWidget>(f.window, "navigator.empty");
        ASSERT_TRUE(f.studio.until([&, wanted = std::string(text)] {
            return empty.isVisible() && textOf(empty, "empty.text") == wanted;
        })) << kind;
    }
    EXPECT_EQ(textOf(find<QWidget>(f.window, "navigator.empty"), "empty.title"), "No Tools yet");
}

TEST(Navigator, NamesThingsWithoutAName) {
    Fixture f;
    f.state.addFlow();
    f.state.flows.edit()->front().name.clear();
    f.state.addAgent();
    f.state.agents.edit()->front().name.clear();
    f.state.addTool();
    f.state.tools.edit()->front().name.clear();
    EXPECT_TRUE(f.shows("UntitledTool"));
    click(f.window, "navigator.kinds.agents");
    EXPECT_TRUE(f.shows("Untitled Agent"));
    click(f.window, "navigator.kinds.flows");
    EXPECT_TRUE(f.shows("Untitled Flow"));
}

TEST(Navigator, RemembersItsKind) {
    Fixture f;
    click(f.window, "navigator.kinds.tools");
    EXPECT_EQ(f.studio.services().settings().navigatorSelectedNavigator(), "Tools");
    auto& next = f.studio.newDocument();
    EXPECT_EQ(find<SegmentedControl>(next, "navigator.kinds").currentIndex(), 2);
}

TEST(Navigator, SelectsWhatIsChosenInIt) {
    Fixture f;
    const Uuid first = f.state.currentIndex().id;
    f.state.addRAGIndex();
    ASSERT_TRUE(f.shows("Default|New RAG 2"));
    f.choose(0);
    EXPECT_EQ(*f.state.selectedRAGIndexID, first);
    EXPECT_EQ(f.state.selectedNavigatorItem(), NavigatorSelection{NavigatorSelection::Rag{first}});
}

TEST(Navigator, ShowsWhatIsSelectedElsewhere) {
    Fixture f;
    trigger(f.window, "command.newAgent");
    EXPECT_TRUE(f.shows("New Agent 1"));
    EXPECT_EQ(f.list.currentIndex().row(), 0);
}

TEST(Navigator, AddsAThingOfItsKind) {
    Fixture f;
    click(f.window, "navigator.add");
    EXPECT_EQ(f.state.ragIndexes->size(), 2U);
    click(f.window, "navigator.kinds.flows");
    f.studio.settle();
    click(f.window, "navigator.add");
    EXPECT_EQ(f.state.flows->size(), 1U);
    EXPECT_TRUE(f.shows("New Flow 1"));
}

TEST(Navigator, ShowsNoRowAndKeepsTheSelectionWhenTheFilterLeavesNothing) {
    Fixture f;
    const NavigatorSelection selected = f.state.selectedNavigatorItem();
    type(f.window, "navigator.filter", "nothing like it");
    EXPECT_TRUE(f.shows(""));
    EXPECT_FALSE(isShown(f.window, "navigator.empty"));
    EXPECT_EQ(f.state.selectedNavigatorItem(), selected);
    type(f.window, "navigator.filter", "FAU");
    EXPECT_TRUE(f.shows("Default"));
}

TEST(Navigator, DuplicatesFromTheContextMenu) {
    Fixture f;
    f.openMenu(0);
    trigger(f.window, "navigator.duplicate");
    EXPECT_TRUE(f.shows("Default|Default copy"));
}

TEST(Navigator, DeletesOnceItIsConfirmed) {
    Fixture f;
    f.state.addAgent();
    f.state.addAgent();
    ASSERT_TRUE(f.shows("New Agent 1|New Agent 2"));
    f.openMenu(0);
    trigger(f.window, "navigator.delete");
    f.studio.settle();
    EXPECT_EQ(textOf(f.window, "confirmation.title"), "Delete \"New Agent 1\"?");
    EXPECT_EQ(textOf(f.window, "confirmation.message"), "You can undo this with Ctrl+Z.");
    EXPECT_EQ(textOf(f.window, "confirmation.cancel"), "Cancel");
    EXPECT_EQ(textOf(f.window, "confirmation.confirm"), "Delete");
    click(f.window, "confirmation.cancel");
    f.studio.settle();
    EXPECT_EQ(f.state.agents->size(), 2U);

    f.openMenu(0);
    trigger(f.window, "navigator.delete");
    click(f.window, "confirmation.confirm");
    EXPECT_TRUE(f.shows("New Agent 2"));
}

TEST(Navigator, KeepsTheLastIndex) {
    Fixture f;
    f.openMenu(0);
    EXPECT_FALSE(find<QAction>(f.window, "navigator.delete").isEnabled());
}

TEST(ContentView, SaysWhatIsNotFound) {
    Fixture f;
    f.state.setSelectedNavigatorItem({NavigatorSelection::Flow{Uuid::random()}});
    auto& notFound = find<QWidget>(f.window, "notFound");
    ASSERT_TRUE(f.studio.until([&] { return notFound.isVisible(); }));
    EXPECT_EQ(textOf(notFound, "empty.title"), "Flow Not Found");
}

TEST(ContentView, ShowsTheBuilderOfAnAgentAndTheEditorOfATool) {
    Fixture f;
    f.state.addAgent();
    ASSERT_TRUE(f.studio.until([&] { return isShown(f.window, "agent"); }));
    EXPECT_EQ(textOf(f.window, "agent.name"), "New Agent 1");
    f.state.addTool();
    ASSERT_TRUE(f.studio.until([&] { return isShown(f.window, "tool"); }));
    EXPECT_EQ(textOf(f.window, "tool.name"), "newTool1");
}

TEST(IndexHeader, RenamesTheIndexAndCounts) {
    Fixture f;
    type(f.window, "rag.name", "Field guide");
    EXPECT_EQ(f.state.currentIndex().name, "Field guide");
    EXPECT_EQ(textOf(f.window, "rag.counts"), "0 sources · 0 chunks");
    SourceDocument source;
    source.id = Uuid::random();
    source.chunkCount = 3;
    source.tokenCount = 1200;
    f.state.editCurrentIndex()->sources.push_back(source);
    EXPECT_TRUE(
        f.studio.until([&] { return textOf(f.window, "rag.counts") == "1 source · 3 chunks"; }));
    EXPECT_TRUE(f.studio.until(
        [&] { return textOf(f.window, "topBar.totals") == "3 chunks · 1,200 tok"; }));
    f.studio.advance(500ms);
    trigger(f.window, "command.undo");
    EXPECT_TRUE(f.studio.until([&] { return textOf(f.window, "rag.name") == "Default"; }));
}

TEST(TopBar, SaysHowTheBuildStands) {
    Fixture f;
    EXPECT_EQ(textOf(f.window, "topBar.status"), "Not built yet");
    f.state.editCurrentIndex()->isEnriching = true;
    f.state.editCurrentIndex()->enrichProgress = Progress{3, 12};
    EXPECT_TRUE(f.studio.until(
        [&] { return textOf(f.window, "topBar.status") == "Enriching chunks — 3 of 12"; }));
    f.state.editCurrentIndex()->isEnriching = false;
    {
        auto project = f.state.project.edit();
        project->lastBuildFinishedAt = Date::now();
        project->lastBuiltDescription = "Build Succeeded";
        project->lastBuiltSettings = f.state.currentVariant().settings;
    }
    EXPECT_TRUE(f.studio.until(
        [&] { return textOf(f.window, "topBar.status") == "Build Succeeded · just now"; }));
    auto& build = find<QWidget>(f.window, "topBar.build");
    EXPECT_EQ(build.toolTip(), "Build — re-chunk sources and apply enrichment (Ctrl+B)");
    Variant variant = f.state.currentVariant();
    variant.settings.targetChunkSize += 0.5;
    f.state.updateVariant(variant);
    EXPECT_TRUE(f.studio.until([&] {
        return build.toolTip() ==
               "Settings changed since the last build — click to rebuild (Ctrl+B)";
    }));
}

TEST(TopBar, HasTheTabsInOrderAndChangesThem) {
    Fixture f;
    QStringList names;
    auto& tabs = find<SegmentedControl>(f.window, "tabs");
    for (int i = 0; i < 7; ++i) {
        names.append(tabs.button(i)->text());
    }
    EXPECT_EQ(names.join('|'), "Project|Sources|Settings|Index|Evaluation|Playground|Export");
    EXPECT_EQ(tabs.currentIndex(), 1);
    click(f.window, "tabs.evaluation");
    EXPECT_EQ(f.state.selectedTab(), AppTab::evaluation);
    EXPECT_TRUE(f.studio.until([&] { return isShown(f.window, "tab.evaluation"); }));
}

} // namespace
} // namespace ombrel

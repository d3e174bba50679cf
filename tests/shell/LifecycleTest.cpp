#include "core/ProjectDocument.h"
#include "shell/RecentProjects.h"
#include "shell/WelcomeView.h"
#include "tests/shell/Studio.h"

#include <QCheckBox>
#include <QListWidget>
#include <QStackedWidget>

#include <fstream>

namespace ombrel {
namespace {

using namespace test;

std::filesystem::path makeProject(const Studio& studio, const std::string& name) {
    const auto path = studio.folder / (name + ".ombrel");
    auto state = AppState::make(studio.platform.platform);
    state->project.edit()->name = name;
    EXPECT_TRUE(ProjectDocument::create(path, state->makeSnapshot()));
    return path;
}

// Opens the project and waits for its content.
DocumentWindow& open(Studio& studio, const std::filesystem::path& path) {
    studio.application().openDocument(path);
    DocumentWindow* window = studio.application().documentWindows().last();
    EXPECT_TRUE(studio.until([&] { return window->content() != nullptr; }));
    studio.settle();
    return *window;
}

bool isGreeting(Studio& studio) {
    return studio.application().welcomeWindow() &&
           studio.application().welcomeWindow()->isVisible();
}

TEST(RecentProjects, ListsTheMostRecentFirstAndEachOnce) {
    Studio studio;
    auto& settings = studio.services().settings();
    const auto first = makeProject(studio, "first");
    const auto second = makeProject(studio, "second");
    noteRecentProject(settings, first);
    noteRecentProject(settings, second);
    noteRecentProject(settings, first);
    const auto recents = loadRecentProjects(settings);
    ASSERT_EQ(recents.size(), 2U);
    EXPECT_EQ(recents[0].url, first);
    EXPECT_EQ(recents[1].url, second);
    EXPECT_TRUE(recents[0].modified);
}

TEST(RecentProjects, LeavesOutAProjectWhoseFileWasDeleted) {
    Studio studio;
    auto& settings = studio.services().settings();
    const auto kept = makeProject(studio, "kept");
    const auto deleted = makeProject(studio, "deleted");
    noteRecentProject(settings, kept);
    noteRecentProject(settings, deleted);
    std::filesystem::remove(deleted);
    const auto recents = loadRecentProjects(settings);
    ASSERT_EQ(recents.size(), 1U);
    EXPECT_EQ(recents[0].url, kept);
}

TEST(Launch, GreetsWhenThereIsNothingToRestore) {
    Studio studio;
    studio.application().launch({});
    studio.settle();
    EXPECT_TRUE(isGreeting(studio));
    EXPECT_TRUE(studio.application().documentWindows().isEmpty());
}

TEST(Launch, WithTheToggleOffShowsNoWindowUntilTheIconIsActivated) {
    Studio studio;
    studio.services().settings().setShowWelcomeWindowAtLaunch(false);
    studio.application().launch({});
    studio.settle();
    EXPECT_FALSE(isGreeting(studio));
    EXPECT_TRUE(studio.application().documentWindows().isEmpty());

    EXPECT_FALSE(studio.application().applicationShouldHandleReopen(false));
    EXPECT_TRUE(isGreeting(studio));
}

TEST(Launch, RestoresWhatWasOpenInPlaceOfTheGreeting) {
    Studio studio;
    const auto path = makeProject(studio, "Handbook");
    open(studio, path);
    studio.restart();
    studio.application().launch({});
    ASSERT_EQ(studio.application().documentWindows().size(), 1);
    DocumentWindow* window = studio.application().documentWindows().first();
    ASSERT_TRUE(studio.until([&] { return window->content() != nullptr; }));
    EXPECT_EQ(window->document().path(), path);
    EXPECT_FALSE(isGreeting(studio));
}

TEST(Launch, DoesNotRestoreWhatTheUserClosed) {
    Studio studio;
    DocumentWindow& window = open(studio, makeProject(studio, "Handbook"));
    window.close();
    studio.settle();
    studio.restart();
    studio.application().launch({});
    studio.settle();
    EXPECT_TRUE(studio.application().documentWindows().isEmpty());
    EXPECT_TRUE(isGreeting(studio));
}

TEST(Launch, OpensTheFilesThatItIsGiven) {
    Studio studio;
    const auto path = makeProject(studio, "given");
    studio.application().launch({path});
    ASSERT_EQ(studio.application().documentWindows().size(), 1);
    EXPECT_FALSE(isGreeting(studio));
    ASSERT_TRUE(studio.until(
        [&] { return studio.application().documentWindows().first()->content() != nullptr; }));
}

TEST(Reopen, PassesOnWhetherThereAreWindows) {
    Studio studio;
    studio.newDocument();
    EXPECT_TRUE(studio.application().applicationShouldHandleReopen(true));
    EXPECT_FALSE(isGreeting(studio));
}

TEST(Reopen, BringsAnOpenProjectForwardInsteadOfOpeningItTwice) {
    Studio studio;
    const auto path = makeProject(studio, "Handbook");
    open(studio, path);
    studio.application().reopen({path});
    studio.settle();
    EXPECT_EQ(studio.application().documentWindows().size(), 1);
}

TEST(Welcome, GoesWhenAProjectIsOpened) {
    Studio studio;
    studio.application().launch({});
    open(studio, makeProject(studio, "Handbook"));
    EXPECT_FALSE(isGreeting(studio));
}

TEST(Welcome, MakesANewProject) {
    Studio studio;
    studio.application().launch({});
    click(*studio.application().welcomeWindow(), "welcome.new");
    studio.settle();
    ASSERT_EQ(studio.application().documentWindows().size(), 1);
    EXPECT_FALSE(isGreeting(studio));
    EXPECT_EQ(studio.application().documentWindows().first()->document().state()->project->name,
              "New Project");
}

TEST(Welcome, ListsRecentProjectsAndOpensTheOneThatIsActivated) {
    Studio studio;
    const auto path = makeProject(studio, "Handbook");
    noteRecentProject(studio.services().settings(), path);
    studio.application().launch({});
    auto& list = find<QListWidget>(*studio.application().welcomeWindow(), "welcome.recents");
    ASSERT_EQ(list.count(), 1);
    EXPECT_EQ(list.item(0)->text(), "Handbook");
    EXPECT_EQ(list.item(0)->toolTip(), "Double-click to open");
    list.setCurrentRow(0);
    EXPECT_EQ(studio.application().welcomeWindow()->selection(), path);
    Q_EMIT list.itemActivated(list.item(0));
    ASSERT_TRUE(studio.until([&] {
        const auto& windows = studio.application().documentWindows();
        return windows.size() == 1 && windows.first()->content();
    }));
    EXPECT_FALSE(isGreeting(studio));
}

TEST(Welcome, ForgetsASelectionThatIsNoLongerListed) {
    Studio studio;
    const auto path = makeProject(studio, "Handbook");
    noteRecentProject(studio.services().settings(), path);
    studio.application().launch({});
    WelcomeView* welcome = studio.application().welcomeWindow();
    find<QListWidget>(*welcome, "welcome.recents").setCurrentRow(0);
    welcome->close();
    std::filesystem::remove(path);
    studio.application().showWelcome();
    EXPECT_FALSE(welcome->selection());
    EXPECT_TRUE(welcome->recents().empty());
    EXPECT_TRUE(isShown(*welcome, "welcome.noRecents"));
}

TEST(Welcome, StaysWithTheReasonWhenAProjectCannotBeOpened) {
    Studio studio;
    const auto path = studio.folder.write("damaged.ombrel", "not a project");
    noteRecentProject(studio.services().settings(), path);
    studio.application().launch({});
    WelcomeView* welcome = studio.application().welcomeWindow();
    auto& list = find<QListWidget>(*welcome, "welcome.recents");
    Q_EMIT list.itemActivated(list.item(0));
    ASSERT_TRUE(studio.until([&] { return welcome->openErrorMessage().has_value(); }));
    studio.settle();
    EXPECT_TRUE(isGreeting(studio));
    EXPECT_TRUE(studio.application().documentWindows().isEmpty());
    EXPECT_EQ(textOf(*welcome, "alert.title"), "Couldn't open the project");
    EXPECT_EQ(textOf(*welcome, "alert.message"), fromQt(*welcome->openErrorMessage()));
    click(*welcome, "alert.ok");
    studio.settle();
    EXPECT_FALSE(welcome->openErrorMessage());
    EXPECT_TRUE(isGreeting(studio));
}

TEST(Welcome, RemembersWhetherItIsShownAtLaunch) {
    Studio studio;
    studio.application().launch({});
    auto& toggle = find<QCheckBox>(*studio.application().welcomeWindow(), "welcome.showAtLaunch");
    EXPECT_TRUE(toggle.isChecked());
    toggle.click();
    EXPECT_FALSE(studio.services().settings().showWelcomeWindowAtLaunch());
}

TEST(Application, RunsOnWithoutAWindowWhenTheLastIsClosed) {
    Studio studio;
    bool ended = false;
    QObject::connect(qApp, &QCoreApplication::aboutToQuit, qApp, [&] { ended = true; });
    DocumentWindow& window = studio.newDocument();
    window.close();
    studio.settle();
    EXPECT_TRUE(studio.application().documentWindows().isEmpty());
    EXPECT_FALSE(isGreeting(studio));
    EXPECT_FALSE(ended);
    studio.application().reopen({});
    EXPECT_TRUE(isGreeting(studio));
}

} // namespace
} // namespace ombrel

// Takes pictures of every screen of the studio, light and dark.
//
//   studio_screenshots PROJECT FOLDER
//
// Of the project: every tab, with a question asked where a model can be, its first flow before and
// after a run, a chat with its last flow, its last agent and its first tool.
#include "core/AppState.h"
#include "flows/Conversation.h"
#include "platform/MainExecutor.h"
#include "retrieval/QueryPipeline.h"
#include "shell/Application.h"
#include "shell/ContentView.h"
#include "shell/DocumentWindow.h"
#include "shell/PreferencesWindow.h"
#include "shell/QtText.h"
#include "shell/StudioDocument.h"
#include "shell/StudioServices.h"
#include "shell/WelcomeView.h"
#include "shell/design/Theme.h"
#include "shell/flow/FlowDebugArea.h"
#include "tests/shell/Wait.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QIcon>

#include <cstdio>
#include <cstdlib>
#include <functional>

namespace ombrel {
namespace {

// Lets everything that is due happen: reading, layouts, refreshes.
void settle() {
    QElapsedTimer watch;
    watch.start();
    test::waitUntil([&] { return watch.elapsed() > 1000; });
}

class Photographer {
  public:
    explicit Photographer(QString folder) : m_folder(std::move(folder)) {}

    void take(QWidget* window, const QString& name) const {
        settle();
        const QString suffix =
            Theme::current().isDark() ? QStringLiteral("dark") : QStringLiteral("light");
        const QString file = QStringLiteral("%1/%2-%3.png").arg(m_folder, name, suffix);
        if (!window->grab().save(file)) {
            std::fprintf(stderr, "%s can't be written\n", qPrintable(file));
            std::exit(1);
        }
        std::printf("%s\n", qPrintable(file));
    }

  private:
    QString m_folder;
};

[[noreturn]] void fail(const char* what) {
    std::fprintf(stderr, "%s\n", what);
    std::exit(1);
}

// A model on a busy machine takes its time, and the first run of a flow compiles the tools.
void awaitLong(const std::function<bool()>& condition) {
    for (int minutes = 0; minutes < 10 && !test::waitUntil(condition); ++minutes) {
    }
}

// Waits for the end of a flow's run that was just asked for.
void awaitRun(const AppState& state) {
    settle();
    awaitLong([&] { return !*state.isRunningFlow; });
    const auto& outcome = *state.lastFlowRunOutcome;
    if (!outcome || outcome->errorMessage) {
        fail(outcome ? outcome->errorMessage->c_str() : "the flow doesn't run");
    }
}

// Of the flow that the window shows.
void takeRun(DocumentWindow* window, const Photographer& photographer) {
    AppState& state = *window->document().state();
    (*state.flowSampleInputValues.edit())["request"] = "When does the last bus leave?";
    window->findChild<QAbstractButton*>(QStringLiteral("debug.run"))->click();
    awaitRun(state);
    photographer.take(window, QStringLiteral("flow-run"));
    window->findChild<FlowDebugArea*>()->setExpanded(false);
}

void takeChat(DocumentWindow* window, StudioServices& services, Uuid flowID,
              const Photographer& photographer) {
    const auto state = window->document().state();
    state->setSelectedNavigatorItem({NavigatorSelection::Flow{flowID}});
    settle();
    window->findChild<FlowDebugArea*>()->setExpanded(true);
    for (const char* message : {"Good morning!", "What is your name?"}) {
        services.spawnRun(sendFlowMessage(state, flowID, message, services.toolChain()));
        awaitRun(*state);
    }
    photographer.take(window, QStringLiteral("chat"));
    window->findChild<FlowDebugArea*>()->setExpanded(false);
}

void takeAll(Application& studio, const Photographer& photographer,
             const std::filesystem::path& project) {
    studio.showWelcome();
    photographer.take(studio.welcomeWindow(), QStringLiteral("welcome"));
    studio.showPreferences();
    photographer.take(studio.preferencesWindow(), QStringLiteral("preferences"));
    studio.preferencesWindow()->close();

    studio.services().settings().setNavigatorSelectedNavigator(QStringLiteral("RAGs"));
    studio.openDocument(project);
    DocumentWindow* window = studio.documentWindows().last();
    if (!test::waitUntil([&] { return window->content() != nullptr; })) {
        fail("the project doesn't open");
    }
    window->resize(1320, 860);
    AppState& state = *window->document().state();
    state.setSelectedNavigatorItem({NavigatorSelection::Rag{*state.selectedRAGIndexID}});
    state.editCurrentIndex()->playgroundQuestion = "When does the last bus leave?";
    if (canAsk(state)) {
        state.platform().executor->spawn(ask(window->document().state()));
        awaitLong([&] {
            return state.currentIndex().playgroundResult && !state.currentIndex().isAsking;
        });
    }
    for (const auto& [tab, label] : rawValues(AppTab{})) {
        state.setSelectedTab(tab);
        photographer.take(window, toQt(label).toLower());
    }
    const auto show = [&](auto item, const QString& name) {
        state.setSelectedNavigatorItem({item});
        photographer.take(window, name);
    };
    if (!state.flows->empty()) {
        show(NavigatorSelection::Flow{state.flows->front().id}, QStringLiteral("flow"));
        takeRun(window, photographer);
        takeChat(window, studio.services(), state.flows->back().id, photographer);
    }
    if (!state.agents->empty()) {
        show(NavigatorSelection::Agent{state.agents->back().id}, QStringLiteral("agent"));
    }
    if (!state.tools->empty()) {
        show(NavigatorSelection::Tool{state.tools->front().id}, QStringLiteral("tool"));
    }
    window->dismiss();
    settle();
}

int run(int argc, char** argv) {
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/icons/ombrel-studio.svg")));
    if (argc != 3) {
        std::fprintf(stderr, "usage: studio_screenshots PROJECT FOLDER\n");
        return 2;
    }
    QDir().mkpath(QString::fromLocal8Bit(argv[2]));
    const auto services = StudioServices::ofThisUser();
    Application studio(*services);
    const Photographer photographer(QString::fromLocal8Bit(argv[2]));
    for (const Appearance appearance : {Appearance::light, Appearance::dark}) {
        Theme::current().setAppearance(appearance);
        takeAll(studio, photographer, argv[1]);
    }
    return 0;
}

} // namespace
} // namespace ombrel

int main(int argc, char** argv) {
    return ombrel::run(argc, argv);
}

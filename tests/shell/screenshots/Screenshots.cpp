// Takes pictures of every screen of the studio, light and dark.
//
//   studio_screenshots PROJECT FOLDER
//
// Of the project: every tab, with a question asked where a model can be, its first flow, its last
// agent and its first tool.
#include "core/AppState.h"
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
#include "tests/shell/Wait.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QIcon>

#include <cstdio>
#include <cstdlib>

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
        std::fprintf(stderr, "the project doesn't open\n");
        std::exit(1);
    }
    window->resize(1320, 860);
    AppState& state = *window->document().state();
    state.setSelectedNavigatorItem({NavigatorSelection::Rag{*state.selectedRAGIndexID}});
    state.editCurrentIndex()->playgroundQuestion = "When does the last bus leave?";
    if (canAsk(state)) {
        state.platform().executor->spawn(ask(window->document().state()));
        test::waitUntil([&] {
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

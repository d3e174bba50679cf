#include "shell/DocumentCommands.h"

#include "core/AppState.h"
#include "core/Confirmation.h"
#include "evaluation/EvaluationTexts.h"
#include "evaluation/QuestionDrafting.h"
#include "evaluation/RetrievalEvaluation.h"
#include "knowledge/Ingestion.h"
#include "platform/MainExecutor.h"
#include "platform/Text.h"
#include "retrieval/QueryPipeline.h"
#include "shell/AboutDialog.h"
#include "shell/Application.h"
#include "shell/ContentView.h"
#include "shell/DocumentWindow.h"
#include "shell/NavigatorView.h"
#include "shell/QtText.h"
#include "shell/RecentProjects.h"
#include "shell/StudioDocument.h"
#include "shell/StudioServices.h"
#include "shell/design/Prompt.h"

#include <QApplication>
#include <QMenu>
#include <QMenuBar>

#include <utility>

namespace ombrel {

namespace {

using Keys = QKeySequence;

Keys ctrl(int key) {
    return Keys(static_cast<int>(Qt::CTRL) | key);
}

Keys ctrlShift(int key) {
    return Keys(static_cast<int>(Qt::CTRL) | static_cast<int>(Qt::SHIFT) | key);
}

} // namespace

DocumentCommands::DocumentCommands(DocumentWindow& window)
    : QObject(&window), m_window(window), m_refresher([this] { update(); }, this) {
    addFileMenu();
    addEditMenu();
    addBuildMenu();
    addNewMenu();
    addGoMenu();
    addWindowMenu();
    addHelpMenu();
    connect(&window.document(), &StudioDocument::undoChanged, this, [this] { update(); });
    connect(&window.document(), &StudioDocument::changed, this, [this] { m_refresher.later(); });
    update();
}

void DocumentCommands::contentShown() {
    const auto refresh = [this] { m_refresher.later(); };
    m_subscriptions.push_back(state().ragIndexes.observe(refresh));
    m_subscriptions.push_back(state().selectedRAGIndexID.observe(refresh));
    m_subscriptions.push_back(state().observeSelectedTab(refresh));
    update();
}

bool DocumentCommands::hasContent() const {
    return m_window.content() != nullptr;
}

AppState& DocumentCommands::state() const {
    return *m_window.document().state();
}

void DocumentCommands::spawn(Task<void> task) const {
    state().platform().executor->spawn(std::move(task));
}

QMenu* DocumentCommands::addMenu(const char* name, const QString& title) {
    QMenu* menu = m_window.menuBar()->addMenu(title);
    menu->setObjectName(QStringLiteral("menu.") + QLatin1String(name));
    connect(menu, &QMenu::aboutToShow, this, [this] { update(); });
    return menu;
}

QAction* DocumentCommands::add(QMenu* menu, const char* name, const QString& title,
                               const QKeySequence& keys, std::function<void()> run,
                               std::function<bool()> isEnabled) {
    QAction* action = menu->addAction(title);
    action->setObjectName(QStringLiteral("command.") + QLatin1String(name));
    action->setShortcut(keys);
    m_commands.push_back({action, isEnabled});
    connect(action, &QAction::triggered, this,
            [command = std::move(run), may = std::move(isEnabled)] {
                if (!may || may()) {
                    command();
                }
            });
    return action;
}

void DocumentCommands::update() {
    for (const Command& command : m_commands) {
        command.action->setEnabled(!command.isEnabled || command.isEnabled());
    }
}

void DocumentCommands::addFileMenu() {
    QMenu* menu = addMenu("file", tr("&File"));
    Application& application = m_window.application();
    const auto content = [this] { return hasContent(); };
    add(menu, "newProject", tr("New Project"), Keys::New,
        [&application] { application.newDocument(); });
    add(menu, "open", tr("Open\u2026"), Keys::Open,
        [this, &application] { application.showOpenPanel(&m_window); });
    QMenu* recents = menu->addMenu(tr("Open Recent"));
    recents->setObjectName(QStringLiteral("menu.openRecent"));
    connect(recents, &QMenu::aboutToShow, this, [this, recents] { fillRecents(recents); });
    menu->addSeparator();
    add(menu, "close", tr("Close"), Keys::Close, [this] { m_window.close(); });
    add(
        menu, "save", tr("Save"), Keys::Save, [this] { m_window.save(); }, content);
    add(
        menu, "saveAs", tr("Save As\u2026"), ctrlShift(Qt::Key_S), [this] { m_window.saveAs(); },
        content);
    menu->addSeparator();
    add(menu, "preferences", tr("Preferences\u2026"), ctrl(Qt::Key_Comma),
        [&application] { application.showPreferences(); });
    add(menu, "quit", tr("Quit"), ctrl(Qt::Key_Q), [&application] { application.quit(); });
}

void DocumentCommands::fillRecents(QMenu* menu) {
    menu->clear();
    const auto recents = loadRecentProjects(m_window.application().services().settings());
    for (const RecentProject& recent : recents) {
        QAction* action = menu->addAction(toQt(recent.url.stem()));
        action->setToolTip(toQt(recent.url));
        connect(action, &QAction::triggered, this,
                [this, url = recent.url] { m_window.application().openDocument(url); });
    }
    if (recents.empty()) {
        menu->addAction(tr("No recent projects"))->setEnabled(false);
    }
}

void DocumentCommands::addEditMenu() {
    QMenu* menu = addMenu("edit", tr("&Edit"));
    const auto undoManager = m_window.document().undoManager();
    // An edit of the last moment is a step of its own.
    add(
        menu, "undo", tr("Undo"), Keys::Undo,
        [this, undoManager] {
            state().flushCheckpoint();
            undoManager->undo();
        },
        [this, undoManager] {
            return hasContent() && (undoManager->canUndo() || state().hasPendingCheckpoint());
        });
    // Undoing a step leaves none to redo.
    add(
        menu, "redo", tr("Redo"), Keys::Redo, [] {},
        [undoManager] { return undoManager->canRedo(); });
    menu->addSeparator();
    // Text fields take these keys themselves; here they serve the mouse.
    add(menu, "cut", tr("Cut"), Keys::Cut, [this] { edit("cut"); });
    add(menu, "copy", tr("Copy"), Keys::Copy, [this] { edit("copy"); });
    add(menu, "paste", tr("Paste"), Keys::Paste, [this] { edit("paste"); });
    add(menu, "selectAll", tr("Select All"), Keys::SelectAll, [this] { edit("selectAll"); });
    menu->addSeparator();
    add(
        menu, "filter", tr("Filter Navigator"), ctrlShift(Qt::Key_F),
        [this] { m_window.content()->navigator()->focusFilter(); },
        [this] { return hasContent(); });
}

void DocumentCommands::edit(const char* slot) const {
    QWidget* focused = m_window.focusWidget();
    if (!focused) {
        return;
    }
    if (focused->metaObject()->indexOfSlot(QByteArray(slot) + "()") >= 0) {
        QMetaObject::invokeMethod(focused, slot);
        return;
    }
    for (QAction* action : focused->actions()) {
        if (action->objectName().endsWith(QLatin1Char('.') + QLatin1String(slot))) {
            action->trigger();
        }
    }
}

void DocumentCommands::addBuildMenu() {
    QMenu* menu = addMenu("build", tr("&Build"));
    const auto content = [this] { return hasContent(); };
    const auto shared = m_window.document().state();
    const auto index = [this]() -> const RAGIndex& { return state().currentIndex(); };
    add(
        menu, "build", tr("Build"), ctrl(Qt::Key_B), [this, shared] { spawn(rescanAll(shared)); },
        [this, index] { return hasContent() && !index().isEnriching; });
    add(
        menu, "rescan", tr("Re-scan Sources"), {}, [this, shared] { spawn(rescanAll(shared)); },
        content);
    menu->addSeparator();
    add(
        menu, "warmUp", tr("Warm Up Model"), {}, [this, shared] { spawn(warmUp(shared)); },
        [this, index] { return hasContent() && !index().isAsking && !index().isWarmingUp; });
    add(
        menu, "runQuery", tr("Run Playground Query"), {}, [this, shared] { spawn(ask(shared)); },
        [this, index] {
            return hasContent() && !index().isAsking &&
                   !trimWhitespacesAndNewlines(index().playgroundQuestion).empty() &&
                   canAsk(state());
        });
    add(
        menu, "runEvaluation", tr("Run Evaluation"), {},
        [this, shared] { spawn(runEvaluation(shared)); },
        [this] { return hasContent() && isRunEvaluationEnabled(state()); });
    add(
        menu, "draftQuestions", tr("Draft Test Questions"), {},
        [this, shared] { spawn(draftQuestions(shared, draftLimit)); },
        [this, index] {
            return hasContent() && !index().isDrafting && chunkCount(state().indexedChunks()) > 0;
        });
    menu->addSeparator();
    add(
        menu, "duplicateVariant", tr("Duplicate Variant"), {},
        [this] { state().duplicateVariant(); }, content);
    add(
        menu, "resetProject", tr("Reset Project\u2026"), {},
        [this, shared] {
            confirm(&m_window, resetProjectConfirmation(shared->project->name),
                    [shared] { shared->resetProject(); });
        },
        content);
}

void DocumentCommands::addNewMenu() {
    QMenu* menu = addMenu("new", tr("&New"));
    const auto content = [this] { return hasContent(); };
    add(
        menu, "newAgent", tr("New Agent"), ctrlShift(Qt::Key_N), [this] { state().addAgent(); },
        content);
    add(
        menu, "newTool", tr("New Tool"), {}, [this] { state().addTool(); }, content);
}

void DocumentCommands::addGoMenu() {
    QMenu* menu = addMenu("go", tr("&Go"));
    int key = Qt::Key_1;
    for (const auto& [tab, label] : rawValues(AppTab{})) {
        if (tab == AppTab::project) {
            continue;
        }
        const QByteArray name =
            "go" + QByteArray(label.data(), static_cast<qsizetype>(label.size()));
        add(
            menu, name.constData(), toQt(label), ctrl(key),
            [this, tab = tab] { state().setSelectedTab(tab); }, [this] { return hasContent(); });
        key += 1;
    }
}

void DocumentCommands::addWindowMenu() {
    QMenu* menu = addMenu("window", tr("&Window"));
    add(menu, "minimize", tr("Minimize"), ctrl(Qt::Key_M), [this] { m_window.showMinimized(); });
    add(menu, "zoom", tr("Zoom"), {},
        [this] { m_window.isMaximized() ? m_window.showNormal() : m_window.showMaximized(); });
    menu->addSeparator();
    add(menu, "welcome", tr("Welcome to Ombrel Studio"), {},
        [this] { m_window.application().showWelcome(); });
    QAction* last = menu->addSeparator();
    connect(menu, &QMenu::aboutToShow, this, [this, menu, last] { fillWindows(menu, last); });
}

void DocumentCommands::fillWindows(QMenu* menu, QAction* after) {
    const auto actions = menu->actions();
    for (auto i = actions.indexOf(after) + 1; i < actions.size(); ++i) {
        delete actions[i];
    }
    for (DocumentWindow* window : m_window.application().documentWindows()) {
        QAction* action = menu->addAction(window->document().name());
        action->setCheckable(true);
        action->setChecked(window == &m_window);
        connect(action, &QAction::triggered, window, [window] {
            window->show();
            window->raise();
            window->activateWindow();
        });
    }
}

void DocumentCommands::addHelpMenu() {
    QMenu* menu = addMenu("help", tr("&Help"));
    add(menu, "about", tr("About Ombrel Studio"), {},
        [this] { (new AboutDialog(&m_window))->open(); });
}

} // namespace ombrel

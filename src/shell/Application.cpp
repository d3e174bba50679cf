#include "shell/Application.h"

#include "shell/DocumentWindow.h"
#include "shell/PreferencesWindow.h"
#include "shell/QtText.h"
#include "shell/RecentProjects.h"
#include "shell/RecoveryDialog.h"
#include "shell/StudioDocument.h"
#include "shell/StudioServices.h"
#include "shell/WelcomeView.h"
#include "shell/Worker.h"
#include "shell/design/Prompt.h"
#include "shell/design/Theme.h"

#include <QApplication>
#include <QFileDialog>
#include <QFileInfo>
#include <QPointer>

#include <algorithm>
#include <utility>

namespace ombrel {

namespace {

using OpenResult = Result<OpenedProject>;

Task<void> readOnWorker(std::shared_ptr<MainExecutor> executor, std::filesystem::path path,
                        std::function<void(std::shared_ptr<OpenResult>)> ended) {
    const std::function<std::shared_ptr<OpenResult>()> work = [path] {
        return std::make_shared<OpenResult>(ProjectDocument::open(path));
    };
    auto result = co_await onWorker<std::shared_ptr<OpenResult>>(executor, work);
    ended(std::move(result));
}

std::filesystem::path resolvedPath(const std::filesystem::path& path) {
    std::error_code error;
    auto result = std::filesystem::weakly_canonical(path, error);
    return error ? path : result;
}

} // namespace

Application::Application(StudioServices& services) : m_services(services) {
    Theme::current().setAppearance(services.settings().appearance());
}

Application::~Application() {
    qDeleteAll(m_documents);
    delete m_welcome;
    delete m_preferences;
}

void Application::launch(const std::vector<std::filesystem::path>& files) {
    auto recovered = RecoveryStore(m_services.recoveryFolder()).list();
    const QStringList remembered = m_services.settings().openDocuments();
    bool restores = false;
    for (const QString& name : remembered) {
        const auto path = pathFromQt(name);
        const bool comesFromRecovery = std::ranges::any_of(
            recovered, [&](const RecoveredProject& project) { return project.file == path; });
        if (!comesFromRecovery && QFileInfo::exists(name)) {
            openDocument(path);
            restores = true;
        }
    }
    for (const auto& path : files) {
        openDocument(path);
    }
    if (!recovered.empty()) {
        offerRecovery(std::move(recovered));
    } else if (!restores && files.empty() && m_services.settings().showWelcomeWindowAtLaunch()) {
        showWelcome();
    }
}

bool Application::applicationShouldHandleReopen(bool hasVisibleWindows) {
    if (!hasVisibleWindows) {
        showWelcome();
    } else if (QWidget* front = frontWindow()) {
        front->setWindowState(front->windowState() & ~Qt::WindowMinimized);
        front->raise();
        front->activateWindow();
    }
    return hasVisibleWindows;
}

void Application::reopen(const std::vector<std::filesystem::path>& files) {
    if (files.empty()) {
        applicationShouldHandleReopen(frontWindow() != nullptr);
    }
    for (const auto& path : files) {
        openDocument(path);
    }
}

QWidget* Application::frontWindow() const {
    for (auto window = m_documents.crbegin(); window != m_documents.crend(); ++window) {
        if ((*window)->isVisible()) {
            return *window;
        }
    }
    return m_welcome && m_welcome->isVisible() ? m_welcome : nullptr;
}

QString Application::nextUntitledName() {
    m_untitledCount += 1;
    return m_untitledCount == 1 ? tr("Untitled") : tr("Untitled %1").arg(m_untitledCount);
}

DocumentWindow* Application::addWindow(const QString& name) {
    auto* window = new DocumentWindow(*this, new StudioDocument(m_services, name));
    window->placeBeside(m_documents.isEmpty() ? nullptr : m_documents.last());
    m_documents.append(window);
    return window;
}

DocumentWindow* Application::newDocument() {
    DocumentWindow* window = addWindow(nextUntitledName());
    window->showContent();
    window->show();
    window->activateWindow();
    return window;
}

DocumentWindow* Application::windowOf(const std::filesystem::path& path) const {
    const auto wanted = resolvedPath(path);
    for (DocumentWindow* window : m_documents) {
        if (window->path() && resolvedPath(*window->path()) == wanted) {
            return window;
        }
    }
    return nullptr;
}

void Application::openDocument(const std::filesystem::path& path,
                               std::function<void(const QString&)> failed) {
    if (DocumentWindow* open = windowOf(path)) {
        open->show();
        open->raise();
        open->activateWindow();
        return;
    }
    const auto absolute = resolvedPath(std::filesystem::absolute(path));
    DocumentWindow* window = addWindow(toQt(absolute.stem()));
    window->showOpening(absolute);
    window->show();
    window->activateWindow();
    const auto executor = m_services.platform().executor;
    executor->spawn(readOnWorker(
        executor, absolute,
        [guarded = QPointer<DocumentWindow>(window), application = QPointer<Application>(this),
         absolute, told = std::move(failed)](const std::shared_ptr<OpenResult>& result) {
            if (!guarded || !application) {
                return;
            }
            if (*result) {
                guarded->showOpened(std::move(**result));
                noteRecentProject(application->m_services.settings(), absolute);
                application->rememberOpenDocuments();
                return;
            }
            const QString message = toQt(result->error().message);
            guarded->dismiss();
            if (told) {
                told(message);
            } else {
                if (!application->frontWindow()) {
                    application->showWelcome();
                }
                alert(application->frontWindow(), tr("Couldn't open the project"), message);
            }
        }));
}

void Application::showOpenPanel(QWidget* over, std::function<void(const QString&)> failed) {
    auto* panel =
        new QFileDialog(over, tr("Open"), m_services.settings().lastFolder(),
                        tr("Ombrel projects (*%1);;All files (*)").arg(toQt(projectFileExtension)));
    panel->setObjectName(QStringLiteral("openPanel"));
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setFileMode(QFileDialog::ExistingFiles);
    connect(panel, &QFileDialog::filesSelected, this,
            [this, told = std::move(failed)](const QStringList& chosen) {
                for (const QString& file : chosen) {
                    m_services.settings().setLastFolder(QFileInfo(file).absolutePath());
                    openDocument(pathFromQt(file), told);
                }
            });
    panel->open();
}

void Application::showWelcome() {
    if (!m_welcome) {
        m_welcome = new WelcomeView(*this);
    }
    m_welcome->show();
    m_welcome->raise();
    m_welcome->activateWindow();
}

void Application::showPreferences() {
    if (!m_preferences) {
        m_preferences = new PreferencesWindow(m_services);
    }
    m_preferences->show();
    m_preferences->raise();
    m_preferences->activateWindow();
}

void Application::offerRecovery(std::vector<RecoveredProject> found) {
    auto* dialog = new RecoveryDialog(found, frontWindow());
    connect(dialog, &QDialog::finished, this, [this, found](int answer) {
        for (const RecoveredProject& project : found) {
            if (answer == QDialog::Accepted) {
                recover(project);
            } else if (answer == RecoveryDialog::discarded) {
                RecoveryStore(m_services.recoveryFolder()).remove(project.id);
                if (project.file && QFileInfo::exists(toQt(*project.file))) {
                    openDocument(*project.file);
                }
            }
        }
        if (!frontWindow() && m_services.settings().showWelcomeWindowAtLaunch()) {
            showWelcome();
        }
    });
    dialog->open();
}

void Application::recover(const RecoveredProject& recovered) {
    DocumentWindow* window = addWindow(toQt(recovered.name));
    window->showOpening(recovered.contents);
    window->show();
    const auto executor = m_services.platform().executor;
    const auto failed = [application = QPointer<Application>(this),
                         guarded = QPointer<DocumentWindow>(window)](const std::string& message) {
        guarded->dismiss();
        alert(application->frontWindow(), tr("Couldn't recover the project"), toQt(message));
    };
    executor->spawn(readOnWorker(
        executor, recovered.contents,
        [=, guarded = QPointer<DocumentWindow>(window)](std::shared_ptr<OpenResult> contents) {
            if (!guarded) {
                return;
            }
            if (!*contents) {
                return failed(contents->error().message);
            }
            // A file that was written after this was kept is a work of its own.
            std::error_code ignored;
            const bool belongsToFile =
                recovered.file && std::filesystem::last_write_time(*recovered.file, ignored) <=
                                      std::filesystem::last_write_time(recovered.contents, ignored);
            if (!belongsToFile) {
                return guarded->showRecovered(recovered, (*contents)->snapshot, std::nullopt);
            }
            executor->spawn(readOnWorker(
                executor, *recovered.file,
                [guarded, recovered, contents](const std::shared_ptr<OpenResult>& file) {
                    if (guarded) {
                        guarded->showRecovered(recovered, (*contents)->snapshot,
                                               *file ? std::optional((*file)->document)
                                                     : std::nullopt);
                    }
                }));
        }));
}

void Application::windowActivated(DocumentWindow* window) {
    if (m_documents.removeOne(window)) {
        m_documents.append(window);
    }
}

void Application::windowOpened(DocumentWindow*) {
    if (m_welcome) {
        m_welcome->close();
    }
}

void Application::windowClosed(DocumentWindow* window) {
    m_documents.removeOne(window);
    if (m_isQuitting) {
        closeNextForQuit();
    } else {
        rememberOpenDocuments();
    }
}

void Application::closingCancelled() {
    m_isQuitting = false;
    rememberOpenDocuments();
}

void Application::fileChanged(DocumentWindow* window) {
    if (window->path()) {
        noteRecentProject(m_services.settings(), *window->path());
    }
    if (!m_isQuitting) {
        rememberOpenDocuments();
    }
}

void Application::rememberOpenDocuments() {
    QStringList paths;
    for (const DocumentWindow* window : m_documents) {
        if (window->path()) {
            paths.append(toQt(*window->path()));
        }
    }
    m_services.settings().setOpenDocuments(paths);
}

void Application::quit() {
    if (m_isQuitting) {
        return;
    }
    rememberOpenDocuments();
    m_isQuitting = true;
    closeNextForQuit();
}

void Application::closeNextForQuit() {
    if (!m_documents.isEmpty()) {
        m_documents.last()->close();
        return;
    }
    if (m_welcome) {
        m_welcome->close();
    }
    QCoreApplication::quit();
}

void Application::terminate() {
    rememberOpenDocuments();
    for (DocumentWindow* window : m_documents) {
        window->document().keepForRecoveryNow();
    }
    // Unlike quit() it asks no window, whose question nobody may be there to answer.
    QCoreApplication::exit();
}

} // namespace ombrel

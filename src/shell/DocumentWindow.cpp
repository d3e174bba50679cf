#include "shell/DocumentWindow.h"

#include "shell/Application.h"
#include "shell/ContentView.h"
#include "shell/DocumentCommands.h"
#include "shell/QtText.h"
#include "shell/SaveQuestion.h"
#include "shell/StudioDocument.h"
#include "shell/StudioServices.h"
#include "shell/design/EmptyState.h"
#include "shell/design/Prompt.h"

#include <QCloseEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QProgressBar>

#include <utility>

namespace ombrel {

DocumentWindow::DocumentWindow(Application& application, StudioDocument* document)
    : m_application(application), m_document(document) {
    document->setParent(this);
    setObjectName(QStringLiteral("documentWindow"));
    setMinimumSize(900, 560);
    resize(1320, 860);
    m_commands = new DocumentCommands(*this);
    connect(document, &StudioDocument::changed, this, &DocumentWindow::updateTitle);
    updateTitle();
}

DocumentWindow::~DocumentWindow() = default;

std::optional<std::filesystem::path> DocumentWindow::path() const {
    if (m_document->hasFile()) {
        return m_document->path();
    }
    return m_openingPath;
}

void DocumentWindow::placeBeside(const QWidget* other) {
    if (other) {
        constexpr int step = 28;
        resize(other->size());
        move(other->pos() + QPoint(step, step));
    } else {
        restoreGeometry(m_application.services().settings().windowGeometry());
    }
}

void DocumentWindow::showOpening(const std::filesystem::path& path) {
    m_openingPath = path;
    auto* opening =
        new EmptyState(QStringLiteral("index"), tr("Opening\u2026"), toQt(path.filename()));
    opening->setObjectName(QStringLiteral("opening"));
    auto* progress = new QProgressBar;
    progress->setObjectName(QStringLiteral("opening.progress"));
    progress->setAccessibleName(tr("Opening"));
    progress->setRange(0, 0);
    progress->setTextVisible(false);
    progress->setFixedWidth(220);
    opening->addControl(progress);
    setCentralWidget(opening);
    updateTitle();
}

void DocumentWindow::showOpened(OpenedProject opened) {
    const LeftBehind leftBehind = opened.leftBehind;
    m_openingPath.reset();
    m_document->takeOpened(std::move(opened));
    showContent();
    if (leftBehind.any()) {
        alert(this, tr("Part of the project couldn't be read"), toQt(leftBehind.description()));
    }
}

void DocumentWindow::showRecovered(const RecoveredProject& recovered,
                                   const PersistedProject& snapshot,
                                   std::optional<ProjectDocument> file) {
    m_openingPath.reset();
    m_document->takeRecovered(recovered, snapshot, std::move(file));
    showContent();
    m_application.fileChanged(this);
}

void DocumentWindow::showContent() {
    m_content = new ContentView(m_document->state(), m_application.services());
    setCentralWidget(m_content);
    m_commands->contentShown();
    updateTitle();
    m_application.windowOpened(this);
}

void DocumentWindow::dismiss() {
    m_mayClose = true;
    close();
}

void DocumentWindow::updateTitle() {
    const QString name = m_openingPath ? toQt(m_openingPath->stem()) : m_document->name();
    setWindowTitle(m_document->isSaving() ? tr("%1[*] \u2014 Saving\u2026").arg(name)
                                          : tr("%1[*] \u2014 Ombrel Studio").arg(name));
    setWindowModified(!m_openingPath && m_document->isEdited());
    if (const auto file = path()) {
        setWindowFilePath(toQt(*file));
    }
}

void DocumentWindow::save() {
    saveThen({});
}

void DocumentWindow::saveAs() {
    chooseFile({});
}

void DocumentWindow::saveThen(std::function<void(bool)> ended) {
    if (!m_content) {
        return;
    }
    if (m_document->hasFile()) {
        saveTo(std::nullopt, Overwrite::onlyKnown, std::move(ended));
    } else {
        chooseFile(std::move(ended));
    }
}

void DocumentWindow::chooseFile(std::function<void(bool)> ended) {
    if (!m_content) {
        return;
    }
    StudioSettings& settings = m_application.services().settings();
    const QString extension = toQt(projectFileExtension);
    const auto file = path();
    const QString suggested = file ? toQt(*file)
                                   : settings.lastFolder() + QLatin1Char('/') +
                                         toQt(m_document->state()->project->name)
                                             .replace(QLatin1Char('/'), QLatin1Char('-')) +
                                         extension;
    auto* panel =
        new QFileDialog(this, tr("Save"), suggested, tr("Ombrel projects (*%1)").arg(extension));
    panel->setObjectName(QStringLiteral("savePanel"));
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setAcceptMode(QFileDialog::AcceptSave); // which asks before a file is replaced
    panel->setDefaultSuffix(extension.mid(1));
    connect(panel, &QFileDialog::fileSelected, this, [this, ended](const QString& chosen) {
        m_application.services().settings().setLastFolder(QFileInfo(chosen).absolutePath());
        saveTo(pathFromQt(chosen), Overwrite::anything, ended);
    });
    if (ended) {
        connect(panel, &QFileDialog::rejected, this, [ended] { ended(false); });
    }
    panel->open();
}

void DocumentWindow::saveTo(std::optional<std::filesystem::path> path, Overwrite overwrite,
                            std::function<void(bool)> ended) {
    const auto told = [this, path, ended](const StudioDocument::Saved& saved) {
        if (!saved.error) {
            m_application.fileChanged(this);
            if (saved.keptOldFile && !m_isAsking) {
                alert(this, tr("The old file is kept"), toQt(*saved.keptOldFile));
            }
            if (ended) {
                ended(true);
            }
            return;
        }
        const QString message = toQt(saved.error->message);
        if (saved.error->reason == SaveError::Reason::changedOnDisk) {
            return resolveConflict(message, path, ended);
        }
        alert(this, tr("Couldn't save the project"), message);
        if (ended) {
            ended(false);
        }
    };
    if (path) {
        m_document->saveAs(*path, overwrite, told);
    } else {
        m_document->save(overwrite, told);
    }
}

void DocumentWindow::resolveConflict(const QString& message,
                                     std::optional<std::filesystem::path> path,
                                     std::function<void(bool)> ended) {
    auto* question =
        new SaveQuestion(QStringLiteral("conflict"), tr("The file changed on disk"), message,
                         {tr("Cancel"), tr("Save As\u2026"), tr("Replace")}, this);
    connect(question, &QDialog::finished, this, [this, path, ended](int answer) {
        if (answer == SaveQuestion::second) {
            chooseFile(ended);
        } else if (answer == SaveQuestion::third) {
            saveTo(path, Overwrite::anything, ended);
        } else if (ended) {
            ended(false);
        }
    });
    question->open();
}

void DocumentWindow::closeEvent(QCloseEvent* event) {
    const bool mustAsk =
        m_content && (m_document->isEdited() || m_document->isSaving() || m_document->isWorking());
    if (m_mayClose || !mustAsk) {
        event->accept();
        finishClosing();
        return;
    }
    event->ignore();
    if (!m_isAsking) {
        askBeforeClosing();
    }
}

void DocumentWindow::askBeforeClosing() {
    const auto goOn = [this](bool mayClose) {
        m_isAsking = false;
        if (mayClose) {
            m_mayClose = true;
            close();
        } else {
            m_application.closingCancelled();
        }
    };
    m_isAsking = true;
    if (m_document->isSaving() && !m_document->isEdited() && !m_document->isWorking()) {
        // What is being saved is all there is.
        return saveThen(goOn);
    }
    show();
    raise();
    activateWindow();
    const QString name = m_document->name();
    QString title = tr("Do you want to save the changes made to “%1”?").arg(name);
    QString message = tr("Your changes will be lost if you don't save them.");
    if (m_document->isWorking()) {
        message = tr("Work on the project is still running. Closing ends it; what is finished so "
                     "far is saved with the project.");
        title =
            m_document->isEdited() ? title : tr("Save “%1” as far as it is finished?").arg(name);
    }
    auto* question = new SaveQuestion(QStringLiteral("closing"), title, message,
                                      {tr("Cancel"), tr("Don't Save"), tr("Save")}, this);
    connect(question, &QDialog::finished, this, [this, goOn](int answer) {
        if (answer == SaveQuestion::second) {
            goOn(true);
        } else if (answer == SaveQuestion::third) {
            saveThen(goOn);
        } else {
            goOn(false);
        }
    });
    question->open();
}

void DocumentWindow::finishClosing() {
    rememberGeometry();
    hide();
    delete takeCentralWidget(); // before the workspace is emptied
    m_content = nullptr;
    m_document->discard();
    m_application.windowClosed(this);
    deleteLater();
}

void DocumentWindow::changeEvent(QEvent* event) {
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && isActiveWindow()) {
        m_application.windowActivated(this);
    }
}

void DocumentWindow::moveEvent(QMoveEvent* event) {
    QMainWindow::moveEvent(event);
    rememberGeometry();
}

void DocumentWindow::resizeEvent(QResizeEvent* event) {
    QMainWindow::resizeEvent(event);
    rememberGeometry();
}

void DocumentWindow::rememberGeometry() {
    if (isVisible()) {
        m_application.services().settings().setWindowGeometry(saveGeometry());
    }
}

} // namespace ombrel

#pragma once

#include "core/ProjectDocument.h"
#include "shell/RecoveryStore.h"

#include <QList>
#include <QObject>

#include <filesystem>
#include <functional>
#include <memory>
#include <vector>

namespace ombrel {

class DocumentWindow;
class PreferencesWindow;
class StudioDocument;
class StudioServices;
class WelcomeView;

// The studio as a program: which windows there are, and what is opened, restored and greeted with.
// Main thread.
class Application final : public QObject {
    Q_OBJECT

  public:
    explicit Application(StudioServices& services);
    ~Application() override;

    // The start: brings back what was open, offers what a studio that ended unexpectedly left
    // behind, opens the files, and greets when there is nothing else to show.
    void launch(const std::vector<std::filesystem::path>& files);
    // The user started the studio once more, or activated its icon. With a window to see, the last
    // one comes to the front, else the greeting does. Gives `hasVisibleWindows`.
    bool applicationShouldHandleReopen(bool hasVisibleWindows);
    // The same with the windows that there are, and files to open.
    void reopen(const std::vector<std::filesystem::path>& files);

    DocumentWindow* newDocument();
    // Opens the project, or brings its window to the front. `failed` is told why it can't be;
    // without it, an alert is shown.
    void openDocument(const std::filesystem::path& path,
                      std::function<void(const QString& message)> failed = {});
    // Lets the user choose a project to open.
    void showOpenPanel(QWidget* over, std::function<void(const QString& message)> failed = {});
    void showWelcome();
    void showPreferences();
    // Closes all windows, asking where something would be lost, and ends the program. What was
    // open comes back at the next start.
    void quit();
    // Ends the program now, without a question: what isn't saved is kept for recovery.
    void terminate();

    const QList<DocumentWindow*>& documentWindows() const { return m_documents; }
    WelcomeView* welcomeWindow() const { return m_welcome; }
    PreferencesWindow* preferencesWindow() const { return m_preferences; }
    StudioServices& services() const { return m_services; }

    // Called by the windows.
    void windowActivated(DocumentWindow* window);
    void windowOpened(DocumentWindow* window); // its content is there
    void windowClosed(DocumentWindow* window);
    void closingCancelled();
    void fileChanged(DocumentWindow* window);

  private:
    DocumentWindow* addWindow(const QString& name);
    QString nextUntitledName();
    void recover(const RecoveredProject& recovered);
    void offerRecovery(std::vector<RecoveredProject> found);
    void rememberOpenDocuments();
    void closeNextForQuit();
    DocumentWindow* windowOf(const std::filesystem::path& path) const;
    QWidget* frontWindow() const;

    StudioServices& m_services;
    QList<DocumentWindow*> m_documents; // the last activated one is last
    WelcomeView* m_welcome = nullptr;
    PreferencesWindow* m_preferences = nullptr;
    int m_untitledCount = 0;
    bool m_isQuitting = false;
};

} // namespace ombrel

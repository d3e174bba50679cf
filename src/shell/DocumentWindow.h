#pragma once

#include "core/ProjectDocument.h"
#include "shell/RecoveryStore.h"

#include <QMainWindow>

#include <filesystem>
#include <optional>

class QStackedWidget;

namespace ombrel {

class Application;
class ContentView;
class DocumentCommands;
class StudioDocument;

// The window of one project. It deletes itself when it is closed.
class DocumentWindow final : public QMainWindow {
    Q_OBJECT

  public:
    // Takes the document over.
    DocumentWindow(Application& application, StudioDocument* document);
    ~DocumentWindow() override;

    StudioDocument& document() const { return *m_document; }
    Application& application() const { return m_application; }
    // The content once it is there.
    ContentView* content() const { return m_content; }
    // The file that is shown, or being opened; nothing for a project without one.
    std::optional<std::filesystem::path> path() const;

    void placeBeside(const QWidget* other);
    // Shows that the file is being read.
    void showOpening(const std::filesystem::path& path);
    void showOpened(OpenedProject opened);
    void showRecovered(const RecoveredProject& recovered, const PersistedProject& snapshot,
                       std::optional<ProjectDocument> file);
    void showContent();
    // Closes without a question: the file couldn't be opened.
    void dismiss();

    void save();
    void saveAs();

  protected:
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;
    void moveEvent(QMoveEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

  private:
    void updateTitle();
    void rememberGeometry();
    void askBeforeClosing();
    void chooseFile(std::function<void(bool saved)> ended);
    void saveTo(std::optional<std::filesystem::path> path, Overwrite overwrite,
                std::function<void(bool saved)> ended);
    void saveThen(std::function<void(bool saved)> ended);
    void resolveConflict(const QString& message, std::optional<std::filesystem::path> path,
                         std::function<void(bool saved)> ended);
    void finishClosing();

    Application& m_application;
    StudioDocument* m_document;
    DocumentCommands* m_commands = nullptr;
    ContentView* m_content = nullptr;
    std::optional<std::filesystem::path> m_openingPath;
    bool m_mayClose = false;
    bool m_isAsking = false;
};

} // namespace ombrel

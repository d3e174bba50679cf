#pragma once

#include "shell/RecentProject.h"

#include <QWidget>

#include <filesystem>
#include <optional>
#include <vector>

class QListWidget;
class QStackedWidget;

namespace ombrel {

class Application;

// The window that greets when no project is open: what can be done, and the recent projects.
class WelcomeView final : public QWidget {
    Q_OBJECT

  public:
    explicit WelcomeView(Application& application);

    const std::vector<RecentProject>& recents() const { return m_recents; }
    const std::optional<std::filesystem::path>& selection() const { return m_selection; }
    // Set while the alert of a project that couldn't be opened is shown.
    const std::optional<QString>& openErrorMessage() const { return m_openErrorMessage; }

  protected:
    void showEvent(QShowEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

  private:
    QWidget* makeLeft();
    QWidget* makeRight();
    void refreshRecents();
    void makeProject();
    void showOpenPanel();
    void open(const std::filesystem::path& path);
    void openMenu(const QPoint& where);
    void showOpenError(const QString& message);

    Application& m_application;
    std::vector<RecentProject> m_recents;
    std::optional<std::filesystem::path> m_selection;
    std::optional<QString> m_openErrorMessage;
    QListWidget* m_list = nullptr;
    QStackedWidget* m_body = nullptr;
};

} // namespace ombrel

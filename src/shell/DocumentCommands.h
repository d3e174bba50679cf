#pragma once

#include "core/Observed.h"
#include "platform/Task.h"
#include "shell/Refresher.h"

#include <QAction>
#include <QObject>

#include <functional>
#include <vector>

class QMenu;

namespace ombrel {

class AppState;
class DocumentWindow;

// The menus of a document window. Each command is enabled as the state says, and asks the state
// again when it is run. The object name of an action is "command." and its name.
class DocumentCommands final : public QObject {
    Q_OBJECT

  public:
    explicit DocumentCommands(DocumentWindow& window);
    // The project's content has come: from now on the commands that act on it are enabled.
    void contentShown();

  private:
    struct Command {
        QAction* action;
        std::function<bool()> isEnabled;
    };

    QMenu* addMenu(const char* name, const QString& title);
    QAction* add(QMenu* menu, const char* name, const QString& title, const QKeySequence& keys,
                 std::function<void()> run, std::function<bool()> isEnabled = {});
    void addFileMenu();
    void addEditMenu();
    void addBuildMenu();
    void addNewMenu();
    void addGoMenu();
    void addWindowMenu();
    void addHelpMenu();
    void fillRecents(QMenu* menu);
    void fillWindows(QMenu* menu, QAction* before);
    void update();
    bool hasContent() const;
    AppState& state() const;
    void spawn(Task<void> task) const;
    // What an edit command of the focused text does.
    void edit(const char* slot) const;

    DocumentWindow& m_window;
    std::vector<Command> m_commands;
    Refresher m_refresher;
    std::vector<Subscription> m_subscriptions;
};

} // namespace ombrel

#pragma once

#include <QObject>
#include <QString>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace ombrel {

class MainExecutor;
class Process;
struct ProcessExit;

// Installs the default model server and models for this user: runs the script that does it, and
// follows what the script says. One a process; it goes on when the window that started it closes,
// and ends with the process. A script that was stopped goes on where it was. Main thread.
class ModelInstaller final : public QObject {
    Q_OBJECT

  public:
    enum class State { idle, running, succeeded, failed, stopped };

    ModelInstaller(std::shared_ptr<MainExecutor> executor, std::filesystem::path script,
                   QObject* parent = nullptr);
    ~ModelInstaller() override;

    State state() const { return m_state; }
    bool isRunning() const { return m_state == State::running; }
    // What it does now, as the script says it.
    const QString& step() const { return m_step; }
    // How far the step is; nothing for one that doesn't count.
    const std::optional<int>& percent() const { return m_percent; }
    // Everything that the script said.
    const QString& log() const { return m_log; }
    // Why it failed, as a sentence that says what to do.
    const QString& problem() const { return m_problem; }

    void start();
    void stop();

  Q_SIGNALS:
    void changed();
    void succeeded();

  private:
    void read(std::string_view bytes);
    void readLine(const QString& line);
    void ended(const ProcessExit& exit);

    std::shared_ptr<MainExecutor> m_executor;
    std::filesystem::path m_script;
    State m_state = State::idle;
    bool m_isStopping = false;
    QString m_step;
    std::optional<int> m_percent;
    QString m_log;
    QString m_problem;
    std::string m_partial; // of a line
    std::unique_ptr<Process> m_process;
};

} // namespace ombrel

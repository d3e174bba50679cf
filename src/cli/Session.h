#pragma once

#include "cli/Command.h"
#include "cli/Terminal.h"
#include "core/AppState.h"
#include "core/ProjectDocument.h"
#include "platform/RunLoopExecutor.h"
#include "platform/Task.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

namespace ombrel {

// The executor and services of one invocation, and how long work runs in it: with progress on
// standard error, until its end or until Ctrl-C.
class Runtime {
  public:
    Runtime();
    Runtime(const Runtime&) = delete;
    Runtime& operator=(const Runtime&) = delete;
    ~Runtime();

    const Platform& platform() const { return m_platform; }

    // Runs the task to its end. False when Ctrl-C or a termination signal stopped it: then it is
    // never resumed, and what it has stored so far stands.
    [[nodiscard]] bool run(Task<void> task);
    ProgressLine& progress() { return m_progress; }

  private:
    ProgressLine m_progress; // outlives the services, which report to it
    std::shared_ptr<RunLoopExecutor> m_executor;
    Platform m_platform;
};

// One project while a command works on it. Every failure is thrown as `Failure`.
class Session {
  public:
    // Opens the project, and selects the RAG index that the invocation names for the session.
    Session(const std::filesystem::path& path, const Invocation& invocation);

    std::shared_ptr<AppState> state() const { return m_state; }
    AppState& operator*() const { return *m_state; }
    AppState* operator->() const { return m_state.get(); }
    Runtime& runtime() { return m_runtime; }

    // Runs long work and shows how far it is. When it is stopped, what was finished is saved and
    // `Failure` is thrown.
    void run(Task<void> task);

    // Writes the project. The selected RAG index stays what it was in the file, unless
    // `keepSelection` says that choosing it was the command.
    void save(bool keepSelection = false);

    // `importError` of the current index as a failure, when there is one.
    void throwImportError() const;

  private:
    void showProgress();

    const Invocation& m_invocation;
    Runtime m_runtime;
    ProjectDocument m_document;
    std::shared_ptr<AppState> m_state;
    Uuid m_originalSelection;
    Subscription m_subscription;
};

} // namespace ombrel

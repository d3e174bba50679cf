#include "cli/Session.h"

#include "core/ProgressText.h"
#include "knowledge/BuildTexts.h"
#include "platform/Date.h"
#include "platform/LocalPlatform.h"
#include "platform/ServiceSettings.h"

#include <csignal>
#include <utility>

namespace ombrel {

namespace {

// The run loop that Ctrl-C stops. Signal handlers have no other way to find it.
RunLoopExecutor* runningLoop = nullptr;

void stopRunningLoop(int) {
    if (runningLoop != nullptr) {
        runningLoop->stop();
    }
}

// While it lives, Ctrl-C and a request to terminate stop the run loop instead of the program. A
// second Ctrl-C is the ordinary one.
class StopOnSignal {
  public:
    explicit StopOnSignal(RunLoopExecutor& loop) {
        runningLoop = &loop;
        struct sigaction action {};
        action.sa_handler = stopRunningLoop;
        action.sa_flags = static_cast<int>(SA_RESETHAND);
        sigaction(SIGINT, &action, &m_interrupt);
        sigaction(SIGTERM, &action, &m_terminate);
    }
    StopOnSignal(const StopOnSignal&) = delete;
    StopOnSignal& operator=(const StopOnSignal&) = delete;
    ~StopOnSignal() {
        sigaction(SIGINT, &m_interrupt, nullptr);
        sigaction(SIGTERM, &m_terminate, nullptr);
        runningLoop = nullptr;
    }

  private:
    struct sigaction m_interrupt {};
    struct sigaction m_terminate {};
};

ServiceSettings serviceSettings() {
    const ServiceSettings::Loaded loaded = ServiceSettings::load();
    if (loaded.problem) {
        std::cerr << "ombrel: " << loaded.problem->message << "\n";
    }
    return loaded.settings;
}

} // namespace

Runtime::Runtime()
    : m_executor(std::make_shared<RunLoopExecutor>()),
      m_platform(
          makeLocalPlatform(m_executor, serviceSettings(),
                            [this](const std::string& status) { m_progress.show(status); })) {}

Runtime::~Runtime() = default;

bool Runtime::run(Task<void> task) {
    const StopOnSignal stopOnSignal(*m_executor);
    const bool finished = m_executor->runUntil(std::move(task));
    m_progress.clear();
    return finished;
}

Session::Session(const std::filesystem::path& path, const Invocation& invocation)
    : m_invocation(invocation), m_state(AppState::make(m_runtime.platform())) {
    auto opened = ProjectDocument::open(path);
    if (!opened) {
        throw Failure{path.string() + ": " + opened.error().message};
    }
    m_document = std::move(opened->document);
    if (opened->leftBehind.any()) {
        m_invocation.note(opened->leftBehind.description());
    }
    m_state->load(opened->snapshot);
    m_originalSelection = *m_state->selectedRAGIndexID;
    if (m_invocation.rag) {
        m_state->selectedRAGIndexID = findRAGIndex(*m_state, *m_invocation.rag);
    }
    m_subscription = m_state->ragIndexes.observe([this] { showProgress(); });
}

void Session::run(Task<void> task) {
    if (!m_runtime.run(std::move(task))) {
        save();
        throw Failure{"Stopped. What was finished is kept."};
    }
}

void Session::save(bool keepSelection) {
    PersistedProject snapshot = m_state->makeSnapshot();
    if (!keepSelection) {
        snapshot.selectedRAGIndexID = m_originalSelection;
    }
    const auto saved = m_document.save(snapshot);
    if (!saved) {
        throw Failure{m_document.path().string() + ": " + saved.error().message};
    }
    if (saved->keptOldFile) {
        m_invocation.note("The old file is kept as “" + saved->keptOldFile->string() + "”.");
    }
}

void Session::throwImportError() const {
    if (const auto& error = m_state->currentIndex().importError) {
        throw Failure{*error};
    }
}

void Session::showProgress() {
    const RAGIndex& index = m_state->currentIndex();
    if (index.importProgress || index.isEnriching || index.embedProgress) {
        m_runtime.progress().show(buildStatusText(*m_state, Date::now()));
    } else if (index.draftProgress) {
        m_runtime.progress().show("Drafting questions \u2014 " +
                                  progressText(*index.draftProgress));
    } else if (index.evaluateProgress) {
        m_runtime.progress().show("Evaluating questions \u2014 " +
                                  progressText(*index.evaluateProgress));
    }
}

} // namespace ombrel

#include "shell/ModelInstaller.h"

#include "platform/Process.h"
#include "shell/QtText.h"

#include <QRegularExpression>

#include <utility>

namespace ombrel {

namespace {

// How the script begins the sentence that says why it failed.
const QString problemPrefix = QStringLiteral("install-models: ");

} // namespace

ModelInstaller::ModelInstaller(std::shared_ptr<MainExecutor> executor, std::filesystem::path script,
                               QObject* parent)
    : QObject(parent), m_executor(std::move(executor)), m_script(std::move(script)) {}

ModelInstaller::~ModelInstaller() = default;

void ModelInstaller::start() {
    if (isRunning()) {
        return;
    }
    m_isStopping = false;
    m_step = tr("Starting\u2026");
    m_percent.reset();
    m_log.clear();
    m_problem.clear();
    m_partial.clear();
    ProcessLaunch launch;
    launch.arguments = {m_script.string()};
    launch.environment = {{"PYTHONUNBUFFERED", "1"}, {"OMBREL_INSTALL_PROGRESS", "percent"}};
    launch.errorsToOutput = true;
    ProcessHandlers handlers;
    handlers.onOutput = [this](std::string_view bytes) { read(bytes); };
    handlers.onExit = [this](ProcessExit exit) { ended(exit); };
    auto process = Process::start(m_executor, std::move(launch), std::move(handlers));
    if (process) {
        m_process = std::move(*process);
        m_state = State::running;
    } else {
        m_problem = toQt(process.error().message);
        m_state = State::failed;
    }
    Q_EMIT changed();
}

void ModelInstaller::stop() {
    if (m_process && isRunning()) {
        m_isStopping = true;
        m_step = tr("Stopping\u2026");
        m_percent.reset();
        m_process->terminate();
        Q_EMIT changed();
    }
}

void ModelInstaller::read(std::string_view bytes) {
    m_partial += bytes;
    std::size_t begin = 0;
    for (std::size_t end = 0; (end = m_partial.find('\n', begin)) != std::string::npos;
         begin = end + 1) {
        readLine(toQt(std::string_view(m_partial).substr(begin, end - begin)));
    }
    m_partial.erase(0, begin);
    Q_EMIT changed();
}

void ModelInstaller::readLine(const QString& line) {
    static const QRegularExpression counted(QStringLiteral("^(.*): (\\d{1,3})%$"));
    if (const auto match = counted.match(line); match.hasMatch()) {
        m_step = match.captured(1);
        m_percent = qMin(match.captured(2).toInt(), 100);
        return;
    }
    m_log += line + QLatin1Char('\n');
    if (line.startsWith(problemPrefix)) {
        m_problem = line.mid(problemPrefix.size());
    } else if (!line.trimmed().isEmpty() && !m_isStopping) {
        m_step = line;
        m_percent.reset();
    }
}

void ModelInstaller::ended(const ProcessExit& exit) {
    if (!m_partial.empty()) {
        readLine(toQt(std::exchange(m_partial, {})));
    }
    m_percent.reset();
    if (exit.succeeded()) {
        m_state = State::succeeded;
        m_problem.clear();
    } else if (m_isStopping) {
        m_state = State::stopped;
        m_problem.clear();
    } else {
        m_state = State::failed;
        if (m_problem.isEmpty()) {
            m_problem = tr("The installation ended early (%1). What it said stands in the details.")
                            .arg(toQt(exit.description()));
        }
    }
    Q_EMIT changed();
    if (m_state == State::succeeded) {
        Q_EMIT succeeded();
    }
}

} // namespace ombrel

#include "flows/FlowRunner.h"

#include "flows/StreamingLineCollector.h"
#include "flows/TraceLine.h"
#include "platform/Completion.h"
#include "platform/FileExists.h"
#include "platform/MainExecutor.h"
#include "platform/Process.h"
#include "platform/Text.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <iterator>
#include <optional>
#include <string_view>
#include <utility>

namespace ombrel {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view resultMark = "RESULT:";

// The status that shells and launchers report: that of a program which a signal ended is the
// signal's number.
int reportedStatus(const ProcessExit& exit) {
    return exit.signal != 0 ? exit.signal : exit.status;
}

std::string oneDecimal(MainExecutor::Clock::duration time) {
    char text[32];
    std::snprintf(text, sizeof text, "%.1f", std::chrono::duration<double>(time).count());
    return text;
}

std::optional<fs::path> preparedBefore(PreparedCLIBox& box) {
    const std::lock_guard lock(box.lock);
    return box.url && fileExists(*box.url) ? box.url : std::nullopt;
}

Task<FlowRunner::PreparedCLI> prepare(std::shared_ptr<MainExecutor> executor,
                                      std::shared_ptr<ToolChain> toolChain,
                                      FlowRunner::ConsoleHandler onConsoleLine) {
    const fs::path package = toolChain->studioCorePath();
    const fs::path cli = package / ".build/debug/StudioCLI";
    if (const auto prepared = preparedBefore(toolChain->preparedCLI)) {
        co_return *prepared;
    }
    const auto started = executor->now();
    onConsoleLine(fileExists(cli)
                      ? "▸ Checking Ombrel's build tools are up to date…"
                      : "▸ Building Ombrel's build tools — this happens once after installing or "
                        "updating the app and can take a minute…");
    StreamingLineCollector output([&onConsoleLine](const std::string& line) {
        if (const auto said = trimBlanksAndTabs(line); !said.empty()) {
            onConsoleLine("  " + std::string(said));
        }
    });
    ProcessLaunch launch;
    launch.arguments = {toolChain->swift(), "build",     "--package-path",
                        package.string(),   "--product", "StudioCLI"};
    launch.environment = toolChain->environment();
    launch.errorsToOutput = true;
    const Completion<ProcessExit> exited(executor);
    ProcessHandlers handlers;
    handlers.onOutput = [&output](std::string_view bytes) { output.append(bytes); };
    handlers.onExit = exited.fulfiller();
    const auto process = Process::start(executor, std::move(launch), std::move(handlers));
    if (!process) {
        co_return tl::unexpected(
            FlowRunOutcomeError{"Couldn't start swift build: " + process.error().message, ""});
    }
    const ProcessExit exit = co_await exited;
    output.finish();
    if (exit.succeeded() && fileExists(cli)) {
        onConsoleLine("▸ Build tools ready in " + oneDecimal(executor->now() - started) + " s");
        const std::lock_guard lock(toolChain->preparedCLI.lock);
        toolChain->preparedCLI.url = cli;
        co_return cli;
    }
    onConsoleLine("✗ Ombrel's build tools didn't compile — see the output above.");
    co_return tl::unexpected(FlowRunOutcomeError{"Couldn't build StudioCLI (exit " +
                                                     std::to_string(reportedStatus(exit)) +
                                                     ") — see the console tab.",
                                                 output.takeText()});
}

Task<void> reachModels(std::shared_ptr<ModelEndpoints> endpoints, bool usesVectors,
                       std::function<void(EnvironmentVariables)> fulfil) {
    EnvironmentVariables variables = co_await endpoints->environment(usesVectors);
    fulfil(std::move(variables));
}

// What has come of a run so far.
struct Report {
    FlowRunOutcome outcome;
    FlowRunner::TraceHandler onTraceEvent;

    void read(std::string line) {
        if (line.starts_with(resultMark)) {
            outcome.resultLines.push_back(std::move(line));
        } else if (auto event = parseTraceLine(line)) {
            onTraceEvent(*event);
            outcome.trace.push_back(std::move(*event));
        }
    }
};

std::string joined(std::string output, const std::string& error) {
    return error.empty() ? output : std::move(output) + "\n" + error;
}

Task<FlowRunOutcome> runCLI(std::shared_ptr<MainExecutor> executor, ProcessLaunch launch,
                            FlowRunner::ConsoleHandler onConsoleLine,
                            FlowRunner::TraceHandler onTraceEvent) {
    Report report;
    report.onTraceEvent = std::move(onTraceEvent);
    StreamingLineCollector output([&report](std::string line) { report.read(std::move(line)); });
    StreamingLineCollector error(std::move(onConsoleLine));
    const Completion<ProcessExit> exited(executor);
    ProcessHandlers handlers;
    handlers.onOutput = [&output](std::string_view bytes) { output.append(bytes); };
    handlers.onError = [&error](std::string_view bytes) { error.append(bytes); };
    handlers.onExit = exited.fulfiller();
    const auto process = Process::start(executor, std::move(launch), std::move(handlers));
    if (!process) {
        co_return FlowRunOutcome::failed("Couldn't launch StudioCLI: " + process.error().message);
    }
    const ProcessExit exit = co_await exited;
    output.finish();
    error.finish();
    FlowRunOutcome outcome = std::move(report.outcome);
    outcome.rawOutput = joined(output.takeText(), error.takeText());
    if (!exit.succeeded()) {
        co_return FlowRunOutcome::failed(
            "Run failed (exit " + std::to_string(reportedStatus(exit)) + ") — see the console tab.",
            std::move(outcome.rawOutput));
    }
    if (outcome.trace.empty() && outcome.resultLines.empty()) {
        outcome.errorMessage = "No trace or result came back — see the console tab.";
    } else if (!outcome.resultLines.empty()) {
        outcome.resultLine = outcome.resultLines.back();
    }
    co_return outcome;
}

Task<FlowRunOutcome> prepareAndRun(Platform platform, std::shared_ptr<ToolChain> toolChain,
                                   fs::path requestFile, bool usesVectors,
                                   FlowRunner::ConsoleHandler onConsoleLine,
                                   FlowRunner::TraceHandler onTraceEvent) {
    // The models load while the tools are built.
    const Completion<EnvironmentVariables> reached(platform.executor);
    platform.executor->spawn(reachModels(platform.endpoints, usesVectors, reached.fulfiller()));
    auto preparing = prepare(platform.executor, toolChain, onConsoleLine);
    const FlowRunner::PreparedCLI cli = co_await std::move(preparing);
    if (!cli) {
        co_return FlowRunOutcome::failed(cli.error().message, cli.error().rawOutput);
    }
    ProcessLaunch launch;
    launch.arguments = {cli->string(), requestFile.string()};
    EnvironmentVariables variables = co_await reached;
    std::ranges::move(toolChain->environment(), std::back_inserter(variables));
    launch.environment = std::move(variables);
    auto running = runCLI(platform.executor, std::move(launch), std::move(onConsoleLine),
                          std::move(onTraceEvent));
    FlowRunOutcome outcome = co_await std::move(running);
    co_return outcome;
}

} // namespace

FlowRunner::FlowRunner(Platform platform, std::shared_ptr<ToolChain> toolChain)
    : m_platform(std::move(platform)), m_toolChain(std::move(toolChain)) {}

Task<FlowRunOutcome> FlowRunner::run(fs::path requestFile, bool usesVectors,
                                     ConsoleHandler onConsoleLine,
                                     TraceHandler onTraceEvent) const {
    return prepareAndRun(m_platform, m_toolChain, std::move(requestFile), usesVectors,
                         std::move(onConsoleLine), std::move(onTraceEvent));
}

Task<FlowRunner::PreparedCLI> FlowRunner::prepareCLI(ConsoleHandler onConsoleLine) const {
    return prepare(m_platform.executor, m_toolChain, std::move(onConsoleLine));
}

} // namespace ombrel

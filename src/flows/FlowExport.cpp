#include "flows/FlowExport.h"

#include "flows/FlowSpecBuilder.h"
#include "flows/FlowValidator.h"
#include "flows/RequestFile.h"
#include "flows/WireProjectExportRequest.h"
#include "platform/PackageStem.h"
#include "platform/Process.h"
#include "platform/Text.h"
#include "platform/WorkerThread.h"

#include <algorithm>
#include <functional>
#include <stop_token>
#include <utility>

namespace ombrel {

namespace {

bool hasErrors(const FlowExport& what, const Flow& flow) {
    const auto issues = FlowValidator::validate(flow, what.agents, what.tools);
    return std::ranges::any_of(issues, [](const FlowIssue& issue) {
        return issue.severity == FlowIssue::Severity::error;
    });
}

ExportOutcome failed(std::string message) {
    return {false, std::move(message), ""};
}

// What is ready to be exported, and the names of the flows that aren't.
struct Prepared {
    std::shared_ptr<const RequestFile> request; // null when nothing is ready
    std::vector<std::string> skipped;
    std::string problem; // why there is no request for what is ready
};

// Any thread.
Prepared prepareRequest(const FlowExport& what, const std::string& runtimePath,
                        const std::stop_token& stop) {
    Prepared prepared;
    WireProjectExportRequest request;
    for (const Flow& flow : what.flows) {
        if (hasErrors(what, flow)) {
            prepared.skipped.push_back(flow.name);
            continue;
        }
        auto spec = FlowSpecBuilder::build(flow, what.agents, what.tools, what.ragIndexes);
        if (spec) {
            request.flows.push_back(std::move(*spec));
        } else {
            prepared.skipped.push_back(flow.name);
        }
    }
    if (request.flows.empty()) {
        return prepared;
    }
    request.packageName = what.name;
    request.destinationDirectory = what.destination.string();
    request.runtimeSourcePath = runtimePath;
    auto file = RequestFile::make("OmbrelExportRequest", request, stop);
    if (file) {
        prepared.request = std::move(*file);
    } else {
        prepared.problem = "Couldn't encode the export request: " + file.error().message;
    }
    return prepared;
}

ExportOutcome outcomeOf(const ProcessOutput& run) {
    ExportOutcome outcome;
    outcome.isSuccess = run.ending == ProcessOutput::Ending::exited && run.exit.succeeded() &&
                        run.output.find("EXPORT_SUCCEEDED") != std::string::npos;
    outcome.message =
        outcome.isSuccess ? "Export succeeded." : "Export failed — see the details below.";
    outcome.rawOutput = repairUtf8(run.error.empty() ? run.output : run.output + "\n" + run.error);
    return outcome;
}

Task<ExportOutcome> runTool(std::shared_ptr<MainExecutor> executor,
                            std::shared_ptr<ToolChain> toolChain,
                            std::filesystem::path requestFile) {
    ProcessLaunch launch;
    launch.arguments = {toolChain->swift(),          "run",       "--package-path",
                        toolChain->studioCorePath(), "ExportCLI", requestFile.string()};
    launch.environment = toolChain->environment();
    auto running = runToEnd(executor, std::move(launch), ProcessBounds());
    const Result<ProcessOutput> run = co_await std::move(running);
    if (!run) {
        co_return failed("Couldn't launch ExportCLI: " + run.error().message);
    }
    co_return outcomeOf(*run);
}

} // namespace

std::string FlowExport::packageName(std::string_view projectName) {
    const std::string stem = packageStem(projectName);
    return stem.empty() ? "OmbrelProject" : stem;
}

Task<ExportOutcome> exportFlows(std::shared_ptr<MainExecutor> executor, FlowExport what,
                                std::shared_ptr<ToolChain> toolChain) {
    if (auto problem = toolChain->checkTooling()) {
        co_return failed(std::move(*problem));
    }
    const std::string runtimePath = toolChain->runtimePath();
    std::function<Prepared(std::stop_token)> work = [&](const std::stop_token& stop) {
        return prepareRequest(what, runtimePath, stop);
    };
    auto preparing = onWorkerThread(executor, std::move(work));
    const Prepared prepared = co_await std::move(preparing);
    if (!prepared.problem.empty()) {
        co_return failed(prepared.problem);
    }
    if (!prepared.request) {
        co_return failed(
            "No flow is ready to export — fix each flow's issues first (see its Issues tab).");
    }
    auto exporting = runTool(executor, toolChain, prepared.request->path());
    ExportOutcome outcome = co_await std::move(exporting);
    if (!prepared.skipped.empty()) {
        outcome.message += " (skipped, had errors: " + join(prepared.skipped, ", ") + ")";
    }
    co_return outcome;
}

} // namespace ombrel

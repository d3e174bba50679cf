#pragma once

#include "core/FlowRunOutcome.h"
#include "core/FlowTraceEvent.h"
#include "flows/ToolChain.h"
#include "platform/Platform.h"
#include "platform/Result.h"
#include "platform/Task.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

namespace ombrel {

// Why the tool that runs flows could not be built.
struct FlowRunOutcomeError {
    std::string message;
    std::string rawOutput;
    bool operator==(const FlowRunOutcomeError&) const = default;
};

// Runs flows through StudioCLI, the tool of OmbrelStudioCore: it gets the path of a request, says
// on standard output what the flow does (one line for each step, as `parseTraceLine` reads them,
// and lines that begin "RESULT:"), and on standard error what people may want to read. Main thread.
class FlowRunner {
  public:
    using ConsoleHandler = std::function<void(std::string line)>;
    using TraceHandler = std::function<void(const FlowTraceEvent&)>;
    using PreparedCLI = Result<std::filesystem::path, FlowRunOutcomeError>;

    FlowRunner(Platform platform, std::shared_ptr<ToolChain> toolChain);

    // Runs the request that the file holds, and tells each line and step as it comes.
    // `usesVectors`: whether the flow searches by vectors, and so needs the embedding model. Every
    // failure is in the outcome. Destroying the task kills what it started.
    Task<FlowRunOutcome> run(std::filesystem::path requestFile, bool usesVectors,
                             ConsoleHandler onConsoleLine, TraceHandler onTraceEvent) const;

    // StudioCLI, built when it is not up to date: the build itself is the test for that. At once,
    // and without a word, when it was prepared before and is still there.
    Task<PreparedCLI> prepareCLI(ConsoleHandler onConsoleLine) const;

  private:
    Platform m_platform;
    std::shared_ptr<ToolChain> m_toolChain;
};

} // namespace ombrel

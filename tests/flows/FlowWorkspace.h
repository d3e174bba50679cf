#pragma once

#include "core/AppState.h"
#include "flows/FlowRun.h"
#include "platform/RunLoopExecutor.h"
#include "tests/flows/FlowSamples.h"
#include "tests/flows/ScriptedTools.h"
#include "tests/support/TestPlatform.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace ombrel::test {

// A workspace on scripted services whose programs are real processes, with one flow: Start, the
// agent "Writer", End.
struct FlowWorkspace {
    ScriptedTools tools;
    TestPlatform scripted = makeTestPlatform();
    std::shared_ptr<RunLoopExecutor> executor = std::make_shared<RunLoopExecutor>();
    Platform platform = onExecutor(scripted.platform, executor);
    std::shared_ptr<AppState> state = AppState::make(platform);
    std::shared_ptr<ToolChain> toolChain = std::make_shared<ToolChain>();
    Uuid flowID = draw("Support");

    AppState* operator->() const { return state.get(); }

    // Adds a flow of the same shape to the project.
    Uuid draw(std::string name) const {
        Drawing drawing;
        const Uuid agent = drawing.agent("Writer");
        drawing.connect(drawing.start(), agent);
        drawing.connect(agent, drawing.end());
        return add(std::move(drawing), std::move(name));
    }
    // Adds a flow with its agents and tools to the project.
    Uuid add(Drawing drawing, std::string name) const {
        drawing.flow.name = std::move(name);
        const Uuid id = drawing.flow.id;
        std::ranges::move(drawing.agents, std::back_inserter(*state->agents.edit()));
        std::ranges::move(drawing.tools, std::back_inserter(*state->tools.edit()));
        state->flows.edit()->push_back(std::move(drawing.flow));
        return id;
    }
    void editFlow(const std::function<void(Flow&)>& write) const {
        auto flows = state->flows.edit();
        write(*findByID(*flows, flowID));
    }

    void run(Task<void> task) const { executor->runUntil(std::move(task)); }
    void runFlow() const { run(ombrel::runFlow(state, flowID, toolChain)); }
    const FlowRunOutcome& outcome() const { return **state->lastFlowRunOutcome; }

    std::vector<std::string> console() const {
        std::vector<std::string> texts;
        for (const FlowConsoleLine& line : *state->flowConsoleLines) {
            texts.push_back(line.text);
        }
        return texts;
    }
    const FlowConsoleLine& lastLine() const { return state->flowConsoleLines->back(); }

  private:
    static Platform onExecutor(Platform platform, std::shared_ptr<MainExecutor> executor) {
        platform.executor = std::move(executor);
        return platform;
    }
};

// A line of a running flow's standard output, for a script between single quotes.
inline std::string traceLine(const std::string& kind, const std::string& detail,
                             const std::string& rest = "") {
    return R"({"kind":")" + kind + R"(","detail":")" + detail + R"(","elapsedMS":5)" + rest + "}";
}

} // namespace ombrel::test

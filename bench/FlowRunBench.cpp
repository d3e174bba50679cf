// Runs one flow again and again, as the studio does, and tells how long each run takes from its
// start to the first line of its trace. What is changed before a run is read from standard input,
// one word a line: nothing, instructions or branch. Each answer is one line: the seconds, and the
// folder in which the flow is built.
//
// The model is one that there is not: the first lines of the trace come before it is asked.

#include "core/Agent.h"
#include "core/AppState.h"
#include "flows/FlowRun.h"
#include "platform/LocalPlatform.h"
#include "platform/RunLoopExecutor.h"

#include <chrono>
#include <iostream>
#include <optional>
#include <string>

namespace ombrel {
namespace {

using Clock = std::chrono::steady_clock;

class NoModel : public ModelEndpoints {
  public:
    Task<EnvironmentVariables> environment(bool) override {
        return []() -> Task<EnvironmentVariables> {
            EnvironmentVariables variables;
            variables.emplace_back("OMBREL_MODEL_ERROR", "There is no model.");
            co_return variables;
        }();
    }
};

struct Bench {
    std::shared_ptr<RunLoopExecutor> executor = std::make_shared<RunLoopExecutor>();
    std::shared_ptr<AppState> state;
    Uuid flowID;
    int changes = 0;

    Bench() {
        Platform platform = makeLocalPlatform(executor, ServiceSettings());
        platform.endpoints = std::make_shared<NoModel>();
        state = AppState::make(std::move(platform));
        Agent agent = newAgent("Writer");
        agent.instructions = "Answer in one sentence.";
        AgentProperty reply;
        reply.id = Uuid::random();
        reply.name = "reply";
        agent.output = {AgentOutputKind::Object{{reply}}};
        Flow flow("Support");
        flowID = flow.id;
        const auto add = [&](auto kind) {
            flow.nodes.push_back({Uuid::random(), {std::move(kind)}, {}});
            return flow.nodes.back().id;
        };
        const auto connect = [&](Uuid from, Uuid to, std::optional<std::string> port) {
            flow.edges.push_back({Uuid::random(), from, std::move(port), to});
        };
        const Uuid start = flow.nodes.front().id;
        const Uuid writer = add(FlowNodeKind::Agent{agent.id});
        const Uuid branch =
            add(FlowNodeKind::Branch{"reply", WireBranchOperator::contains, "refund"});
        connect(start, writer, std::nullopt);
        connect(writer, branch, std::nullopt);
        connect(branch, add(FlowNodeKind::End{"yes", true}), "true");
        connect(branch, add(FlowNodeKind::End{"no", true}), "false");
        state->agents.edit()->push_back(std::move(agent));
        state->flows.edit()->push_back(std::move(flow));
    }

    void change(const std::string& what) {
        const std::string number = std::to_string(++changes);
        if (what == "instructions") {
            Agent agent = state->agents->front();
            agent.instructions = "Answer in one sentence, not longer than " + number + " words.";
            state->updateAgent(agent);
        } else if (what == "branch") {
            Flow flow = *state->flow(flowID);
            for (FlowNode& node : flow.nodes) {
                if (auto* branch = std::get_if<FlowNodeKind::Branch>(&node.kind.value)) {
                    branch->value = "refund " + number;
                }
            }
            state->updateFlow(flow);
        }
    }

    // The seconds to the first line of the trace; nothing when none came.
    std::optional<double> run() {
        std::optional<double> seconds;
        const auto start = Clock::now();
        const auto subscription = state->flowRunHighlight.observe([&] {
            const auto& highlight = *state->flowRunHighlight;
            if (!seconds && highlight && !highlight->visitedNodeIDs.empty()) {
                seconds = std::chrono::duration<double>(Clock::now() - start).count();
            }
        });
        executor->runUntil(runFlow(state, flowID));
        return seconds;
    }
};

} // namespace
} // namespace ombrel

int main() {
    ombrel::Bench bench;
    for (std::string what; std::getline(std::cin, what);) {
        bench.change(what);
        const auto seconds = bench.run();
        if (!seconds) {
            std::cerr << (*bench.state->lastFlowRunOutcome)->rawOutput;
            return 1;
        }
        std::cout << *seconds << " " << ombrel::packageDirectory(bench.flowID).string()
                  << std::endl;
    }
}

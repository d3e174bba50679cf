#include "flows/FlowRun.h"

#include "flows/FlowInput.h"
#include "flows/FlowRunner.h"
#include "flows/FlowSpecBuilder.h"
#include "flows/FlowValidator.h"
#include "flows/RequestFile.h"
#include "flows/RunConsole.h"
#include "flows/RunHighlight.h"
#include "flows/WireFlowRunRequest.h"
#include "platform/MainExecutor.h"
#include "platform/WorkerThread.h"

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <functional>
#include <optional>
#include <stop_token>
#include <utility>
#include <variant>
#include <vector>

namespace ombrel {

namespace {

using Kind = FlowConsoleLine::Kind;

std::string timeOfDay(Date date) {
    const auto seconds =
        static_cast<std::time_t>(date.secondsSinceReference + referenceDateSince1970);
    std::tm local{};
    localtime_r(&seconds, &local);
    char text[16];
    return std::string(text, std::strftime(text, sizeof text, "%H:%M:%S", &local));
}

FlowConsoleLine consoleLine(Kind kind, std::string text) {
    return {Uuid::random(), std::move(text), kind};
}

void beginRun(AppState& state, const Flow& flow) {
    const Date now = Date::now();
    state.flowRunStartedAt = now;
    state.flowRunPhase = "Starting…";
    state.flowConsoleLines = {
        consoleLine(Kind::info, "Run of “" + flow.name + "” started at " + timeOfDay(now))};
    state.flowRunHighlight = FlowRunHighlight(flow, *state.agents, *state.tools);
}

std::string elapsedTime(const AppState& state) {
    if (!*state.flowRunStartedAt) {
        return "";
    }
    const double seconds =
        Date::now().secondsSinceReference - (*state.flowRunStartedAt)->secondsSinceReference;
    char text[64];
    std::snprintf(text, sizeof text, "%.1f s", seconds);
    return text;
}

void finishHighlight(FlowRunHighlight& highlight, const FlowRunOutcome& outcome) {
    if (highlight.visitedNodeIDs.empty()) {
        for (const FlowTraceEvent& event : outcome.trace) {
            apply(highlight, event);
        }
    }
    finish(highlight, !outcome.errorMessage);
}

void finishRun(AppState& state, FlowRunOutcome outcome, const std::string& resultTab) {
    const std::string elapsed = elapsedTime(state);
    std::vector<FlowConsoleLine> last;
    last.push_back(
        outcome.errorMessage
            ? consoleLine(Kind::failure, "Failed after " + elapsed + ": " + *outcome.errorMessage)
            : consoleLine(Kind::success,
                          "Finished in " + elapsed + " — the result is in " + resultTab + "."));
    appendToConsole(state, std::move(last));
    state.flowRunPhase = std::nullopt;
    state.flowRunStartedAt = std::nullopt;
    if (*state.flowRunHighlight) {
        finishHighlight(**state.flowRunHighlight.edit(), outcome);
    }
    state.lastFlowRunOutcome = std::move(outcome);
    state.isRunningFlow = false;
}

// Brings what a run reports to the workspace, as long as there is one. All that comes in one turn
// of the main thread is one change.
class LiveRun : public std::enable_shared_from_this<LiveRun> {
  public:
    LiveRun(std::weak_ptr<AppState> state, std::shared_ptr<MainExecutor> executor)
        : m_state(std::move(state)), m_executor(std::move(executor)) {}

    void addLine(std::string text) {
        m_lines.push_back(readConsoleLine(std::move(text)));
        flushSoon();
    }
    void addEvent(const FlowTraceEvent& event) {
        m_events.push_back(event);
        flushSoon();
    }
    void flush() {
        m_isWaiting = false;
        const std::vector<FlowTraceEvent> events = std::exchange(m_events, {});
        std::vector<FlowConsoleLine> lines = std::exchange(m_lines, {});
        const auto state = m_state.lock();
        if (!state) {
            return;
        }
        std::optional<std::string> phase = *state->flowRunPhase;
        for (const FlowConsoleLine& line : lines) {
            if (line.kind == Kind::step) {
                phase = line.text;
            }
        }
        appendToConsole(*state, std::move(lines));
        state->flowRunPhase.setIfChanged(std::move(phase));
        if (!events.empty() && *state->flowRunHighlight) {
            const auto highlight = state->flowRunHighlight.edit();
            for (const FlowTraceEvent& event : events) {
                apply(**highlight, event);
            }
        }
    }
    void finish(FlowRunOutcome outcome, const std::string& resultTab) {
        flush();
        if (const auto state = m_state.lock()) {
            finishRun(*state, std::move(outcome), resultTab);
        }
    }

  private:
    void flushSoon() {
        if (!std::exchange(m_isWaiting, true)) {
            m_executor->post([self = shared_from_this()] {
                if (self->m_isWaiting) {
                    self->flush();
                }
            });
        }
    }

    std::weak_ptr<AppState> m_state;
    std::shared_ptr<MainExecutor> m_executor;
    std::vector<FlowConsoleLine> m_lines;
    std::vector<FlowTraceEvent> m_events;
    bool m_isWaiting = false;
};

// What a run is made of: copies, since the project may change meanwhile.
struct RunPlan {
    Flow flow;
    std::vector<Agent> agents;
    std::vector<ToolDefinition> tools;
    std::vector<RAGIndex> ragIndexes;
    std::string inputJSON;
    std::string runtimePath;
};

struct Request {
    std::shared_ptr<const RequestFile> file;
    bool usesVectors = false;
};

// Finds out whether anything on any path of a flow is searched by vectors. The tree may be deep.
class VectorSearches {
  public:
    bool isIn(const WireFlowSpec& spec) { return isIn(spec.firstAgent) || isBehind(spec.routing); }

  private:
    static bool isIn(const WireAgentSpec& agent) {
        return std::ranges::any_of(agent.ragAttachments, [](const WireRAGAttachment& attachment) {
            return attachment.indexKind != WireRAGIndexKind::keyword;
        });
    }
    bool isBehind(const WireFlowRouting& routing) {
        add(routing);
        while (!m_left.empty()) {
            const WireFlowDestination& next = *m_left.back();
            m_left.pop_back();
            if (const auto* agent = std::get_if<WireFlowDestination::Agent>(&next.value)) {
                if (isIn(agent->spec)) {
                    return true;
                }
                add(agent->next);
            } else if (const auto* branch = std::get_if<WireFlowDestination::Branch>(&next.value)) {
                m_left.push_back(&*branch->then);
                m_left.push_back(&*branch->otherwise);
            } else if (const auto* tool = std::get_if<WireFlowDestination::Tool>(&next.value)) {
                m_left.push_back(&*tool->next);
            }
        }
        return false;
    }
    void add(const WireFlowRouting& routing) {
        if (const auto* single = std::get_if<WireFlowRouting::Single>(&routing.value)) {
            m_left.push_back(&*single->destination);
        } else {
            const auto& byCase = std::get<WireFlowRouting::ByCase>(routing.value);
            for (const auto& [name, destination] : byCase.destinations) {
                m_left.push_back(&*destination);
            }
        }
    }

    std::vector<const WireFlowDestination*> m_left;
};

// Any thread.
Result<Request> writeRequest(const RunPlan& plan, const std::stop_token& stop) {
    auto spec = FlowSpecBuilder::build(plan.flow, plan.agents, plan.tools, plan.ragIndexes);
    if (!spec) {
        return failure(spec.error().message());
    }
    const bool usesVectors = VectorSearches().isIn(*spec);
    const WireFlowRunRequest request{std::move(*spec), plan.runtimePath,
                                     packageDirectory(plan.flow.id).string(), plan.inputJSON};
    auto file = RequestFile::make("OmbrelRunRequest", request, stop);
    if (!file) {
        return failure("Couldn't encode the run request: " + file.error().message);
    }
    return Request{std::move(*file), usesVectors};
}

Task<FlowRunOutcome> outcomeOf(Platform platform, std::shared_ptr<ToolChain> toolChain,
                               RunPlan plan, std::shared_ptr<LiveRun> live) {
    if (auto problem = toolChain->checkTooling()) {
        co_return FlowRunOutcome::failed(std::move(*problem));
    }
    plan.runtimePath = toolChain->runtimePath();
    // A large index takes a while to write.
    std::function<Result<Request>(std::stop_token)> work = [&plan](const std::stop_token& stop) {
        return writeRequest(plan, stop);
    };
    auto writing = onWorkerThread(platform.executor, std::move(work));
    const Result<Request> request = co_await std::move(writing);
    if (!request) {
        co_return FlowRunOutcome::failed(request.error().message);
    }
    const FlowRunner runner(platform, toolChain);
    FlowRunner::ConsoleHandler onConsoleLine = [live](std::string line) {
        live->addLine(std::move(line));
    };
    FlowRunner::TraceHandler onTraceEvent = [live](const FlowTraceEvent& event) {
        live->addEvent(event);
    };
    auto running = runner.run(request->file->path(), request->usesVectors, std::move(onConsoleLine),
                              std::move(onTraceEvent));
    FlowRunOutcome outcome = co_await std::move(running);
    co_return outcome;
}

} // namespace

Task<void> carryOutRun(std::shared_ptr<AppState> state, Uuid flowID, std::string inputJSON,
                       std::string resultTab, std::shared_ptr<ToolChain> toolChain) {
    RunPlan plan;
    plan.flow = *state->flow(flowID);
    plan.agents = *state->agents;
    plan.tools = *state->tools;
    plan.ragIndexes = *state->ragIndexes;
    plan.inputJSON = std::move(inputJSON);
    beginRun(*state, plan.flow);
    const Platform platform = state->platform();
    const auto live = std::make_shared<LiveRun>(state, platform.executor);
    state.reset();
    auto running = outcomeOf(platform, std::move(toolChain), std::move(plan), live);
    FlowRunOutcome outcome = co_await std::move(running);
    live->finish(std::move(outcome), resultTab);
}

Task<void> runFlow(std::shared_ptr<AppState> state, Uuid flowID,
                   std::shared_ptr<ToolChain> toolChain) {
    if (*state->isRunningFlow || !canRunFlow(*state, flowID)) {
        co_return;
    }
    state->isRunningFlow = true;
    state->lastFlowRunOutcome = std::nullopt;
    std::string inputJSON =
        flowInputJSON(state->flow(flowID)->startInput, *state->flowSampleInputValues);
    auto run = carryOutRun(std::move(state), flowID, std::move(inputJSON), "the Trace tab",
                           std::move(toolChain));
    co_await std::move(run);
}

} // namespace ombrel

#include "cli/FlowRunCommands.h"

#include "cli/ArgumentText.h"
#include "cli/FlowDrawing.h"
#include "cli/FlowReports.h"
#include "cli/Session.h"
#include "core/JsonEncoder.h"
#include "flows/Conversation.h"
#include "flows/FlowDebugTabs.h"
#include "flows/FlowExport.h"
#include "flows/FlowRun.h"
#include "flows/FlowValidator.h"
#include "platform/GeneratedContent.h"

#include <algorithm>
#include <unistd.h>
#include <utility>
#include <vector>

namespace ombrel {

namespace {

namespace fs = std::filesystem;

struct Arguments {
    std::vector<std::string> input;
    std::optional<std::string> inputJson;
    std::vector<std::string> messages;
    std::string destination;
    std::string packageName;
};

struct RunReport {
    FlowRunOutcome outcome;
    HighlightReport highlight;

    static constexpr auto keys() {
        return std::tuple(required("outcome", &RunReport::outcome),
                          required("highlight", &RunReport::highlight));
    }
};

struct TurnReport {
    std::string message;
    std::optional<std::string> reply;

    static constexpr auto keys() {
        return std::tuple(required("message", &TurnReport::message),
                          optional("reply", &TurnReport::reply));
    }
};

struct ChatReport {
    std::vector<TurnReport> turns;
    std::optional<FlowRunOutcome> outcome; // of the last message
    std::optional<HighlightReport> highlight;

    static constexpr auto keys() {
        return std::tuple(required("turns", &ChatReport::turns),
                          optional("outcome", &ChatReport::outcome),
                          optional("highlight", &ChatReport::highlight));
    }
};

// Shows what a run does while it goes on, on a terminal: what the tools say, and each node that it
// reaches. Elsewhere only what they said, should the run fail.
class LiveRunOutput {
  public:
    explicit LiveRunOutput(Session& session)
        : m_session(session), m_isTerminal(isatty(STDERR_FILENO) == 1) {
        m_console = session->flowConsoleLines.observe([this] { noteLines(); });
        m_phase = session->flowRunPhase.observe([this] { showPhase(); });
        m_path = session->flowRunHighlight.observe([this] { noteSteps(); });
    }

    // To be called at the end of a run.
    void finish() {
        if (!m_isTerminal && (*m_session->lastFlowRunOutcome)->errorMessage) {
            for (const FlowConsoleLine& line : *m_session->flowConsoleLines) {
                if (isSaid(line)) {
                    note(line.text);
                }
            }
        }
        m_session.runtime().progress().clear();
    }

  private:
    // The lines at both ends are told otherwise.
    static bool isSaid(const FlowConsoleLine& line) {
        return line.kind == FlowConsoleLine::Kind::output ||
               (line.kind == FlowConsoleLine::Kind::failure &&
                !line.text.starts_with("Failed after "));
    }
    void note(const std::string& text) {
        m_session.runtime().progress().clear();
        std::cerr << text << "\n";
    }
    void showPhase() {
        if (*m_session->flowRunPhase) {
            m_session.runtime().progress().show(**m_session->flowRunPhase);
        }
    }
    void noteLines() {
        if (!m_isTerminal) {
            return;
        }
        const auto& lines = *m_session->flowConsoleLines;
        const auto last = std::find_if(lines.rbegin(), lines.rend(),
                                       [this](const auto& line) { return line.id == m_lastLine; });
        for (auto line = last.base(); line != lines.end(); ++line) {
            if (line->kind == FlowConsoleLine::Kind::step) {
                note("▸ " + line->text);
            } else if (isSaid(*line)) {
                note(line->text);
            }
        }
        m_lastLine = lines.empty() ? Uuid() : lines.back().id;
        showPhase();
    }
    void noteSteps() {
        const auto& highlight = *m_session->flowRunHighlight;
        if (!m_isTerminal || !highlight) {
            return;
        }
        const auto& visited = highlight->visitedNodeIDs;
        m_steps = std::min(m_steps, visited.size()); // A new turn begins from Start.
        for (; m_steps < visited.size(); ++m_steps) {
            const Flow* flow = m_session->flow(highlight->flowID);
            const FlowNode* node = flow ? flow->node(visited[m_steps]) : nullptr;
            note("  " + std::to_string(m_steps + 1) + " " +
                 (node ? nodeName(*m_session, *node) : std::string()));
        }
        showPhase();
    }

    Session& m_session;
    bool m_isTerminal;
    Uuid m_lastLine;
    std::size_t m_steps = 0;
    Subscription m_console;
    Subscription m_phase;
    Subscription m_path;
};

void refuseOtherKind(const Flow& flow, FlowKind wanted) {
    if (flow.kind != wanted) {
        throw Failure{"“" + flow.name + "” is a flow of the kind “" +
                      std::string(rawValue(flow.kind)) + "”: use `ombrel flow " +
                      (wanted == FlowKind::singleShot ? "chat" : "run") + "`."};
    }
}

void refuseErrors(const AppState& state, Uuid id) {
    if (!canRunFlow(state, id)) {
        throw Failure{"“" + state.flow(id)->name +
                      "” has errors. `ombrel flow validate` lists them."};
    }
}

// Runs the task to its end, or until Ctrl-C, which ends everything that the run started.
void carryOut(Session& session, Task<void> task) {
    if (!session.runtime().run(std::move(task))) {
        throw Failure{"Stopped."};
    }
}

void setField(AppState& state, const Flow& flow, const std::string& name, std::string value) {
    const bool isThere = std::ranges::any_of(
        flow.startInput, [&](const AgentProperty& field) { return field.name == name; });
    if (!isThere) {
        std::string known;
        for (const AgentProperty& field : flow.startInput) {
            known += (known.empty() ? "" : ", ") + field.name;
        }
        throw Failure{"“" + flow.name + "” has no input field “" + name + "”" +
                          (known.empty() ? "." : ", but: " + known + "."),
                      true};
    }
    (*state.flowSampleInputValues.edit())[name] = std::move(value);
}

void setInput(AppState& state, const Flow& flow, const Arguments& arguments) {
    for (const std::string& given : arguments.input) {
        const std::size_t mark = given.find('=');
        if (mark == std::string::npos) {
            throw Failure{"“" + given + "” is not of the form NAME=VALUE.", true};
        }
        setField(state, flow, given.substr(0, mark), argumentText(given.substr(mark + 1)));
    }
    if (!arguments.inputJson) {
        return;
    }
    const auto content = GeneratedContent::parse(argumentText(*arguments.inputJson));
    const auto* fields =
        content ? std::get_if<GeneratedContent::Structure>(&content->kind) : nullptr;
    if (!fields) {
        throw Failure{"The input is not a JSON object" +
                          (content ? std::string(".") : ": " + content.error().message),
                      true};
    }
    for (const auto& [name, value] : *fields) {
        const auto* text = std::get_if<std::string>(&value.kind);
        setField(state, flow, name, text ? *text : value.text());
    }
}

void run(Session& session, Uuid id, const Arguments& arguments, const Invocation& invocation) {
    const Flow flow = *session->flow(id);
    refuseOtherKind(flow, FlowKind::singleShot);
    refuseErrors(*session, id);
    setInput(*session, flow, arguments);
    LiveRunOutput live(session);
    carryOut(session, runFlow(session.state(), id));
    live.finish();
    const FlowRunOutcome& outcome = **session->lastFlowRunOutcome;
    const FlowRunHighlight& highlight = **session->flowRunHighlight;
    if (invocation.json) {
        invocation.printJson(encodeJson(RunReport{outcome, HighlightReport(highlight)}));
    } else {
        if (!highlight.visitedNodeIDs.empty()) {
            invocation.note(highlightText(*session, highlight));
        }
        if (const auto& line = outcome.resultLine) {
            invocation.print(shownResult(*line) + "\n");
        }
    }
    if (outcome.errorMessage) {
        throw Failure{*outcome.errorMessage};
    }
}

// Sends one message; its reply, or nothing when the run failed.
std::optional<std::string> reply(Session& session, Uuid id, std::string message) {
    LiveRunOutput live(session);
    carryOut(session, sendFlowMessage(session.state(), id, std::move(message)));
    live.finish();
    return chatTurns(*session, id).back().reply;
}

std::optional<std::string> typedLine() {
    if (isatty(STDIN_FILENO) == 1 && isatty(STDERR_FILENO) == 1) {
        std::cerr << "> " << std::flush;
    }
    std::string line;
    return std::getline(std::cin, line) ? std::optional(std::move(line)) : std::nullopt;
}

// The messages of a chat, one after the other: those of the arguments, or the lines that are typed.
class Messages {
  public:
    explicit Messages(const std::vector<std::string>& given)
        : m_given(given), m_isTyped(given.empty()) {}

    std::optional<std::string> next() {
        if (m_isTyped) {
            return typedLine();
        }
        return m_next < m_given.size() ? std::optional(argumentText(m_given[m_next++]))
                                       : std::nullopt;
    }

  private:
    const std::vector<std::string>& m_given;
    bool m_isTyped;
    std::size_t m_next = 0;
};

ChatReport chatReport(const AppState& state, std::vector<TurnReport> turns) {
    ChatReport report;
    report.turns = std::move(turns);
    report.outcome = *state.lastFlowRunOutcome;
    if (*state.flowRunHighlight) {
        report.highlight = HighlightReport(**state.flowRunHighlight);
    }
    return report;
}

void chat(Session& session, Uuid id, const Arguments& arguments, const Invocation& invocation) {
    refuseOtherKind(*session->flow(id), FlowKind::conversational);
    refuseErrors(*session, id);
    std::vector<TurnReport> turns;
    std::optional<std::string> problem;
    Messages messages(arguments.messages);
    for (auto message = messages.next(); message; message = messages.next()) {
        if (!canSend(*session, id, *message)) {
            continue; // It is blank.
        }
        turns.push_back({*message, reply(session, id, *message)});
        problem = (*session->lastFlowRunOutcome)->errorMessage;
        if (problem) {
            invocation.note(*problem);
        } else if (!invocation.json) {
            invocation.print(turns.back().reply.value_or("") + "\n");
            std::cout.flush();
        }
    }
    if (invocation.json) {
        invocation.printJson(encodeJson(chatReport(*session, std::move(turns))));
    }
    if (problem) {
        throw Failure{"The last message has no reply."};
    }
}

Task<void> keep(Task<ExportOutcome> exporting, std::shared_ptr<ExportOutcome> place) {
    *place = co_await std::move(exporting);
}

void exportAll(Session& session, const Arguments& arguments, const Invocation& invocation) {
    FlowExport what;
    what.destination = fs::absolute(arguments.destination);
    what.name = arguments.packageName.empty() ? FlowExport::packageName(session->project->name)
                                              : arguments.packageName;
    what.flows = *session->flows;
    what.agents = *session->agents;
    what.tools = *session->tools;
    what.ragIndexes = *session->ragIndexes;
    const fs::path package = what.destination / what.name;
    session.runtime().progress().show("Exporting " + what.name + "…");
    const auto outcome = std::make_shared<ExportOutcome>();
    const Platform& platform = session.runtime().platform();
    carryOut(session, keep(exportFlows(platform.executor, std::move(what)), outcome));
    if (invocation.json) {
        invocation.printJson(encodeJson(*outcome));
    } else if (outcome->isSuccess) {
        invocation.print(outcome->message + "\n" + package.string() + "\n");
    }
    if (!outcome->isSuccess) {
        if (!invocation.json && !outcome->rawOutput.empty()) {
            invocation.note(outcome->rawOutput);
        }
        throw Failure{outcome->message};
    }
}

} // namespace

void addFlowRunCommands(const FlowCommand& flows) {
    const auto arguments = std::make_shared<Arguments>();
    const Invocation& invocation = *flows.invocation;

    auto* runCommand =
        flows.add("run", "Run a flow: its result; with --json outcome, trace and highlight",
                  [arguments, &invocation](Session& session, Uuid id) {
                      run(session, id, *arguments, invocation);
                  });
    runCommand->footer("The Swift code of the flow is generated, compiled and run on the on-device "
                       "model.\nExample:\n  ombrel flow shop.ombrel run Support --input "
                       "request=\"Where is my parcel?\"");
    runCommand
        ->add_option("--input", arguments->input,
                     std::string("The value of an input field, NAME=VALUE; repeat it for more") +
                         argumentTextHelp)
        ->allow_extra_args(false);
    runCommand->add_option("--input-json", arguments->inputJson,
                           std::string("The values of several, as a JSON object") +
                               argumentTextHelp);

    auto* chatCommand = flows.add("chat", "Talk with a conversational flow",
                                  [arguments, &invocation](Session& session, Uuid id) {
                                      chat(session, id, *arguments, invocation);
                                  });
    chatCommand->footer("Example:\n  ombrel flow shop.ombrel chat Helpdesk --message \"Hello\" "
                        "--message \"And on Sundays?\"");
    chatCommand
        ->add_option("--message", arguments->messages,
                     std::string("A message; repeat it for more. Without any, every line of "
                                 "standard input is one") +
                         argumentTextHelp)
        ->allow_extra_args(false);

    auto* exportCommand = flows.app->add_subcommand(
        "export", "Write one Swift package of all flows without errors into a folder");
    exportCommand
        ->add_option("DESTINATION", arguments->destination,
                     "The folder that gets the package's folder")
        ->required();
    exportCommand->add_option("--name", arguments->packageName,
                              "The package's name, instead of the project's");
    exportCommand->callback([flows, arguments] {
        Session session(flows.options->project, *flows.invocation);
        exportAll(session, *arguments, *flows.invocation);
    });
}

} // namespace ombrel

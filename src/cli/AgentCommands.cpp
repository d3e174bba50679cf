#include "agents/AgentEvaluation.h"
#include "agents/AgentInstructionRefiner.h"
#include "agents/AgentRunner.h"
#include "cli/AgentReports.h"
#include "cli/ArgumentText.h"
#include "cli/FieldArgument.h"
#include "cli/FindNamed.h"
#include "cli/OutputOptions.h"
#include "cli/Session.h"
#include "core/JsonEncoder.h"
#include "platform/Text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <functional>
#include <utility>

namespace ombrel {

namespace {

Uuid findAgent(const AppState& state, const std::string& nameOrID) {
    return findNamed(*state.agents, nameOrID, "agent");
}

// The RAG index with the name or id; the id of one that is gone will do while it is attached.
Uuid findAttachedIndex(const AppState& state, const Agent& agent, const std::string& nameOrID) {
    const std::optional<Uuid> id = Uuid::parse(nameOrID);
    const bool isGone =
        id && !state.ragIndex(*id) &&
        std::ranges::find(agent.ragAttachments, *id, &AgentRAGAttachment::ragIndexID) !=
            agent.ragAttachments.end();
    return isGone ? *id : findRAGIndex(state, nameOrID);
}

struct SetOptions {
    std::optional<std::string> name;
    std::optional<std::string> summary;
    std::optional<std::string> instructions;
    std::vector<std::string> input;
    bool hasNoInput = false;
    OutputOptions output;
    std::vector<std::string> contextFields;
    std::vector<std::string> droppedContextFields;
    std::vector<std::string> tools;
    std::vector<std::string> droppedTools;
    std::vector<std::string> knowledge;
    std::vector<std::string> droppedKnowledge;
    std::optional<std::int64_t> topK;
    std::optional<double> threshold;
};

void setTools(AppState& state, Agent& agent, const SetOptions& options) {
    for (const std::string& name : options.droppedTools) {
        const std::optional<Uuid> id = Uuid::parse(name);
        const bool isKnown = id && std::ranges::find(agent.toolIDs, *id) != agent.toolIDs.end();
        std::erase(agent.toolIDs, isKnown ? *id : findNamed(*state.tools, name, "tool"));
    }
    for (const std::string& name : options.tools) {
        const Uuid id = findNamed(*state.tools, name, "tool");
        if (std::ranges::find(agent.toolIDs, id) == agent.toolIDs.end()) {
            agent.toolIDs.push_back(id);
        }
    }
}

void setKnowledge(AppState& state, Uuid agentID, const SetOptions& options) {
    if (options.threshold && !std::isfinite(*options.threshold)) {
        throw Failure{"A threshold is a finite number.", true};
    }
    for (const std::string& name : options.droppedKnowledge) {
        state.setRAGAttached(agentID, findAttachedIndex(state, *state.agent(agentID), name), false);
    }
    for (const std::string& name : options.knowledge) {
        const Uuid index = findRAGIndex(state, name);
        state.setRAGAttached(agentID, index, true);
        if (options.topK) {
            state.setRAGTopK(agentID, index, *options.topK);
        }
        if (options.threshold) {
            state.setRAGThreshold(agentID, index, *options.threshold);
        }
    }
}

void setAgent(AppState& state, Uuid id, const SetOptions& options, const Invocation& invocation) {
    Agent agent = *state.agent(id);
    agent.name = options.name.value_or(agent.name);
    agent.summary = options.summary.value_or(agent.summary);
    if (options.instructions) {
        agent.instructions = argumentText(*options.instructions);
    }
    if (options.hasNoInput || !options.input.empty()) {
        agent.input = parseFields(options.input);
    }
    if (auto output = options.output.read(invocation)) {
        agent.output = std::move(*output);
    }
    setTools(state, agent, options);
    state.updateAgent(agent);
    for (const std::string& name : options.droppedContextFields) {
        state.removeContextFieldName(id, name);
    }
    for (const std::string& name : options.contextFields) {
        if (!state.addContextFieldName(id, name)) {
            throw Failure{"A context field needs a name.", true};
        }
    }
    setKnowledge(state, id, options);
}

// The texts of a case's expectation as typed: a case's name, or "PROPERTY=VALUE" for each property.
void setExpectations(AppState& state, const Agent& agent, Uuid caseID,
                     const std::vector<std::string>& expected) {
    const auto refuse = [](const std::string& what, std::vector<std::string> known) {
        std::erase(known, ""); // which stands for no expectation
        throw Failure{what + " There are: " + join(known, ", ") + ".", true};
    };
    if (agent.output.kind() == AgentOutputKind::Kind::enumeration) {
        const auto choices = expectedEnumChoices(agent);
        if (std::ranges::find(choices, expected.back()) == choices.end()) {
            refuse("“" + expected.back() + "” is no case of the output.", choices);
        }
        setExpectedEnumCase(state, agent.id, caseID, expected.back());
        return;
    }
    const auto fields = expectedFields(agent, {});
    if (fields.empty()) {
        throw Failure{"Plain text can't be judged: only an agent with cases or properties as "
                      "output can be held to an expectation.",
                      true};
    }
    for (const std::string& text : expected) {
        if (text.empty()) { // nothing at all, not even of properties that are gone
            const auto stored =
                findByID(state.agent(agent.id)->evaluationCases, caseID)->expectedObjectFields;
            for (const auto& [name, value] : stored) {
                setExpectedObjectField(state, agent.id, caseID, name, "");
            }
            continue;
        }
        const std::size_t equals = text.find('=');
        const std::string name = text.substr(0, equals);
        const auto field = std::ranges::find(fields, name, &ExpectedField::name);
        if (equals == std::string::npos || field == fields.end()) {
            std::vector<std::string> known;
            for (const ExpectedField& each : fields) {
                known.push_back(each.name);
            }
            refuse("“" + text + "” isn't of the form PROPERTY=VALUE.", known);
        }
        const std::string value = text.substr(equals + 1);
        if (field->choices && !value.empty() &&
            std::ranges::find(*field->choices, value) == field->choices->end()) {
            refuse("“" + text + "” is no value of that property.", *field->choices);
        }
        setExpectedObjectField(state, agent.id, caseID, name, value);
    }
}

// The case by its number in the list, from 1, or its id.
Uuid findCase(const Agent& agent, const std::string& numberOrID) {
    if (const auto id = Uuid::parse(numberOrID); id && findByID(agent.evaluationCases, *id)) {
        return *id;
    }
    std::size_t number = 0;
    const char* end = numberOrID.data() + numberOrID.size();
    const auto [stop, error] = std::from_chars(numberOrID.data(), end, number);
    if (error != std::errc{} || stop != end || number < 1 ||
        number > agent.evaluationCases.size()) {
        throw Failure{"“" + agent.name + "” has no case “" + numberOrID + "”: it has " +
                      counted(agent.evaluationCases.size(), "case") + "."};
    }
    return agent.evaluationCases[number - 1].id;
}

Task<void> runInto(Platform platform, Agent agent, std::vector<RAGIndex> ragIndexes,
                   std::string input, AgentRunResult& result) {
    auto running = runAgent(platform, agent, ragIndexes, input);
    result = co_await std::move(running);
}

void run(Session& session, Uuid id, const std::string& input, const Invocation& invocation) {
    if (!canRunAgent(input, false)) {
        throw Failure{"The input is empty.", true};
    }
    AgentRunResult result;
    session.runtime().progress().show("Running the agent\u2026");
    if (!session.runtime().run(runInto(session->platform(), *session->agent(id),
                                       *session->ragIndexes, input, result))) {
        throw Failure{"Stopped."};
    }
    if (!result.isError || invocation.json) {
        printRun(result, invocation);
    }
    if (result.isError) {
        throw Failure{result.outputText};
    }
}

Task<void> refineInto(std::shared_ptr<OnDeviceModel> model, Agent agent,
                      Result<AgentInstructionRefiner::Result>& result) {
    auto refining = AgentInstructionRefiner::refine(model, agent);
    result = co_await std::move(refining);
}

void refine(Session& session, Uuid id, bool isApplied, const Invocation& invocation) {
    Agent agent = *session->agent(id);
    if (!canRefineInstructions(agent)) {
        throw Failure{"“" + agent.name + "” has no instructions to refine."};
    }
    Result<AgentInstructionRefiner::Result> result;
    session.runtime().progress().show("Refining the instructions\u2026");
    if (!session.runtime().run(refineInto(session->platform().model, agent, result))) {
        throw Failure{"Stopped."};
    }
    if (!result) {
        throw Failure{result.error().message};
    }
    if (isApplied) {
        agent.instructions = result->instructions;
        session->updateAgent(agent);
        session.save();
    }
    if (invocation.json) {
        invocation.printJson(encodeJson(*result));
        return;
    }
    invocation.print("SUGGESTED REWRITE\n" + indented(result->instructions) + "\n" +
                     indented(result->summary));
    invocation.note(isApplied ? "\nThe agent now has these instructions."
                              : "\nNothing is changed: --apply takes the rewrite.");
}

Task<void> runCases(std::shared_ptr<AppState> state, Uuid agentID,
                    std::vector<AgentEvaluationCase> cases, std::shared_ptr<RunningCases> running) {
    for (const AgentEvaluationCase& evaluationCase : cases) {
        Task<void> run = runCase(state, agentID, evaluationCase, running);
        co_await std::move(run);
    }
}

void evaluate(Session& session, Uuid id, const std::vector<std::string>& numbers,
              const Invocation& invocation) {
    const Agent before = *session->agent(id);
    std::vector<AgentEvaluationCase> chosen;
    for (const std::string& number : numbers) {
        chosen.push_back(*findByID(before.evaluationCases, findCase(before, number)));
    }
    if (numbers.empty()) {
        chosen = before.evaluationCases;
    }
    if (chosen.empty()) {
        throw Failure{"No test inputs yet: `ombrel agent PROJECT cases AGENT add INPUT` adds one."};
    }
    const ModelAvailability availability = session->platform().model->availability();
    if (!availability.isAvailable()) {
        throw Failure{"On-device model unavailable (" + *availability.unavailableReason +
                      "). No case was run."};
    }
    const auto running = std::make_shared<RunningCases>();
    const Subscription subscription = running->observe([&] {
        session.runtime().progress().show("Running cases \u2014 " +
                                          std::to_string((*running)->size()) + " to go");
    });
    session.run(numbers.empty() ? runAllCases(session.state(), id, running)
                                : runCases(session.state(), id, chosen, running));
    session.save();
    const Agent& after = *session->agent(id);
    CaseResults results;
    for (const AgentEvaluationCase& evaluationCase : chosen) {
        results.evaluationCases.push_back(*findByID(after.evaluationCases, evaluationCase.id));
        const std::optional<bool> verdict = results.evaluationCases.back().lastPassed;
        ++(!verdict ? results.unjudged : *verdict ? results.passed : results.failed);
    }
    printResults(after, results, invocation);
    if (results.failed > 0) {
        throw Failure{counted(static_cast<std::size_t>(results.failed), "case") + " of “" +
                      after.name + "” failed."};
    }
}

// What the arguments of `ombrel agent` say.
struct Options {
    std::string project;
    std::string agent;
    std::string name;
    std::string input;
    std::string caseNumber;
    std::vector<std::string> cases;
    std::vector<std::string> expected;
    bool isApplied = false;
    SetOptions set;
};

// `ombrel agent`, while its subcommands are added.
struct AgentCommand {
    CLI::App* app;
    std::shared_ptr<Options> options;
    Invocation* invocation;

    // A subcommand with the argument AGENT, which does the action to that agent of the project.
    CLI::App* add(const std::string& name, const std::string& description,
                  std::function<void(Session& session, Uuid agentID)> action) const {
        CLI::App* command = app->add_subcommand(name, description);
        command->add_option("AGENT", options->agent, "The agent's name or id")->required();
        command->callback([given = options, chosen = invocation, action] {
            Session session(given->project, *chosen);
            action(session, findAgent(*session, given->agent));
        });
        return command;
    }
    // The same for an action that changes the agent, which is then saved and shown.
    CLI::App* addChange(const std::string& name, const std::string& description,
                        std::function<void(AppState& state, Uuid agentID)> change) const {
        return add(name, description, [change, chosen = invocation](Session& session, Uuid id) {
            change(*session, id);
            session.save();
            printAgent(*session, id, *chosen);
        });
    }
};

void addListCommands(const AgentCommand& agents) {
    const auto options = agents.options;
    Invocation& invocation = *agents.invocation;
    agents.app->add_subcommand("list", "List the agents (the default)");
    agents.add("show", "Show an agent",
               [&invocation](Session& session, Uuid id) { printAgent(*session, id, invocation); });
    auto* add = agents.app->add_subcommand("add", "Add an agent");
    add->add_option("NAME", options->name, "Its name");
    add->callback([options, &invocation] {
        Session session(options->project, invocation);
        Agent agent = session->addAgent();
        if (!options->name.empty()) {
            agent.name = options->name;
            session->updateAgent(agent);
        }
        session.save();
        printAgent(*session, agent.id, invocation);
    });
    auto* rename = agents.addChange("rename", "Give an agent another name",
                                    [options](AppState& state, Uuid id) {
                                        Agent agent = *state.agent(id);
                                        agent.name = options->name;
                                        state.updateAgent(agent);
                                    });
    rename->add_option("NEW", options->name, "The new name")->required();
    agents.add("duplicate", "Copy an agent", [&invocation](Session& session, Uuid id) {
        const Uuid copy = session->duplicateAgent(id)->id;
        session.save();
        printAgent(*session, copy, invocation);
    });
    agents.add("remove", "Remove an agent; flows that name it keep its place",
               [&invocation](Session& session, Uuid id) {
                   session->deleteAgent(id);
                   session.save();
                   printAgents(*session, invocation);
               });
}

void addSetCommand(const AgentCommand& agents) {
    const auto options = agents.options;
    Invocation& invocation = *agents.invocation;
    CLI::App* set = agents.addChange("set", "Change an agent",
                                     [options, &invocation](AppState& state, Uuid id) {
                                         setAgent(state, id, options->set, invocation);
                                     });
    set->footer(std::string(fieldTypesHelp) +
                "\nExample:\n"
                "  ombrel agent handbook.ombrel set Triage --instructions @triage.txt \\\n"
                "    --input \"ticket=What the customer wrote\" \\\n"
                "    --output-case bug --output-case question --knowledge Manuals --top-k 3");
    SetOptions& values = options->set;
    set->add_option("--name", values.name, "Its name");
    set->add_option("--summary", values.summary, "Its one-line summary");
    set->add_option("--instructions", values.instructions,
                    std::string("Its instructions") + argumentTextHelp);
    const auto many = [&](const char* flag, std::vector<std::string>& list,
                          const std::string& description) {
        return set->add_option(flag, list, description + "; repeat it for more")
            ->allow_extra_args(false);
    };
    auto* input = many("--input", values.input,
                       "An input field, " + std::string(fieldSyntax) +
                           ". All that are given replace all that were there");
    set->add_flag("--no-input", values.hasNoInput, "Take no input")->excludes(input);
    values.output.addTo(*set);
    many("--context", values.contextFields, "Read this flow-context field");
    many("--no-context", values.droppedContextFields, "No longer read this flow-context field");
    many("--tool", values.tools, "Let the model call this tool");
    many("--no-tool", values.droppedTools, "No longer let it call this tool");
    auto* knowledge = many("--knowledge", values.knowledge, "Attach this RAG index");
    many("--no-knowledge", values.droppedKnowledge, "Detach this RAG index");
    set->add_option("--top-k", values.topK, "How many hits each --knowledge gives; 5 at first")
        ->check(CLI::Range(std::int64_t{1}, std::int64_t{20}))
        ->needs(knowledge);
    set->add_option("--threshold", values.threshold,
                    "The least score of a hit of each --knowledge; 0 at first")
        ->needs(knowledge);
}

void addCasesCommand(const AgentCommand& agents) {
    const auto options = agents.options;
    Invocation& invocation = *agents.invocation;
    constexpr const char* expectHelp =
        "What the answer must contain: a case's name, or PROPERTY=VALUE for each property";
    const std::string inputHelp = std::string("The sample input") + argumentTextHelp;
    // The actions are known only when the subcommands are.
    const auto action = std::make_shared<std::function<bool(AppState&, const Agent&)>>();
    CLI::App* cases = agents.add("cases", "List, add, change and remove evaluation cases",
                                 [action, &invocation](Session& session, Uuid id) {
                                     const Agent agent = *session->agent(id);
                                     if ((*action)(*session, agent)) {
                                         session.save();
                                     }
                                     printCases(*session->agent(id), invocation);
                                 });
    cases->footer("Example:\n  ombrel agent handbook.ombrel cases Triage add \"It crashes.\" "
                  "--expect bug");
    cases->require_subcommand(0, 1);
    cases->add_subcommand("list", "List the cases with their last results (the default)");
    auto* add = cases->add_subcommand("add", "Add a case");
    add->add_option("INPUT", options->input, inputHelp)->required();
    add->add_option("--expect", options->expected, std::string(expectHelp) + "; repeat it for more")
        ->allow_extra_args(false);
    const auto withNumber = [&](const char* name, const char* description) {
        auto* command = cases->add_subcommand(name, description);
        command->add_option("CASE", options->caseNumber, "The case's number in the list, or its id")
            ->required();
        return command;
    };
    auto* expect = withNumber("expect", "Change what is expected; \"\" expects nothing");
    expect->add_option("EXPECTED", options->expected, expectHelp)->required();
    auto* input = withNumber("input", "Change the sample input");
    input->add_option("INPUT", options->input, inputHelp)->required();
    auto* remove = withNumber("remove", "Remove a case");
    *action = [=](AppState& state, const Agent& agent) {
        if (*add) {
            const Uuid added = *addCase(state, agent.id);
            setCaseInput(state, agent.id, added, argumentText(options->input));
            if (!options->expected.empty()) {
                setExpectations(state, agent, added, options->expected);
            }
        } else if (*expect) {
            setExpectations(state, agent, findCase(agent, options->caseNumber), options->expected);
        } else if (*input) {
            setCaseInput(state, agent.id, findCase(agent, options->caseNumber),
                         argumentText(options->input));
        } else if (*remove) {
            removeCase(state, agent.id, findCase(agent, options->caseNumber));
        } else {
            return false;
        }
        return true;
    };
}

void addModelCommands(const AgentCommand& agents) {
    const auto options = agents.options;
    Invocation& invocation = *agents.invocation;
    auto* run = agents.add("run", "Try an agent on an input",
                           [options, &invocation](Session& session, Uuid id) {
                               ombrel::run(session, id, argumentText(options->input), invocation);
                           });
    run->add_option("INPUT", options->input, std::string("The input") + argumentTextHelp)
        ->required();
    auto* evaluate = agents.add("evaluate", "Run an agent's cases; fails when one of them fails",
                                [options, &invocation](Session& session, Uuid id) {
                                    ombrel::evaluate(session, id, options->cases, invocation);
                                });
    evaluate->add_option("CASE", options->cases,
                         "Only the cases with these numbers or ids; all by default");
    auto* refine = agents.add("refine", "Let the model rewrite an agent's instructions",
                              [options, &invocation](Session& session, Uuid id) {
                                  ombrel::refine(session, id, options->isApplied, invocation);
                              });
    refine->add_flag("--apply", options->isApplied, "Take the rewrite");
    agents.add("example", "Show what an agent's output looks like",
               [&invocation](Session& session, Uuid id) {
                   printExample(session->agent(id)->output, invocation);
               });
}

} // namespace

void addAgentCommands(CLI::App& app, Invocation& invocation) {
    const AgentCommand agents{
        addCommand(app, "agent", "List, make, change, try and evaluate agents",
                   "ombrel agent handbook.ombrel add Triage\n"
                   "  ombrel agent handbook.ombrel set Triage --output-generable Ticket.swift\n"
                   "  ombrel agent handbook.ombrel run Triage \"It crashes when I save.\"",
                   invocation),
        std::make_shared<Options>(), &invocation};
    agents.app->add_option("PROJECT", agents.options->project, "The project file")->required();
    agents.app->require_subcommand(0, 1);
    agents.app->fallthrough();
    addListCommands(agents);
    addSetCommand(agents);
    addCasesCommand(agents);
    addModelCommands(agents);
    agents.app->callback([agents] {
        const auto chosen = agents.app->get_subcommands();
        if (chosen.empty() || chosen.front()->get_name() == "list") {
            const Session session(agents.options->project, *agents.invocation);
            printAgents(*session, *agents.invocation);
        }
    });
}

} // namespace ombrel

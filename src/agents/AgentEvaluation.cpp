#include "agents/AgentEvaluation.h"

#include "agents/AgentRunner.h"
#include "platform/CaseInsensitiveSearch.h"
#include "platform/Completion.h"
#include "platform/GeneratedContent.h"
#include "platform/MainExecutor.h"
#include "platform/Text.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <utility>

namespace ombrel {

namespace {

bool isBlank(std::string_view text) {
    return trimWhitespacesAndNewlines(text).empty();
}

// The text as it stands between the quotes of a JSON string.
std::string inJson(std::string_view text) {
    const std::string quoted = GeneratedContent{std::string(text)}.text();
    return quoted.substr(1, quoted.size() - 2);
}

// Writes to the first case with the id, and schedules a checkpoint.
template <class Write>
void editCase(AppState& state, Uuid agentID, Uuid caseID, Write write) {
    const Agent* current = state.agent(agentID);
    if (!current || !findByID(current->evaluationCases, caseID)) {
        return;
    }
    Agent edited = *current;
    write(*findByID(edited.evaluationCases, caseID));
    state.updateAgent(edited);
}

Task<void> runSnapshot(std::shared_ptr<AppState> state, Agent agent,
                       AgentEvaluationCase evaluationCase,
                       std::shared_ptr<RunningCases> runningCaseIDs) {
    const Platform platform = state->platform();
    auto running = runAgent(platform, agent, *state->ragIndexes, evaluationCase.input);
    const AgentRunResult result = co_await std::move(running);
    const std::optional<bool> verdict = judge(agent, evaluationCase, result.outputText);
    editCase(*state, agent.id, evaluationCase.id, [&](AgentEvaluationCase& stored) {
        stored.lastOutput = result.outputText;
        stored.lastPassed = verdict;
    });
    runningCaseIDs->edit()->erase(evaluationCase.id);
}

Task<void> doNothing() {
    co_return;
}

Task<void> tellTheEnd(Task<void> task, std::function<void()> ended) {
    co_await std::move(task);
    ended();
}

// Runs the tasks side by side; ends with the last.
Task<void> runTogether(std::shared_ptr<MainExecutor> executor, std::vector<Task<void>> tasks) {
    if (tasks.empty()) {
        co_return;
    }
    Completion<bool> allEnded(executor);
    const auto countDown = [left = std::make_shared<std::size_t>(tasks.size()),
                            fulfil = allEnded.fulfiller()] {
        if (--*left == 0) {
            fulfil(true);
        }
    };
    for (Task<void>& task : tasks) {
        executor->spawn(tellTheEnd(std::move(task), countDown));
    }
    co_await allEnded;
}

} // namespace

std::optional<bool> judge(const Agent& agent, const AgentEvaluationCase& evaluationCase,
                          std::string_view outputText) {
    std::vector<std::string_view> expected;
    const bool isObject = agent.output.kind() == AgentOutputKind::Kind::object;
    switch (agent.output.kind()) {
    case AgentOutputKind::Kind::text:
        break;
    case AgentOutputKind::Kind::enumeration:
        if (!evaluationCase.expectedEnumCase.empty()) {
            expected.push_back(evaluationCase.expectedEnumCase);
        }
        break;
    case AgentOutputKind::Kind::object:
        for (const auto& [name, value] : evaluationCase.expectedObjectFields) {
            if (!isBlank(value)) {
                expected.push_back(value);
            }
        }
        break;
    }
    if (expected.empty()) {
        return std::nullopt;
    }
    return std::ranges::all_of(expected, [&](std::string_view each) {
        return containsIgnoringCase(outputText, each) ||
               (isObject && containsIgnoringCase(outputText, inJson(each)));
    });
}

bool canRunCase(const AgentEvaluationCase& evaluationCase, const std::set<Uuid>& runningCaseIDs) {
    return !runningCaseIDs.contains(evaluationCase.id) && !isBlank(evaluationCase.input);
}

bool canRunAllCases(const Agent& agent, const std::set<Uuid>& runningCaseIDs) {
    return runningCaseIDs.empty() && !agent.evaluationCases.empty();
}

Task<void> runCase(std::shared_ptr<AppState> state, Uuid agentID,
                   AgentEvaluationCase evaluationCase,
                   std::shared_ptr<RunningCases> runningCaseIDs) {
    const Agent* agent = state->agent(agentID);
    if (!agent) {
        return doNothing();
    }
    runningCaseIDs->edit()->insert(evaluationCase.id);
    Agent snapshot = *agent;
    return runSnapshot(std::move(state), std::move(snapshot), std::move(evaluationCase),
                       std::move(runningCaseIDs));
}

Task<void> runAllCases(std::shared_ptr<AppState> state, Uuid agentID,
                       std::shared_ptr<RunningCases> runningCaseIDs) {
    const Agent* agent = state->agent(agentID);
    if (!agent || !canRunAllCases(*agent, **runningCaseIDs)) {
        return doNothing();
    }
    const std::vector<AgentEvaluationCase> cases = agent->evaluationCases;
    std::vector<Task<void>> runs;
    for (const AgentEvaluationCase& each : cases) {
        runs.push_back(runCase(state, agentID, each, runningCaseIDs));
    }
    return runTogether(state->platform().executor, std::move(runs));
}

std::optional<Uuid> addCase(AppState& state, Uuid agentID) {
    const Agent* current = state.agent(agentID);
    if (!current) {
        return std::nullopt;
    }
    Agent edited = *current;
    const Uuid caseID = Uuid::random();
    edited.evaluationCases.emplace_back().id = caseID;
    state.updateAgent(edited);
    return caseID;
}

void removeCase(AppState& state, Uuid agentID, Uuid caseID) {
    const Agent* current = state.agent(agentID);
    if (!current || !findByID(current->evaluationCases, caseID)) {
        return;
    }
    Agent edited = *current;
    std::erase_if(edited.evaluationCases,
                  [&](const AgentEvaluationCase& each) { return each.id == caseID; });
    state.updateAgent(edited);
}

void setCaseInput(AppState& state, Uuid agentID, Uuid caseID, std::string input) {
    editCase(state, agentID, caseID,
             [&](AgentEvaluationCase& edited) { edited.input = std::move(input); });
}

void setExpectedEnumCase(AppState& state, Uuid agentID, Uuid caseID, std::string name) {
    editCase(state, agentID, caseID,
             [&](AgentEvaluationCase& edited) { edited.expectedEnumCase = std::move(name); });
}

void setExpectedObjectField(AppState& state, Uuid agentID, Uuid caseID, std::string name,
                            std::string value) {
    editCase(state, agentID, caseID, [&](AgentEvaluationCase& edited) {
        edited.expectedObjectFields[std::move(name)] = std::move(value);
    });
}

namespace {

std::vector<std::string> choicesOf(const std::vector<AgentEnumCase>& cases) {
    std::vector<std::string> choices{""};
    for (const AgentEnumCase& each : cases) {
        choices.push_back(each.name);
    }
    return choices;
}

} // namespace

std::vector<std::string> expectedEnumChoices(const Agent& agent) {
    const auto* enumeration = std::get_if<AgentOutputKind::Enumeration>(&agent.output.value);
    return enumeration ? choicesOf(enumeration->cases) : std::vector<std::string>();
}

std::vector<ExpectedField> expectedFields(const Agent& agent,
                                          const AgentEvaluationCase& evaluationCase) {
    std::vector<ExpectedField> fields;
    const auto* object = std::get_if<AgentOutputKind::Object>(&agent.output.value);
    if (!object) {
        return fields;
    }
    for (const AgentProperty& property : object->properties) {
        ExpectedField& field = fields.emplace_back();
        field.name = property.name;
        const auto stored = evaluationCase.expectedObjectFields.find(property.name);
        if (stored != evaluationCase.expectedObjectFields.end()) {
            field.value = stored->second;
        }
        const auto* enumeration = std::get_if<PropertyKind::Enumeration>(&property.kind.value);
        if (enumeration) {
            field.choices = choicesOf(enumeration->cases);
        } else if (std::holds_alternative<PropertyKind::Bool>(property.kind.value)) {
            field.choices = {"true", "false"};
        }
    }
    return fields;
}

std::string usageLine(const AppState& state, Uuid agentID) {
    const std::size_t count = state.flowNamesUsingAgent(agentID).size();
    if (count == 0) {
        return "Not used in any flow yet";
    }
    return "Used in " + std::to_string(count) + (count == 1 ? " flow" : " flows");
}

} // namespace ombrel

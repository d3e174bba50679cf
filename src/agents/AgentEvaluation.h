#pragma once

#include "core/Agent.h"
#include "core/AppState.h"
#include "core/Observed.h"
#include "platform/Task.h"
#include "platform/Uuid.h"

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

// An agent's fixed set of sample inputs: running and judging them, and editing what is expected.
// Main thread. What works on a workspace does nothing when the agent or the case is gone.
namespace ombrel {

// The ids of the cases that are being run. Whoever shows the cases holds it; a run that outlives
// its holder keeps it until it ends.
using RunningCases = Observed<std::set<Uuid>>;

// Whether an answer is what the case expects: it contains the expected texts, without regard to
// case, in the user's locale; of an object, as they are or as they stand in JSON. Nothing when
// there is nothing to judge.
std::optional<bool> judge(const Agent& agent, const AgentEvaluationCase& evaluationCase,
                          std::string_view outputText);

// Whether "Run this case" and "Run All" are enabled.
bool canRunCase(const AgentEvaluationCase& evaluationCase, const std::set<Uuid>& runningCaseIDs);
bool canRunAllCases(const Agent& agent, const std::set<Uuid>& runningCaseIDs);

// Runs the agent as it is now on the case's input, and writes output and verdict to the case that
// has the id at the end. The id stands in `runningCaseIDs` from the call on until then.
Task<void> runCase(std::shared_ptr<AppState> state, Uuid agentID,
                   AgentEvaluationCase evaluationCase,
                   std::shared_ptr<RunningCases> runningCaseIDs);
// Runs all cases of the agent side by side, those with a blank input too; ends with the last.
Task<void> runAllCases(std::shared_ptr<AppState> state, Uuid agentID,
                       std::shared_ptr<RunningCases> runningCaseIDs);

// Editing. The result of the last run stays with its case.

// The id of the new case, which stands at the end; nothing when there is no such agent.
std::optional<Uuid> addCase(AppState& state, Uuid agentID);
void removeCase(AppState& state, Uuid agentID, Uuid caseID);
void setCaseInput(AppState& state, Uuid agentID, Uuid caseID, std::string input);
void setExpectedEnumCase(AppState& state, Uuid agentID, Uuid caseID, std::string name);
void setExpectedObjectField(AppState& state, Uuid agentID, Uuid caseID, std::string name,
                            std::string value);

// What can be expected of an enumeration agent: no expectation, which is the empty text, and the
// names of its cases. Empty for other outputs.
std::vector<std::string> expectedEnumChoices(const Agent& agent);

// What can be expected of one property of an object.
struct ExpectedField {
    std::string name;
    std::string value; // empty: no expectation
    // What a menu offers, where the empty text is no expectation; absent where the text is free.
    std::optional<std::vector<std::string>> choices;
    bool operator==(const ExpectedField&) const = default;
};
// One for each property of an object agent, in order. Empty for other outputs.
std::vector<ExpectedField> expectedFields(const Agent& agent,
                                          const AgentEvaluationCase& evaluationCase);

// "Used in 2 flows".
std::string usageLine(const AppState& state, Uuid agentID);

} // namespace ombrel

#include "cli/AgentReports.h"

#include "agents/AgentEvaluation.h"
#include "agents/AgentTexts.h"
#include "agents/OutputDraft.h"
#include "agents/OutputExample.h"
#include "cli/OutputTable.h"
#include "cli/Terminal.h"
#include "core/JsonEncoder.h"
#include "core/TokenEstimate.h"
#include "platform/FixedPoint.h"
#include "platform/Text.h"

#include <algorithm>
#include <variant>

namespace ombrel {

namespace {

constexpr std::size_t inputWidth = 40; // characters of a case's texts in tables
constexpr std::size_t outputWidth = 60;
constexpr std::size_t valueWidth = 2000; // of a property's value in an answer

struct AgentList {
    std::vector<Agent> agents;
    static constexpr auto keys() { return std::tuple(required("agents", &AgentList::agents)); }
};

struct CaseList {
    std::vector<AgentEvaluationCase> evaluationCases;
    static constexpr auto keys() {
        return std::tuple(required("evaluationCases", &CaseList::evaluationCases));
    }
};

struct Example {
    std::string example;
    static constexpr auto keys() { return std::tuple(required("example", &Example::example)); }
};

// The name of the thing, or that it is gone.
template <class T>
std::string nameOf(const std::vector<T>& list, Uuid id) {
    const T* found = findByID(list, id);
    return found ? found->name : "(deleted) " + id.text();
}

// What a case expects, on one line.
std::string expectationText(const Agent& agent, const AgentEvaluationCase& evaluationCase) {
    if (agent.output.kind() == AgentOutputKind::Kind::enumeration) {
        return evaluationCase.expectedEnumCase;
    }
    std::vector<std::string> parts;
    if (agent.output.kind() == AgentOutputKind::Kind::object) {
        for (const auto& [name, value] : evaluationCase.expectedObjectFields) {
            if (!trimWhitespacesAndNewlines(value).empty()) {
                parts.push_back(name);
                parts.back().append("=").append(value);
            }
        }
    }
    return join(parts, ", ");
}

std::string verdictText(const AgentEvaluationCase& evaluationCase) {
    if (!evaluationCase.lastPassed) {
        return evaluationCase.lastOutput ? "no verdict" : "";
    }
    return *evaluationCase.lastPassed ? "\u2713 passed" : "\u2717 failed";
}

std::string caseTable(const Agent& agent, const std::vector<AgentEvaluationCase>& shown) {
    std::vector<std::vector<std::string>> rows;
    for (const AgentEvaluationCase& evaluationCase : shown) {
        const auto place =
            std::ranges::find(agent.evaluationCases, evaluationCase.id, &AgentEvaluationCase::id) -
            agent.evaluationCases.begin();
        rows.push_back({"  " + std::to_string(place + 1), oneLine(evaluationCase.input, inputWidth),
                        oneLine(expectationText(agent, evaluationCase), inputWidth),
                        verdictText(evaluationCase),
                        oneLine(evaluationCase.lastOutput.value_or(""), outputWidth)});
    }
    return table({"  #", "INPUT", "EXPECTED", "VERDICT", "LAST OUTPUT"}, rows);
}

std::string toolLines(const AppState& state, const Agent& agent) {
    std::string text;
    for (const Uuid& id : agent.toolIDs) {
        text += "  " + nameOf(*state.tools, id) + "\n";
    }
    return text;
}

std::string knowledgeTable(const AppState& state, const Agent& agent) {
    std::vector<std::vector<std::string>> rows;
    for (const AgentRAGAttachment& attachment : agent.ragAttachments) {
        rows.push_back({"  " + nameOf(*state.ragIndexes, attachment.ragIndexID),
                        std::to_string(attachment.topK), fixedPoint(attachment.threshold, 2)});
    }
    return table({"  RAG INDEX", "TOP-K", "THRESHOLD"}, rows);
}

// The value on one line: a case with its description.
std::string fieldText(const AgentOutputFieldValue& value) {
    const auto* enumCase = std::get_if<AgentOutputFieldValue::EnumCase>(&value.value);
    const bool isDescribed = enumCase && enumCase->description;
    return valueText(value) + (isDescribed ? " \u2014 " + *enumCase->description : "");
}

} // namespace

void printAgents(const AppState& state, const Invocation& invocation) {
    if (invocation.json) {
        invocation.printJson(encodeJson(AgentList{*state.agents}));
        return;
    }
    if (state.agents->empty()) {
        invocation.print("No agents yet: `ombrel agent PROJECT add NAME` adds one.\n");
        return;
    }
    std::vector<std::vector<std::string>> rows;
    for (const Agent& agent : *state.agents) {
        rows.push_back({agent.name, oneLine(agent.summary, inputWidth),
                        std::string(rawValue(agent.output.kind())),
                        std::to_string(agent.evaluationCases.size()), agent.id.text()});
    }
    invocation.print(table({"AGENT", "SUMMARY", "OUTPUT", "CASES", "ID"}, rows));
}

void printAgent(const AppState& state, Uuid id, const Invocation& invocation) {
    const Agent& agent = *state.agent(id);
    if (invocation.json) {
        invocation.printJson(encodeJson(agent));
        return;
    }
    std::string text = agent.name + "\n";
    text += agent.summary.empty() ? "" : indented(agent.summary);
    text += "  " + usageLine(state, id) + "\n  " + id.text() + "\n";
    text += "\nINSTRUCTIONS ~" + std::to_string(estimateTokens(agent.instructions)) + " tokens\n" +
            (agent.instructions.empty() ? "" : indented(agent.instructions));
    if (!agent.contextFieldNames.empty()) {
        text += "\nFLOW CONTEXT\n";
        for (const std::string& name : agent.contextFieldNames) {
            text += "  " + contextPlaceholder(name) + "\n";
        }
    }
    text +=
        "\nINPUT\n" + (agent.input.empty() ? "  No input fields yet\n" : fieldTable(agent.input));
    text += "\nOUTPUT\n" + outputTable(agent.output);
    if (!agent.toolIDs.empty()) {
        text += "\nTOOLS\n" + toolLines(state, agent);
    }
    if (!agent.ragAttachments.empty()) {
        text += "\nKNOWLEDGE (RAG)\n" + knowledgeTable(state, agent);
    }
    if (!agent.evaluationCases.empty()) {
        text += "\n" + std::string(evaluationCasesHeading) + "\n" +
                caseTable(agent, agent.evaluationCases);
    }
    invocation.print(text);
}

void printCases(const Agent& agent, const Invocation& invocation) {
    if (invocation.json) {
        invocation.printJson(encodeJson(CaseList{agent.evaluationCases}));
    } else if (agent.evaluationCases.empty()) {
        invocation.print(
            "No test inputs yet: `ombrel agent PROJECT cases AGENT add INPUT` adds one.\n");
    } else {
        invocation.print(caseTable(agent, agent.evaluationCases));
    }
}

void printRun(const AgentRunResult& result, const Invocation& invocation) {
    if (invocation.json) {
        invocation.printJson(encodeJson(result));
        return;
    }
    if (result.objectFields.empty()) {
        invocation.print(result.outputText + "\n");
    } else {
        std::vector<std::vector<std::string>> rows;
        for (const AgentOutputField& field : result.objectFields) {
            rows.push_back(
                {field.name, field.typeLabel, oneLine(fieldText(field.value), valueWidth)});
        }
        invocation.print(table({"Property", "Type", "Value"}, rows));
    }
    std::string text = "\n" + runStatusText(result) + "\n";
    if (!result.retrievedContext.empty()) {
        text += "\n" + std::string(retrievedContextHeading) + "\n";
    }
    for (const AgentRetrievedContext& context : result.retrievedContext) {
        text += context.ragIndexName + "\n";
        if (context.chunks.empty()) {
            text += "  " + std::string(noChunksText) + "\n";
            continue;
        }
        std::vector<std::vector<std::string>> rows;
        for (const RetrievedContextChunk& chunk : context.chunks) {
            rows.push_back({"  " + chunk.breadcrumb, fixedPoint(chunk.score, 2),
                            oneLine(chunk.text, outputWidth)});
        }
        text += table({"  BREADCRUMB", "SCORE", "TEXT"}, rows);
    }
    invocation.print(text);
}

void printResults(const Agent& agent, const CaseResults& results, const Invocation& invocation) {
    if (invocation.json) {
        invocation.printJson(encodeJson(results));
        return;
    }
    invocation.print(caseTable(agent, results.evaluationCases) + "\n" +
                     std::to_string(results.passed) + " passed, " + std::to_string(results.failed) +
                     " failed, " + std::to_string(results.unjudged) + " without a verdict\n");
}

void printExample(const AgentOutputKind& output, const Invocation& invocation) {
    const auto example = exampleJSON(output);
    if (!example) {
        throw Failure{"There is no example: " + std::string(*validationMessage(output))};
    }
    if (invocation.json) {
        invocation.printJson(encodeJson(Example{*example}));
    } else {
        invocation.print(*example + "\n");
    }
}

} // namespace ombrel

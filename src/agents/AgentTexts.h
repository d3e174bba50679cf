#pragma once

#include "agents/AgentRunResult.h"
#include "core/Agent.h"

#include <string>
#include <string_view>

// What the faces of the system say about an agent's runs and evaluation cases.
namespace ombrel {

inline constexpr std::string_view missingValueText = "\u2014";
inline constexpr std::string_view retrievedContextHeading = "CONTEXT SENT TO THE MODEL";
inline constexpr std::string_view noChunksText =
    "No chunks cleared this attachment's threshold \u2014 nothing from this index made it into the "
    "prompt.";
inline constexpr std::string_view evaluationCasesHeading = "EVALUATION CASES";
inline constexpr std::string_view evaluationCasesSubtitle =
    "a fixed set of sample inputs to run this agent against";
inline constexpr std::string_view noCasesText =
    "No test inputs yet \u2014 add one to try this agent against a fixed set of examples.";
inline constexpr std::string_view expectedOutputHeading = "EXPECTED OUTPUT";
inline constexpr std::string_view noExpectationText = "\u2014 no expectation \u2014";

inline constexpr std::string_view noContextFieldsText = "Add a Flow Context field below first";
inline constexpr std::string_view flowContextSubtitle =
    "Field names this agent reads \u2014 checked against a flow's real Flow Context schema once "
    "flows exist.";
inline constexpr std::string_view toolsSubtitle = "model decides when to call";
inline constexpr std::string_view noToolsText =
    "No tools yet \u2014 create one from the navigator.";
inline constexpr std::string_view noRagIndexesText =
    "No RAG indexes yet \u2014 create one from the navigator.";
inline constexpr std::string_view noInputFieldsText = "No input fields yet";

// The size of the instructions: "~12 tokens", and as the diagram says it "~12 instruction tokens".
std::string instructionTokensText(const Agent& agent);
std::string diagramTokensText(const Agent& agent);
// How much an attached index contributes: "top-5 chunks".
std::string attachmentText(const AgentRAGAttachment& attachment);

// Beside the button that ran the agent: "Failed", or the duration as "1.25s".
std::string runStatusText(const AgentRunResult& result);

// In the table of a structured answer: the text, the name of the case, or a dash.
std::string valueText(const AgentOutputFieldValue& value);

} // namespace ombrel

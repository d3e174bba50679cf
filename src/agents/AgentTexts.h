#pragma once

#include "agents/AgentRunResult.h"

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

// Beside the button that ran the agent: "Failed", or the duration as "1.25s".
std::string runStatusText(const AgentRunResult& result);

// In the table of a structured answer: the text, the name of the case, or a dash.
std::string valueText(const AgentOutputFieldValue& value);

} // namespace ombrel

#include "agents/AgentTexts.h"

#include "core/TokenEstimate.h"
#include "platform/FixedPoint.h"

#include <variant>

namespace ombrel {

std::string instructionTokensText(const Agent& agent) {
    return "~" + std::to_string(estimateTokens(agent.instructions)) + " tokens";
}

std::string diagramTokensText(const Agent& agent) {
    return "~" + std::to_string(estimateTokens(agent.instructions)) + " instruction tokens";
}

std::string attachmentText(const AgentRAGAttachment& attachment) {
    return "top-" + std::to_string(attachment.topK) + " chunks";
}

std::string runStatusText(const AgentRunResult& result) {
    return result.isError ? "Failed" : fixedPoint(result.durationSeconds, 2) + "s";
}

std::string valueText(const AgentOutputFieldValue& value) {
    using Value = AgentOutputFieldValue;
    if (const auto* plain = std::get_if<Value::Plain>(&value.value)) {
        return plain->text;
    }
    if (const auto* enumCase = std::get_if<Value::EnumCase>(&value.value)) {
        return enumCase->name;
    }
    return std::string(missingValueText);
}

} // namespace ombrel

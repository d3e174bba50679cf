#include "agents/AgentInstructionRefiner.h"

#include "platform/Text.h"

#include <utility>
#include <variant>
#include <vector>

namespace ombrel {

namespace {

constexpr std::string_view refinerInstructions =
    "You are an expert prompt engineer. You improve the system instructions given to another AI "
    "agent so it behaves more reliably and follows its own input/output contract, without changing "
    "its intent. Keep any {{context.field}} placeholders exactly as written \u2014 they're "
    "substituted at runtime and must not be renamed, reworded, or removed. Keep the rewritten "
    "instructions reasonably concise.";

std::shared_ptr<const DynamicGenerationSchema> stringSchema() {
    return std::make_shared<const DynamicGenerationSchema>(
        DynamicGenerationSchema{DynamicGenerationSchema::Scalar::string});
}

// What the model is to write.
DynamicGenerationSchema refinedAgentInstructions() {
    DynamicGenerationSchema::Object object;
    object.name = "RefinedAgentInstructions";
    object.properties.push_back(
        {"instructions",
         "The rewritten instructions: clear, specific, and unambiguous. Preserve the original "
         "intent and keep any {{context.field}} placeholders exactly as written.",
         stringSchema(), false});
    object.properties.push_back({"summary",
                                 "A one or two sentence summary of what was changed and why.",
                                 stringSchema(), false});
    return {std::move(object)};
}

std::string promptFor(const Agent& agent) {
    return "Here is the agent's real setup:\n" + AgentInstructionRefiner::setupDescription(agent) +
           "\n\nCurrent instructions:\n\"\"\"\n" + agent.instructions +
           "\n\"\"\"\n\nRewrite the instructions to be clearer and more specific, and more likely "
           "to produce output that reliably matches the input/output fields above.";
}

// The text under the key; nothing when there is none.
const std::string* textUnder(const GeneratedContent& content, std::string_view key) {
    const GeneratedContent* found = content.find(key);
    return found ? std::get_if<std::string>(&found->kind) : nullptr;
}

// "ticket (String), tags ([String])".
std::string fieldList(const std::vector<AgentProperty>& properties) {
    std::vector<std::string> fields;
    for (const AgentProperty& property : properties) {
        fields.push_back(property.name + " (" + property.kind.typeLabel() + ")");
    }
    return join(fields, ", ");
}

std::string outputLine(const AgentOutputKind& output) {
    if (const auto* enumeration = std::get_if<AgentOutputKind::Enumeration>(&output.value)) {
        std::vector<std::string> names;
        for (const AgentEnumCase& enumCase : enumeration->cases) {
            names.push_back(enumCase.name);
        }
        return "Output: one of [" + join(names, ", ") + "]";
    }
    if (const auto* object = std::get_if<AgentOutputKind::Object>(&output.value)) {
        return "Output object fields: " + fieldList(object->properties);
    }
    return "Output: plain text";
}

} // namespace

Task<Result<AgentInstructionRefiner::Result>>
AgentInstructionRefiner::refine(std::shared_ptr<OnDeviceModel> model, Agent agent) {
    if (!model->availability().isAvailable()) {
        co_return failure(std::string(RefinementError::modelUnavailable));
    }
    const auto schema = GenerationSchema::make(refinedAgentInstructions());
    if (!schema) {
        co_return tl::unexpected(schema.error());
    }
    const std::shared_ptr<LanguageModelSession> session =
        model->makeSession(std::string(refinerInstructions));
    std::string prompt = promptFor(agent);
    const auto content = co_await session->respond(std::move(prompt), *schema, true);
    if (!content) {
        co_return tl::unexpected(content.error());
    }
    const std::string* instructions = textUnder(*content, "instructions");
    const std::string* summary = textUnder(*content, "summary");
    if (!instructions || !summary) {
        co_return failure("The model's answer holds no rewritten instructions.");
    }
    Result result{*instructions, *summary};
    co_return result;
}

std::string AgentInstructionRefiner::setupDescription(const Agent& agent) {
    std::vector<std::string> lines{"Name: " + agent.name};
    if (!agent.summary.empty()) {
        lines.push_back("Summary: " + agent.summary);
    }
    lines.push_back(agent.input.empty() ? "Input: none"
                                        : "Input fields: " + fieldList(agent.input));
    lines.push_back(outputLine(agent.output));
    if (!agent.contextFieldNames.empty()) {
        std::vector<std::string> placeholders;
        for (const std::string& name : agent.contextFieldNames) {
            placeholders.push_back(contextPlaceholder(name));
        }
        lines.push_back("Flow context placeholders in use: " + join(placeholders, ", "));
    }
    return join(lines, "\n");
}

bool canRefineInstructions(const Agent& agent) {
    return !trimWhitespacesAndNewlines(agent.instructions).empty();
}

} // namespace ombrel

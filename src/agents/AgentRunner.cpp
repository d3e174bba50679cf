#include "agents/AgentRunner.h"

#include "agents/AgentContext.h"
#include "agents/AgentSchema.h"
#include "platform/MainExecutor.h"
#include "platform/OnDeviceModel.h"
#include "platform/Text.h"

#include <chrono>
#include <memory>
#include <utility>
#include <variant>

namespace ombrel {

namespace {

AgentRunResult errorResult(std::string message) {
    AgentRunResult result;
    result.outputText = std::move(message);
    result.isError = true;
    return result;
}

AgentRunResult modelFailure(const std::string& message) {
    return errorResult("The on-device model failed: " + message);
}

// A string as it is, so that an expected case is found in it; anything else as JSON.
std::string plainText(const GeneratedContent& content) {
    const auto* text = std::get_if<std::string>(&content.kind);
    return text ? *text : content.text();
}

// A result without its context and duration.
Task<AgentRunResult> answerAsText(std::shared_ptr<LanguageModelSession> session,
                                  std::string input) {
    const Result<std::string> answer = co_await session->respond(std::move(input));
    if (!answer) {
        co_return modelFailure(answer.error().message);
    }
    AgentRunResult result;
    result.outputText = *answer;
    co_return result;
}

Task<AgentRunResult> answerInSchema(std::shared_ptr<LanguageModelSession> session,
                                    std::string input, GenerationSchema schema,
                                    AgentOutputKind output) {
    auto responding = session->respond(std::move(input), std::move(schema), true);
    const Result<GeneratedContent> content = co_await std::move(responding);
    if (!content) {
        co_return modelFailure(content.error().message);
    }
    AgentRunResult result;
    result.outputText = plainText(*content);
    if (const auto* object = std::get_if<AgentOutputKind::Object>(&output.value)) {
        result.objectFields = objectFields(*content, object->properties);
    }
    co_return result;
}

} // namespace

bool canRunAgent(std::string_view sampleInput, bool isRunning) {
    return !isRunning && !trimWhitespacesAndNewlines(sampleInput).empty();
}

Task<AgentRunResult> runAgent(Platform platform, Agent agent, std::vector<RAGIndex> ragIndexes,
                              std::string input) {
    const MainExecutor::Clock::time_point start = platform.executor->now();
    if (!platform.model->availability().isAvailable()) {
        co_return errorResult(
            "On-device model unavailable — enable Apple Intelligence to run this agent.");
    }
    auto retrieving = retrieveAgentContext(platform, agent, std::move(ragIndexes), input);
    std::vector<AgentRetrievedContext> retrieved = co_await std::move(retrieving);
    const std::shared_ptr<LanguageModelSession> session =
        platform.model->makeSession(instructionsWithContext(agent.instructions, retrieved));
    AgentRunResult result;
    bool isRefused = false; // before the model was asked
    if (agent.output.kind() == AgentOutputKind::Kind::text) {
        auto answering = answerAsText(session, std::move(input));
        result = co_await std::move(answering);
    } else {
        Result<std::optional<GenerationSchema>> schema = generationSchema(agent.output);
        if (!schema) {
            result = modelFailure(schema.error().message);
        } else if (!*schema) {
            result = errorResult("This output type has no cases/properties to generate yet.");
            isRefused = true;
        } else {
            GenerationSchema held = std::move(**schema);
            auto answering =
                answerInSchema(session, std::move(input), std::move(held), agent.output);
            result = co_await std::move(answering);
        }
    }
    if (!isRefused) {
        const auto elapsed = platform.executor->now() - start;
        result.durationSeconds = std::chrono::duration<double>(elapsed).count();
    }
    result.retrievedContext = std::move(retrieved);
    co_return result;
}

} // namespace ombrel

#pragma once

#include "platform/OnDeviceModel.h"
#include "tests/support/Gate.h"
#include "tests/support/TestExecutor.h"

#include <chrono>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace ombrel::test {

// One request that the model got.
struct ModelCall {
    enum class Kind { respond, respondWithSchema, stream, prewarm };
    Kind kind = Kind::respond;
    std::string instructions;
    std::vector<std::shared_ptr<Tool>> tools;
    std::string prompt;
    std::optional<GenerationSchema> schema;
    bool includeSchemaInPrompt = false;
    std::vector<std::string> toolResults; // of the calls that the answer made, in order
};

// What the model does with a request.
struct ModelAnswer {
    using Duration = MainExecutor::Clock::duration;
    // A piece of a stream: the whole text up to then.
    struct Piece {
        std::string content;
        std::optional<ModelUsage> usage = std::nullopt;
        Duration takes = Duration::zero(); // moves the clock before the piece comes
    };
    // A call of one of the session's tools, before the answer.
    struct ToolCall {
        std::string name;
        std::string argumentsJson;
    };

    ModelAnswer() = default;
    ModelAnswer(std::string text) : content(std::move(text)) {}
    ModelAnswer(const char* text) : content(text) {}
    static ModelAnswer fails(std::string message) {
        ModelAnswer answer;
        answer.error = std::move(message);
        return answer;
    }
    // A stream; without pieces it ends without a snapshot.
    static ModelAnswer streams(std::vector<Piece> pieces) {
        ModelAnswer answer;
        answer.pieces = std::move(pieces);
        return answer;
    }
    // A stream that fails after its pieces.
    static ModelAnswer streamFails(std::vector<Piece> pieces, std::string message) {
        ModelAnswer answer = streams(std::move(pieces));
        answer.error = std::move(message);
        return answer;
    }

    std::string content; // of a request with a schema: JSON
    std::optional<std::string> error;
    std::optional<ModelUsage> usage;
    std::optional<std::vector<Piece>> pieces; // absent: one piece, `content`
    std::vector<ToolCall> toolCalls;
    // Given the results of the tool calls, the content.
    std::function<std::string(const std::vector<std::string>&)> afterTools;
    Duration takes = Duration::zero(); // moves the clock before the answer begins
};

// A model that answers what the test told it to: from the queue while it holds anything, then by
// the function. Without either, every request fails.
class ScriptedModel : public OnDeviceModel {
  public:
    explicit ScriptedModel(std::shared_ptr<TestExecutor> executor)
        : gate(executor), pieceGate(executor), m_executor(std::move(executor)) {}

    // Nothing while the model is available.
    std::optional<std::string> unavailableReason;
    std::deque<ModelAnswer> queue;
    std::function<ModelAnswer(const ModelCall&)> answer;
    // Every request, in order; those of one session are not marked as such, since each request of
    // the system has a session of its own.
    std::vector<ModelCall> calls;
    std::size_t sessionCount = 0;
    // Every request passes the first, every piece of a stream the second.
    Gate gate;
    Gate pieceGate;

    ModelAvailability availability() override { return {unavailableReason}; }
    std::shared_ptr<LanguageModelSession>
    makeSession(std::string instructions, std::vector<std::shared_ptr<Tool>> tools = {}) override {
        ++sessionCount;
        return std::make_shared<Session>(*this, std::move(instructions), std::move(tools));
    }

    std::vector<std::string> prompts() const {
        std::vector<std::string> result;
        for (const ModelCall& call : calls) {
            result.push_back(call.prompt);
        }
        return result;
    }

  private:
    class Session : public LanguageModelSession {
      public:
        Session(ScriptedModel& model, std::string instructions,
                std::vector<std::shared_ptr<Tool>> tools)
            : m_model(model), m_instructions(std::move(instructions)), m_tools(std::move(tools)) {}

        Task<Result<std::string>> respond(std::string prompt) override {
            ModelCall call = makeCall(ModelCall::Kind::respond, std::move(prompt));
            ModelAnswer given = co_await begin(std::move(call));
            if (given.error) {
                co_return failure(*given.error);
            }
            co_return given.content;
        }
        Task<Result<GeneratedContent>> respond(std::string prompt, GenerationSchema schema,
                                               bool includeSchemaInPrompt) override {
            ModelCall call = makeCall(ModelCall::Kind::respondWithSchema, std::move(prompt));
            call.schema = std::move(schema);
            call.includeSchemaInPrompt = includeSchemaInPrompt;
            ModelAnswer given = co_await begin(std::move(call));
            if (given.error) {
                co_return failure(*given.error);
            }
            co_return GeneratedContent::parse(given.content);
        }
        Task<Result<std::optional<ModelSnapshot>>>
        streamResponse(std::string prompt,
                       std::function<void(const ModelSnapshot&)> onSnapshot) override {
            ModelCall call = makeCall(ModelCall::Kind::stream, std::move(prompt));
            ModelAnswer given = co_await begin(std::move(call));
            std::vector<ModelAnswer::Piece> pieces;
            if (given.pieces) {
                pieces = *given.pieces;
            } else if (!given.error) {
                pieces.push_back({given.content, given.usage});
            }
            std::optional<ModelSnapshot> last;
            for (const ModelAnswer::Piece& piece : pieces) {
                co_await m_model.pieceGate.pass();
                m_model.m_executor->moveClock(piece.takes);
                last = ModelSnapshot{piece.content, piece.usage};
                if (onSnapshot) {
                    onSnapshot(*last);
                }
            }
            if (given.error) {
                co_return failure(*given.error);
            }
            co_return last;
        }
        Task<void> prewarm() override {
            ModelCall call = makeCall(ModelCall::Kind::prewarm, {});
            m_model.calls.push_back(std::move(call));
            co_await m_model.gate.pass();
        }

      private:
        ModelCall makeCall(ModelCall::Kind kind, std::string prompt) const {
            ModelCall call;
            call.kind = kind;
            call.instructions = m_instructions;
            call.tools = m_tools;
            call.prompt = std::move(prompt);
            return call;
        }
        // Records the request, waits at the gate, and calls the tools that the answer calls.
        Task<ModelAnswer> begin(ModelCall call) {
            const std::size_t place = m_model.calls.size();
            m_model.calls.push_back(call);
            co_await m_model.gate.pass();
            ModelAnswer given = m_model.next(call);
            m_model.m_executor->moveClock(given.takes);
            std::vector<std::string> results;
            for (const ModelAnswer::ToolCall& wanted : given.toolCalls) {
                auto arguments = GeneratedContent::parse(wanted.argumentsJson);
                for (const std::shared_ptr<Tool>& tool : m_tools) {
                    if (tool->name() == wanted.name && arguments) {
                        std::string result = co_await tool->call(*arguments);
                        results.push_back(std::move(result));
                    }
                }
            }
            if (given.afterTools) {
                given.content = given.afterTools(results);
            }
            m_model.calls[place].toolResults = std::move(results);
            co_return given;
        }

        ScriptedModel& m_model;
        std::string m_instructions;
        std::vector<std::shared_ptr<Tool>> m_tools;
    };

    ModelAnswer next(const ModelCall& call) {
        if (!queue.empty()) {
            ModelAnswer given = std::move(queue.front());
            queue.pop_front();
            return given;
        }
        if (answer) {
            return answer(call);
        }
        return ModelAnswer::fails("the test has no answer for this request");
    }

    std::shared_ptr<TestExecutor> m_executor;
};

} // namespace ombrel::test

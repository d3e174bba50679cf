#pragma once

#include "platform/HttpClient.h"
#include "platform/ModelServer.h"
#include "platform/OnDeviceModel.h"
#include "platform/Result.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

// One exchange with a server's `/v1/chat/completions`.
namespace ombrel {

struct ChatToolCall {
    std::string id;
    std::string name;
    std::string arguments; // JSON text, as the model wrote it
    bool operator==(const ChatToolCall&) const = default;
};

struct ChatMessage {
    enum class Role { system, user, assistant, tool };
    Role role = Role::user;
    std::string content;
    std::vector<ChatToolCall> toolCalls; // of an assistant
    std::string toolCallID;              // of a tool
};

struct ChatTool {
    std::string name;
    std::string description;
    std::string parameters; // JSON schema text
};

struct ChatRequest {
    std::vector<ChatMessage> messages;
    std::vector<ChatTool> tools;
    // The JSON schema text that the answer is held to.
    std::optional<std::string> schema;
    std::int64_t maximumTokens = 0;
};

struct ChatAnswer {
    std::string content;
    std::vector<ChatToolCall> toolCalls;
    std::optional<ModelUsage> usage;
    // The bound of tokens, or the model's context, ended the answer.
    bool isCutOff = false;
};

struct ChatError {
    enum class Kind {
        unreachable, // no server, or it can't be started
        refused,     // the server answered with an error to this request
        tooLong,     // the conversation doesn't fit into the model's context
        notAllowed,  // the key is wrong
        broken,      // the answer ended in its middle, took too long, or makes no sense
        cancelled,
    };
    Kind kind;
    std::string message; // a sentence for the user
};

struct ChatLimits {
    std::chrono::milliseconds idle;
    std::chrono::milliseconds total;
};

// The body of a request to the model of that name, which streams.
std::string chatRequestBody(const ChatRequest& request, const std::string& model);

// What an answer with an error status says. Any server, any body.
ChatError chatError(const HttpResponse& response);

// Puts a streamed answer together from its bytes, or one that the server sent whole although it was
// asked for a stream.
class ChatAnswerReader {
  public:
    // `onChange` is called with the answer so far when text or usage came.
    explicit ChatAnswerReader(std::function<void(const ChatAnswer&)> onChange = {});
    ~ChatAnswerReader();
    ChatAnswerReader(const ChatAnswerReader&) = delete;
    ChatAnswerReader& operator=(const ChatAnswerReader&) = delete;

    void take(std::string_view bytes);
    // Calls `onChange` no more. May be called inside it.
    void abandon();
    // The answer, once there are no more bytes.
    Result<ChatAnswer, ChatError> finish();

  private:
    struct State;
    std::unique_ptr<State> m_state;
};

// Asks the server and waits for the whole answer. The server is made ready first. A connection that
// cannot be made is tried a second time, since a server of ours may just have ended.
// `onChange` may destroy the task.
Task<Result<ChatAnswer, ChatError>> chat(std::shared_ptr<HttpClient> http,
                                         std::shared_ptr<ModelServer> server, ChatRequest request,
                                         ChatLimits limits, std::stop_token stop,
                                         std::function<void(const ChatAnswer&)> onChange = {});

} // namespace ombrel

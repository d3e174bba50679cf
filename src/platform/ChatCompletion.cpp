#include "platform/ChatCompletion.h"

#include "platform/ServerJson.h"
#include "platform/ServerSentEvents.h"
#include "platform/Text.h"

#include <algorithm>
#include <rapidjson/rapidjson.h>
#include <string_view>
#include <utility>

namespace ombrel {

namespace {

// An answer of this size is not one of a model that writes a bounded number of tokens.
constexpr std::size_t largestAnswerBytes = std::size_t{16} << 20;
// How much of a message that is not ours is shown.
constexpr std::size_t longestQuotedCharacters = 500;

constexpr std::string_view stoppedInTheMiddle =
    "The model server stopped in the middle of its answer.";

std::string_view roleName(ChatMessage::Role role) {
    switch (role) {
    case ChatMessage::Role::system:
        return "system";
    case ChatMessage::Role::user:
        return "user";
    case ChatMessage::Role::assistant:
        return "assistant";
    case ChatMessage::Role::tool:
        return "tool";
    }
    return "user";
}

void writeRaw(JsonStream& json, const std::string& text) {
    json.RawValue(text.data(), text.size(), rapidjson::kObjectType);
}

void writeMessage(JsonStream& json, const ChatMessage& message) {
    json.StartObject();
    writeJsonKey(json, "role");
    writeJsonText(json, roleName(message.role));
    writeJsonKey(json, "content");
    writeJsonText(json, message.content);
    if (message.role == ChatMessage::Role::tool) {
        writeJsonKey(json, "tool_call_id");
        writeJsonText(json, message.toolCallID);
    }
    if (!message.toolCalls.empty()) {
        writeJsonKey(json, "tool_calls");
        json.StartArray();
        for (const auto& call : message.toolCalls) {
            json.StartObject();
            writeJsonKey(json, "id");
            writeJsonText(json, call.id);
            writeJsonKey(json, "type");
            writeJsonText(json, "function");
            writeJsonKey(json, "function");
            json.StartObject();
            writeJsonKey(json, "name");
            writeJsonText(json, call.name);
            writeJsonKey(json, "arguments");
            writeJsonText(json, call.arguments);
            json.EndObject();
            json.EndObject();
        }
        json.EndArray();
    }
    json.EndObject();
}

bool containsAny(std::string_view text, std::initializer_list<std::string_view> words) {
    return std::any_of(words.begin(), words.end(), [text](std::string_view word) {
        return text.find(word) != std::string_view::npos;
    });
}

// What the object says that servers put an error into.
ChatError errorFrom(const rapidjson::Value& document, int status) {
    // {"error": {"message": …}}, {"error": "…"}, or the message at the top.
    const rapidjson::Value* error = jsonMember(document, "error");
    if (!error) {
        error = &document;
    }
    std::string message = jsonText(error).value_or("");
    for (const char* name : {"message", "detail"}) {
        if (message.empty()) {
            message = jsonText(jsonMember(*error, name)).value_or("");
        }
    }
    const std::string type = jsonText(jsonMember(*error, "type")).value_or("");
    const std::string code = jsonText(jsonMember(*error, "code")).value_or("");
    if (status == 401 || status == 403) {
        return {ChatError::Kind::notAllowed, "The model server does not accept the key."};
    }
    if (type == "exceed_context_size_error" || code == "context_length_exceeded" ||
        containsAny(lowercased(message), {"context size", "context length", "context window",
                                          "maximum context", "too large to process"})) {
        const auto asked = jsonInteger(jsonMember(*error, "n_prompt_tokens"));
        const auto possible = jsonInteger(jsonMember(*error, "n_ctx"));
        if (asked && possible) {
            return {ChatError::Kind::tooLong,
                    "The text is too long for the model: it has " + std::to_string(*asked) +
                        " tokens, and the model takes " + std::to_string(*possible) + "."};
        }
        return {ChatError::Kind::tooLong, "The text is too long for the model."};
    }
    message = std::string(trimWhitespacesAndNewlines(message));
    if (message.empty()) {
        return {ChatError::Kind::refused,
                "The model server answered with " +
                    (status ? "status " + std::to_string(status) : std::string("an error")) + "."};
    }
    return {ChatError::Kind::refused,
            "The model server answered with an error: " +
                std::string(firstCharacters(message, longestQuotedCharacters))};
}

// About how many tokens the context leaves for an answer: some servers refuse to be asked for more.
// It is an estimate, and never so low that a real answer could not be given.
std::int64_t tokensLeft(const ChatRequest& request, std::int64_t contextTokens) {
    constexpr std::int64_t fewest = 128;
    constexpr std::size_t bytesPerToken = 4;
    if (contextTokens <= 0) {
        return request.maximumTokens;
    }
    std::size_t bytes = 0;
    for (const auto& message : request.messages) {
        bytes += message.content.size();
    }
    return std::max(fewest, contextTokens - static_cast<std::int64_t>(bytes / bytesPerToken));
}

std::int64_t tokenCount(const rapidjson::Value* value) {
    return std::max<std::int64_t>(jsonInteger(value).value_or(0), 0);
}

} // namespace

std::string chatRequestBody(const ChatRequest& request, const std::string& model) {
    rapidjson::StringBuffer buffer;
    JsonStream json(buffer);
    json.StartObject();
    if (!model.empty()) {
        writeJsonKey(json, "model");
        writeJsonText(json, model);
    }
    writeJsonKey(json, "messages");
    json.StartArray();
    for (const auto& message : request.messages) {
        writeMessage(json, message);
    }
    json.EndArray();
    if (!request.tools.empty()) {
        writeJsonKey(json, "tools");
        json.StartArray();
        for (const auto& tool : request.tools) {
            json.StartObject();
            writeJsonKey(json, "type");
            writeJsonText(json, "function");
            writeJsonKey(json, "function");
            json.StartObject();
            writeJsonKey(json, "name");
            writeJsonText(json, tool.name);
            writeJsonKey(json, "description");
            writeJsonText(json, tool.description);
            writeJsonKey(json, "parameters");
            writeRaw(json, tool.parameters);
            json.EndObject();
            json.EndObject();
        }
        json.EndArray();
    }
    if (request.schema) {
        writeJsonKey(json, "response_format");
        json.StartObject();
        writeJsonKey(json, "type");
        writeJsonText(json, "json_schema");
        writeJsonKey(json, "json_schema");
        json.StartObject();
        writeJsonKey(json, "name");
        writeJsonText(json, "answer");
        writeJsonKey(json, "strict");
        json.Bool(true);
        writeJsonKey(json, "schema");
        writeRaw(json, *request.schema);
        json.EndObject();
        json.EndObject();
    }
    writeJsonKey(json, "max_tokens");
    json.Int64(request.maximumTokens);
    writeJsonKey(json, "stream");
    json.Bool(true);
    writeJsonKey(json, "stream_options");
    json.StartObject();
    writeJsonKey(json, "include_usage");
    json.Bool(true);
    json.EndObject();
    json.EndObject();
    return {buffer.GetString(), buffer.GetSize()};
}

ChatError chatError(const HttpResponse& response) {
    const auto document = parseServerJson(response.body);
    if (!document.HasParseError() && document.IsObject()) {
        return errorFrom(document, response.status);
    }
    // A page for people, of a proxy or another kind of server, says nothing that belongs here.
    rapidjson::Document plain(rapidjson::kObjectType);
    if (!response.contentType.starts_with("text/html")) {
        const std::string body = repairUtf8(response.body);
        plain.AddMember("message",
                        rapidjson::Value(body.data(), static_cast<rapidjson::SizeType>(body.size()),
                                         plain.GetAllocator()),
                        plain.GetAllocator());
    }
    return errorFrom(plain, response.status);
}

struct ChatAnswerReader::State {
    std::function<void(const ChatAnswer&)> onChange;
    bool isAbandoned = false;
    ServerSentEvents events;
    bool hasEvents = false;
    std::string beforeEvents; // what came while no event had: an answer that is not a stream
    ChatAnswer answer;
    std::vector<std::int64_t> callIndices; // of each of the answer's tool calls
    bool isFinished = false;               // the model's own end, or the stream's end mark
    bool hasThoughts = false;              // text that the model does not count to its answer
    std::optional<ChatError> error;

    // Whether to go on.
    bool takeData(const std::string& data) {
        hasEvents = true;
        if (trimWhitespacesAndNewlines(data) == "[DONE]") {
            isFinished = true;
            return true;
        }
        const auto document = parseServerJson(data);
        if (document.HasParseError() || !document.IsObject()) {
            error = ChatError{ChatError::Kind::broken,
                              "The model server answered with something that is not JSON."};
            return false;
        }
        takeDocument(document);
        return !error && !isAbandoned;
    }

    void takeDocument(const rapidjson::Value& document) {
        if (const auto* reported = jsonMember(document, "error"); reported && !reported->IsNull()) {
            error = errorFrom(document, 0);
            return;
        }
        bool hasChanged = false;
        if (const auto* choices = jsonMember(document, "choices");
            choices && choices->IsArray() && !choices->Empty()) {
            const auto& choice = (*choices)[0];
            const auto* delta = jsonMember(choice, "delta");
            if (!delta) {
                delta = jsonMember(choice, "message");
            }
            if (delta) {
                hasChanged = takeDelta(*delta);
            }
            if (const auto reason = jsonText(jsonMember(choice, "finish_reason"))) {
                isFinished = true;
                answer.isCutOff = *reason == "length";
            }
        }
        if (const auto* usage = jsonMember(document, "usage"); usage && usage->IsObject()) {
            const auto* details = jsonMember(*usage, "prompt_tokens_details");
            answer.usage =
                ModelUsage{tokenCount(jsonMember(*usage, "prompt_tokens")),
                           tokenCount(details ? jsonMember(*details, "cached_tokens") : nullptr),
                           tokenCount(jsonMember(*usage, "completion_tokens"))};
            hasChanged = true;
        }
        if (hasChanged && onChange && !isAbandoned) {
            onChange(answer);
        }
    }

    // Whether text came.
    bool takeDelta(const rapidjson::Value& delta) {
        if (const auto* calls = jsonMember(delta, "tool_calls"); calls && calls->IsArray()) {
            for (const auto& call : calls->GetArray()) {
                takeCall(call);
            }
        }
        for (const char* name : {"reasoning_content", "reasoning"}) {
            hasThoughts |= !jsonText(jsonMember(delta, name)).value_or("").empty();
        }
        const std::string content = jsonText(jsonMember(delta, "content")).value_or("");
        answer.content += content;
        return !content.empty();
    }

    void takeCall(const rapidjson::Value& part) {
        const std::string id = jsonText(jsonMember(part, "id")).value_or("");
        auto& calls = answer.toolCalls;
        std::size_t position = calls.empty() ? 0 : calls.size() - 1;
        if (const auto index = jsonInteger(jsonMember(part, "index"))) {
            position = static_cast<std::size_t>(
                std::find(callIndices.begin(), callIndices.end(), *index) - callIndices.begin());
        } else if (!calls.empty() && !id.empty() && id != calls.back().id) {
            // Servers without indices begin a call with an id that no other has.
            position = calls.size();
        }
        if (position == calls.size()) {
            calls.emplace_back();
            callIndices.push_back(
                jsonInteger(jsonMember(part, "index")).value_or(static_cast<int>(position)));
        }
        auto& call = calls[position];
        if (call.id.empty()) {
            call.id = id;
        }
        const auto* function = jsonMember(part, "function");
        if (!function) {
            return;
        }
        if (call.name.empty()) {
            call.name = jsonText(jsonMember(*function, "name")).value_or("");
        }
        const auto* arguments = jsonMember(*function, "arguments");
        if (const auto text = jsonText(arguments)) {
            call.arguments += *text;
        } else if (arguments && arguments->IsObject()) {
            rapidjson::StringBuffer buffer;
            JsonStream json(buffer);
            arguments->Accept(json);
            call.arguments.assign(buffer.GetString(), buffer.GetSize());
        }
    }
};

ChatAnswerReader::ChatAnswerReader(std::function<void(const ChatAnswer&)> onChange)
    : m_state(std::make_unique<State>()) {
    m_state->onChange = std::move(onChange);
}

ChatAnswerReader::~ChatAnswerReader() = default;

void ChatAnswerReader::abandon() {
    m_state->isAbandoned = true;
}

void ChatAnswerReader::take(std::string_view bytes) {
    State& state = *m_state;
    if (state.error || state.isAbandoned) {
        return;
    }
    if (!state.hasEvents) {
        state.beforeEvents += bytes;
    }
    state.events.take(bytes, [&state](const std::string& data) { return state.takeData(data); });
}

Result<ChatAnswer, ChatError> ChatAnswerReader::finish() {
    State& state = *m_state;
    if (!state.error && !state.isFinished) {
        if (const std::string rest = state.events.rest(); !rest.empty()) {
            // The end of the stream stands for the empty line after its last event, if that event
            // is whole.
            state.hasEvents = true;
            if (rest == "[DONE]" || !parseServerJson(rest).HasParseError()) {
                state.takeData(rest);
            }
        }
    }
    if (!state.error && !state.hasEvents) {
        const auto document = parseServerJson(state.beforeEvents);
        if (document.HasParseError() || !document.IsObject()) {
            return tl::unexpected(
                ChatError{ChatError::Kind::broken,
                          trimWhitespacesAndNewlines(state.beforeEvents).empty()
                              ? "The model server gave an empty answer."
                              : "The model server answered with something that is not JSON."});
        }
        state.takeDocument(document);
        if (!state.error && !jsonMember(document, "choices")) {
            return tl::unexpected(
                ChatError{ChatError::Kind::broken,
                          "The model server answered with something that is not a chat answer."});
        }
    }
    if (state.error) {
        return tl::unexpected(*state.error);
    }
    if (!state.isFinished) {
        return tl::unexpected(ChatError{ChatError::Kind::broken, std::string(stoppedInTheMiddle)});
    }
    if (state.answer.isCutOff && state.answer.content.empty() && state.answer.toolCalls.empty() &&
        state.hasThoughts) {
        return tl::unexpected(ChatError{
            ChatError::Kind::broken, "The model used all the tokens of its answer for thinking."});
    }
    return std::move(state.answer);
}

Task<Result<ChatAnswer, ChatError>> chat(std::shared_ptr<HttpClient> http,
                                         std::shared_ptr<ModelServer> server, ChatRequest request,
                                         ChatLimits limits, std::stop_token stop,
                                         std::function<void(const ChatAnswer&)> onChange) {
    for (int attempt = 0;; attempt++) {
        Result<ServerEndpoint> endpoint = co_await server->ready();
        if (!endpoint) {
            co_return tl::unexpected(
                ChatError{ChatError::Kind::unreachable, endpoint.error().message});
        }
        if (stop.stop_requested()) {
            co_return tl::unexpected(
                ChatError{ChatError::Kind::cancelled, "The request was cancelled."});
        }
        // The reader outlives this task where `onChange` destroys it.
        const auto reader = std::make_shared<ChatAnswerReader>(onChange);
        struct Abandon {
            ChatAnswerReader& reader;
            ~Abandon() { reader.abandon(); }
        };
        const Abandon abandon{*reader};
        HttpRequest httpRequest;
        httpRequest.url = endpoint->url + "/v1/chat/completions";
        httpRequest.key = endpoint->key;
        ChatRequest bounded = request;
        bounded.maximumTokens =
            std::min(request.maximumTokens, tokensLeft(request, endpoint->contextTokens));
        httpRequest.body = chatRequestBody(bounded, endpoint->model);
        httpRequest.idleLimit = limits.idle;
        httpRequest.totalLimit = limits.total;
        httpRequest.bodyLimit = largestAnswerBytes;
        httpRequest.onBody = [reader](std::string_view bytes) { reader->take(bytes); };
        auto sending = http->send(std::move(httpRequest), stop);
        Result<HttpResponse, HttpError> response = co_await std::move(sending);
        if (response) {
            if (response->status >= 400) {
                co_return tl::unexpected(chatError(*response));
            }
            co_return reader->finish();
        }
        const HttpError& error = response.error();
        switch (error.kind) {
        case HttpError::Kind::cannotConnect:
            server->connectionFailed();
            if (attempt == 0) {
                continue;
            }
            co_return tl::unexpected(ChatError{ChatError::Kind::unreachable, error.message});
        case HttpError::Kind::notLocal:
            co_return tl::unexpected(ChatError{ChatError::Kind::unreachable, error.message});
        case HttpError::Kind::cancelled:
            co_return tl::unexpected(ChatError{ChatError::Kind::cancelled, error.message});
        case HttpError::Kind::broken:
            co_return tl::unexpected(
                ChatError{ChatError::Kind::broken,
                          error.isPartial ? std::string(stoppedInTheMiddle) : error.message});
        case HttpError::Kind::timedOut:
        case HttpError::Kind::tooLarge:
            co_return tl::unexpected(ChatError{ChatError::Kind::broken, error.message});
        }
    }
}

} // namespace ombrel

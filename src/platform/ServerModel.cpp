#include "platform/ServerModel.h"

#include "platform/ChatCompletion.h"
#include "platform/SchemaMatch.h"
#include "platform/ServerJson.h"
#include "platform/Text.h"

#include <algorithm>
#include <stop_token>
#include <utility>

namespace ombrel {

// What all sessions share, and what has been learnt about the server.
struct ServerModel::Connection {
    std::shared_ptr<HttpClient> http;
    std::shared_ptr<ModelServer> server;
    Limits limits;
    // The server holds answers to a schema, as far as is known.
    bool isConstraining = true;
    // It has answered a request with a schema: where it refuses another, it is because of that one.
    bool hasTakenASchema = false;
    // The model's template knows tools; nothing as long as nobody has asked.
    std::optional<bool> isCallingTools;

    ChatLimits chatLimits() const { return {limits.idle, limits.total}; }
};

namespace {

using Answered = Result<ChatAnswer, ChatError>;

// What a session's requests need, whether or not the session still is.
struct Context {
    std::string instructions;
    std::vector<std::shared_ptr<Tool>> tools;
    std::stop_token stop;
};

ChatMessage message(ChatMessage::Role role, std::string content) {
    ChatMessage result;
    result.role = role;
    result.content = std::move(content);
    return result;
}

std::vector<ChatMessage> openingMessages(const std::string& instructions,
                                         const std::string& prompt) {
    std::vector<ChatMessage> messages;
    if (!instructions.empty()) {
        messages.push_back(message(ChatMessage::Role::system, instructions));
    }
    messages.push_back(message(ChatMessage::Role::user, prompt));
    return messages;
}

std::string promptWithSchema(const std::string& prompt, const std::string& schema) {
    return prompt + "\n\nAnswer with nothing but JSON that fits this JSON schema:\n" + schema;
}

std::string cutOffMessage(std::int64_t answerTokens) {
    return "The model's answer was cut off before it was complete, by the limit of " +
           std::to_string(answerTokens) + " tokens or by the end of the model's context.";
}

// One thing that the model wanted done, and what came of it.
struct DoneCall {
    ChatToolCall call; // The arguments are one JSON object, whatever the model wrote.
    std::string result;
};

// What one request of a conversation with tools brought.
struct Round {
    std::string content;
    std::vector<DoneCall> calls;
    // What the model is told when none of its calls could be read.
    std::string complaint;
};

std::string callText(const ChatToolCall& call) {
    rapidjson::StringBuffer buffer;
    JsonStream json(buffer);
    json.StartObject();
    writeJsonKey(json, "call");
    writeJsonText(json, call.name);
    writeJsonKey(json, "arguments");
    json.RawValue(call.arguments.data(), call.arguments.size(), rapidjson::kObjectType);
    json.EndObject();
    return {buffer.GetString(), buffer.GetSize()};
}

// The rounds in the protocol's own form.
void appendNatively(std::vector<ChatMessage>& messages, const std::vector<Round>& rounds) {
    for (const auto& round : rounds) {
        if (!round.content.empty() || !round.calls.empty()) {
            ChatMessage assistant = message(ChatMessage::Role::assistant, round.content);
            for (const auto& done : round.calls) {
                assistant.toolCalls.push_back(done.call);
            }
            messages.push_back(std::move(assistant));
        }
        for (const auto& done : round.calls) {
            ChatMessage result = message(ChatMessage::Role::tool, done.result);
            result.toolCallID = done.call.id;
            messages.push_back(std::move(result));
        }
        if (!round.complaint.empty()) {
            messages.push_back(message(ChatMessage::Role::user, round.complaint));
        }
    }
}

// The rounds as text, for templates that don't know tools: those want user and assistant to take
// turns.
void appendAsText(std::vector<ChatMessage>& messages, const std::vector<Round>& rounds) {
    for (const auto& round : rounds) {
        std::vector<std::string> said;
        std::vector<std::string> results;
        if (!round.content.empty()) {
            said.push_back(round.content);
        }
        for (const auto& done : round.calls) {
            said.push_back(callText(done.call));
            results.push_back("Result of " + done.call.name + ":\n" + done.result);
        }
        if (!round.complaint.empty()) {
            results.push_back(round.complaint);
        }
        if (said.empty()) {
            said.push_back("(a call that could not be read)");
        }
        messages.push_back(message(ChatMessage::Role::assistant, join(said, "\n")));
        messages.push_back(message(ChatMessage::Role::user, join(results, "\n\n")));
    }
}

std::string toolNames(const std::vector<std::shared_ptr<Tool>>& tools) {
    std::vector<std::string> names;
    for (const auto& tool : tools) {
        names.push_back(tool->name());
    }
    return join(names, ", ");
}

std::string instructionsWithTools(const Context& context) {
    std::string text = context.instructions;
    text += text.empty() ? "" : "\n\n";
    text += "You have these tools:\n";
    for (const auto& tool : context.tools) {
        text += "- " + tool->name() + ": " + tool->description() + "\n";
        if (tool->includesSchemaInInstructions()) {
            text += "  JSON schema of its arguments: " + tool->parameters().jsonSchema() + "\n";
        }
    }
    text += "\nReply with one JSON object and nothing else. To use a tool: {\"call\": \"name of "
            "the tool\", \"arguments\": {…}}. You then get its result and can go on. To give your "
            "answer: {\"answer\": \"text of your answer\"}.";
    return text;
}

// One call with its arguments, or an answer.
std::string callOrAnswerSchema(const std::vector<std::shared_ptr<Tool>>& tools) {
    rapidjson::StringBuffer buffer;
    JsonStream json(buffer);
    const auto beginObject = [&json] {
        json.StartObject();
        writeJsonKey(json, "type");
        writeJsonText(json, "object");
        writeJsonKey(json, "properties");
        json.StartObject();
    };
    const auto endObject = [&json](std::initializer_list<std::string_view> required) {
        json.EndObject();
        writeJsonKey(json, "required");
        json.StartArray();
        for (const auto name : required) {
            writeJsonText(json, name);
        }
        json.EndArray();
        writeJsonKey(json, "additionalProperties");
        json.Bool(false);
        json.EndObject();
    };
    json.StartObject();
    writeJsonKey(json, "anyOf");
    json.StartArray();
    for (const auto& tool : tools) {
        beginObject();
        writeJsonKey(json, "call");
        json.StartObject();
        writeJsonKey(json, "type");
        writeJsonText(json, "string");
        writeJsonKey(json, "enum");
        json.StartArray();
        writeJsonText(json, tool->name());
        json.EndArray();
        json.EndObject();
        writeJsonKey(json, "arguments");
        const std::string parameters = tool->parameters().jsonSchema();
        json.RawValue(parameters.data(), parameters.size(), rapidjson::kObjectType);
        endObject({"call", "arguments"});
    }
    beginObject();
    writeJsonKey(json, "answer");
    json.StartObject();
    writeJsonKey(json, "type");
    writeJsonText(json, "string");
    json.EndObject();
    endObject({"answer"});
    json.EndArray();
    json.EndObject();
    return {buffer.GetString(), buffer.GetSize()};
}

DynamicGenerationSchema stringSchema() {
    return {DynamicGenerationSchema::Scalar::string};
}

DynamicGenerationSchema objectWith(std::string key) {
    const auto text = std::make_shared<const DynamicGenerationSchema>(stringSchema());
    DynamicGenerationSchema::Object object;
    object.properties.push_back({std::move(key), std::nullopt, text, false});
    return {std::move(object)};
}

// What a model wrote that was asked for a call or an answer.
struct CallOrAnswer {
    std::optional<ChatToolCall> call;
    std::string answer;
};

CallOrAnswer callOrAnswer(const std::string& text) {
    CallOrAnswer result;
    if (auto content = contentInText(text, objectWith("call"))) {
        const GeneratedContent* arguments = content->find("arguments");
        result.call = ChatToolCall{"", std::get<std::string>(content->find("call")->kind),
                                   arguments ? arguments->text() : "{}"};
    } else if (auto answer = contentInText(text, objectWith("answer"))) {
        result.answer = std::get<std::string>(answer->find("answer")->kind);
    } else {
        result.answer = text; // A server that holds to no schema, and a model that just answers.
    }
    return result;
}

// An identifier that every template accepts: some want nine letters and digits.
std::string callID(std::size_t number) {
    std::string digits = std::to_string(number);
    digits.insert(0, digits.size() < 5 ? 5 - digits.size() : 0, '0');
    return "call" + digits;
}

// Does what the model wants. Never fails: what is wrong with the call is the tool's answer to it.
Task<DoneCall> carryOut(std::vector<std::shared_ptr<Tool>> tools, ChatToolCall call) {
    DoneCall done;
    done.call = std::move(call);
    const auto tool = std::find_if(tools.begin(), tools.end(), [&done](const auto& each) {
        return each->name() == done.call.name;
    });
    std::string written = std::move(done.call.arguments);
    done.call.arguments = "{}";
    if (tool == tools.end()) {
        done.result = "Error: there is no tool \"" + done.call.name +
                      "\". The tools are: " + toolNames(tools) + ".";
        co_return done;
    }
    if (trimWhitespacesAndNewlines(written).empty()) {
        written = "{}"; // How some models call a tool without arguments.
    }
    Result<GeneratedContent> arguments = GeneratedContent::parse(written);
    if (!arguments || !std::holds_alternative<GeneratedContent::Structure>(arguments->kind)) {
        done.result = "Error: the arguments of the call are not a JSON object.";
        co_return done;
    }
    done.call.arguments = arguments->text();
    const GenerationSchema parameters = (*tool)->parameters();
    if (const auto wrong = whyNotFitting(*arguments, parameters.root())) {
        done.result = "Error in the arguments: " + *wrong + ".";
        co_return done;
    }
    const std::shared_ptr<Tool> called = *tool;
    GeneratedContent given = withoutAbsent(std::move(*arguments), parameters.root());
    done.result = co_await called->call(std::move(given));
    co_return done;
}

// Whether the template knows tools, as far as the server tells: llama.cpp's does, of others it has
// to be tried.
Task<bool> learnWhetherItCallsTools(std::shared_ptr<HttpClient> http, ServerEndpoint endpoint) {
    HttpRequest request;
    request.url = endpoint.url + "/props";
    request.key = endpoint.key;
    request.idleLimit = std::chrono::seconds(10);
    request.bodyLimit = std::size_t{4} << 20;
    auto sending = http->send(std::move(request));
    const Result<HttpResponse, HttpError> response = co_await std::move(sending);
    if (!response || response->status != 200) {
        co_return true;
    }
    const auto document = parseServerJson(response->body);
    if (document.HasParseError()) {
        co_return true;
    }
    const auto* capabilities = jsonMember(document, "chat_template_caps");
    if (!capabilities) {
        co_return true;
    }
    co_return jsonBoolean(jsonMember(*capabilities, "supports_tools")).value_or(true) &&
        jsonBoolean(jsonMember(*capabilities, "supports_tool_calls")).value_or(true);
}

bool isRefusal(const Answered& answered) {
    return !answered && answered.error().kind == ChatError::Kind::refused;
}

bool isTooLong(const Answered& answered) {
    return !answered && answered.error().kind == ChatError::Kind::tooLong;
}

} // namespace

class ServerModel::Session final : public LanguageModelSession {
  public:
    Session(std::shared_ptr<Connection> connection, std::string instructions,
            std::vector<std::shared_ptr<Tool>> tools)
        : m_connection(std::move(connection)),
          m_context{std::move(instructions), std::move(tools), m_stop.get_token()} {}
    ~Session() override { m_stop.request_stop(); }

    Task<Result<std::string>> respond(std::string prompt) override {
        if (m_context.tools.empty()) {
            return answer(m_connection, m_context, std::move(prompt));
        }
        return answerWithTools(m_connection, m_context, std::move(prompt));
    }
    Task<Result<GeneratedContent>> respond(std::string prompt, GenerationSchema schema,
                                           bool includeSchemaInPrompt) override {
        return generate(m_connection, m_context, std::move(prompt), std::move(schema),
                        includeSchemaInPrompt);
    }
    Task<Result<std::optional<ModelSnapshot>>>
    streamResponse(std::string prompt,
                   std::function<void(const ModelSnapshot&)> onSnapshot) override {
        return stream(m_connection, m_context, std::move(prompt), std::move(onSnapshot));
    }
    Task<void> prewarm() override { return warm(m_connection); }

  private:
    using Shared = std::shared_ptr<Connection>;

    // Sends the request as it is.
    static Task<Answered> ask(Shared connection, Context context, ChatRequest request) {
        request.maximumTokens = connection->limits.answerTokens;
        return chat(connection->http, connection->server, std::move(request),
                    connection->chatLimits(), context.stop);
    }

    static Task<Result<std::string>> answer(Shared connection, Context context,
                                            std::string prompt) {
        ChatRequest request;
        request.messages = openingMessages(context.instructions, prompt);
        Answered answered = co_await ask(connection, context, std::move(request));
        if (!answered) {
            co_return failure(answered.error().message);
        }
        co_return std::move(answered->content);
    }

    static Task<Result<std::optional<ModelSnapshot>>>
    stream(Shared connection, Context context, std::string prompt,
           std::function<void(const ModelSnapshot&)> onSnapshot) {
        ChatRequest request;
        request.messages = openingMessages(context.instructions, prompt);
        request.maximumTokens = connection->limits.answerTokens;
        std::function<void(const ChatAnswer&)> onChange =
            [told = std::move(onSnapshot)](const ChatAnswer& soFar) {
                if (told) {
                    told(ModelSnapshot{soFar.content, soFar.usage});
                }
            };
        auto chatting = chat(connection->http, connection->server, std::move(request),
                             connection->chatLimits(), context.stop, std::move(onChange));
        Answered answered = co_await std::move(chatting);
        if (!answered) {
            co_return failure(answered.error().message);
        }
        std::optional<ModelSnapshot> last;
        if (!answered->content.empty() || answered->usage) {
            last = ModelSnapshot{std::move(answered->content), answered->usage};
        }
        co_return last;
    }

    static Task<void> warm(Shared connection) {
        const Result<ServerEndpoint> endpoint = co_await connection->server->ready();
        static_cast<void>(endpoint); // The next request meets the same failure and reports it.
    }

    static Task<Result<GeneratedContent>> generate(Shared connection, Context context,
                                                   std::string prompt, GenerationSchema schema,
                                                   bool includeSchemaInPrompt) {
        const std::string schemaText = schema.jsonSchema();
        bool isConstrained = connection->isConstraining;
        bool isDoubtful = false; // whether this server holds anything to a schema
        while (true) {
            ChatRequest request;
            request.messages =
                openingMessages(context.instructions, includeSchemaInPrompt || !isConstrained
                                                          ? promptWithSchema(prompt, schemaText)
                                                          : prompt);
            if (isConstrained) {
                request.schema = schemaText;
            }
            Answered answered = co_await ask(connection, context, std::move(request));
            if (isConstrained && isRefusal(answered)) {
                isConstrained = false;
                isDoubtful = !connection->hasTakenASchema;
                continue;
            }
            if (!answered) {
                co_return failure(answered.error().message);
            }
            Result<GeneratedContent> content = contentInText(answered->content, schema.root());
            if (content) {
                if (isDoubtful) {
                    connection->isConstraining = false; // Asking alone was what helped.
                }
                connection->hasTakenASchema = connection->hasTakenASchema || isConstrained;
                co_return withoutAbsent(std::move(*content), schema.root());
            }
            if (answered->isCutOff) {
                co_return failure(cutOffMessage(connection->limits.answerTokens));
            }
            if (!isConstrained) {
                // There is no better to be had from this server.
                std::optional<GeneratedContent> unfitting =
                    jsonInText(answered->content, schema.root());
                if (unfitting) {
                    co_return withoutAbsent(std::move(*unfitting), schema.root());
                }
                co_return failure("The model's answer does not fit what was asked for. " +
                                  content.error().message);
            }
            isConstrained = false;
            isDoubtful = true;
        }
    }

    static Task<Result<std::string>> answerWithTools(Shared connection, Context context,
                                                     std::string prompt) {
        if (!connection->isCallingTools) {
            const Result<ServerEndpoint> endpoint = co_await connection->server->ready();
            if (!endpoint) {
                co_return failure(endpoint.error().message);
            }
            const bool isCalling = co_await learnWhetherItCallsTools(connection->http, *endpoint);
            connection->isCallingTools = isCalling;
        }
        bool isNative = *connection->isCallingTools;
        bool isConstrained = connection->isConstraining;
        std::vector<Round> rounds;
        std::size_t callCount = 0;
        while (static_cast<int>(rounds.size()) < connection->limits.toolRounds) {
            ChatRequest request = isNative ? nativeRequest(context, prompt, rounds)
                                           : textRequest(context, prompt, rounds, isConstrained);
            Answered answered = co_await ask(connection, context, std::move(request));
            if (isTooLong(answered) && !rounds.empty()) {
                break; // What the tools have said so far has to do.
            }
            if (isRefusal(answered) && (isNative || isConstrained)) {
                // The server can't, or it could not read what the model wrote: the next simpler
                // way is tried with all that has been said so far.
                if (isNative) {
                    connection->isCallingTools = !rounds.empty();
                    isNative = false;
                } else {
                    isConstrained = false;
                }
                continue;
            }
            if (!answered) {
                co_return failure(answered.error().message);
            }
            std::vector<ChatToolCall> calls;
            if (isNative) {
                calls = std::move(answered->toolCalls);
                if (calls.empty()) {
                    co_return std::move(answered->content);
                }
            } else {
                CallOrAnswer read = callOrAnswer(answered->content);
                if (!read.call && answered->isCutOff && answered->content.starts_with('{')) {
                    co_return failure(cutOffMessage(connection->limits.answerTokens));
                }
                if (!read.call) {
                    co_return std::move(read.answer);
                }
                calls.push_back(std::move(*read.call));
                answered->content.clear(); // The call says it all.
            }
            Round round;
            round.content = std::move(answered->content);
            for (auto& call : calls) {
                if (call.name.empty()) {
                    continue; // Nothing can be said about it that a server would take.
                }
                call.id = callID(++callCount);
                DoneCall done = co_await carryOut(context.tools, std::move(call));
                round.calls.push_back(std::move(done));
            }
            if (round.calls.empty()) {
                round.complaint =
                    "That call could not be read. The tools are: " + toolNames(context.tools) + ".";
            }
            rounds.push_back(std::move(round));
        }
        const bool isFormed = !isNative && isConstrained;
        ChatRequest request = finalRequest(context, prompt, rounds, isFormed);
        Answered answered = co_await ask(connection, context, std::move(request));
        while (isTooLong(answered) && !rounds.empty()) {
            rounds.pop_back();
            request = finalRequest(context, prompt, rounds, isFormed);
            answered = co_await ask(connection, context, std::move(request));
        }
        if (!answered) {
            co_return failure(answered.error().message);
        }
        // As it was asked to, or because it has got used to the form.
        if (auto wrapped = contentInText(answered->content, objectWith("answer"))) {
            co_return std::get<std::string>(wrapped->find("answer")->kind);
        }
        co_return std::move(answered->content);
    }

    static ChatRequest nativeRequest(const Context& context, const std::string& prompt,
                                     const std::vector<Round>& rounds) {
        ChatRequest request;
        request.messages = openingMessages(context.instructions, prompt);
        appendNatively(request.messages, rounds);
        for (const auto& tool : context.tools) {
            request.tools.push_back(
                {tool->name(), tool->description(), tool->parameters().jsonSchema()});
        }
        return request;
    }

    static ChatRequest textRequest(const Context& context, const std::string& prompt,
                                   const std::vector<Round>& rounds, bool isConstrained) {
        ChatRequest request;
        request.messages = openingMessages(instructionsWithTools(context), prompt);
        appendAsText(request.messages, rounds);
        if (isConstrained) {
            request.schema = callOrAnswerSchema(context.tools);
        }
        return request;
    }

    static ChatRequest finalRequest(const Context& context, const std::string& prompt,
                                    const std::vector<Round>& rounds, bool isFormed) {
        ChatRequest request;
        request.messages = openingMessages(context.instructions, prompt);
        appendAsText(request.messages, rounds);
        request.messages.back().content +=
            "\n\nNow give your answer as text. No tool can be used any more.";
        if (isFormed) {
            // Else a weak model goes on writing calls.
            request.schema = callOrAnswerSchema({});
        }
        return request;
    }

    std::stop_source m_stop;
    Shared m_connection;
    Context m_context;
};

ServerModel::ServerModel(std::shared_ptr<HttpClient> http, std::shared_ptr<ModelServer> server,
                         Limits limits)
    : m_connection(std::make_shared<Connection>()) {
    m_connection->http = std::move(http);
    m_connection->server = std::move(server);
    m_connection->limits = limits;
}

ModelAvailability ServerModel::availability() {
    return ModelAvailability{m_connection->server->unavailableReason()};
}

std::shared_ptr<LanguageModelSession>
ServerModel::makeSession(std::string instructions, std::vector<std::shared_ptr<Tool>> tools) {
    return std::make_shared<Session>(m_connection, std::move(instructions), std::move(tools));
}

} // namespace ombrel

#include "platform/ServerModel.h"

#include "platform/ServerJson.h"
#include "platform/UserServer.h"
#include "tests/platform/Await.h"
#include "tests/platform/ScriptedServer.h"

#include <atomic>
#include <gtest/gtest.h>
#include <vector>

namespace ombrel {
namespace {

using namespace std::chrono_literals;
using test::await;
using test::ScriptedServer;
using Request = ScriptedServer::Request;
using Connection = ScriptedServer::Connection;

std::string quoted(const std::string& text) {
    rapidjson::StringBuffer buffer;
    JsonStream json(buffer);
    writeJsonText(json, text);
    return buffer.GetString();
}

std::string textEvent(const std::string& text) {
    return R"({"choices":[{"index":0,"delta":{"content":)" + quoted(text) + "}}]}";
}

std::string endEvent(const std::string& reason = "stop") {
    return R"({"choices":[{"index":0,"delta":{},"finish_reason":")" + reason + "\"}]}";
}

std::string callEvent(const std::string& name, const std::string& arguments) {
    return R"({"choices":[{"delta":{"tool_calls":[{"index":0,"id":"x","function":{"name":)" +
           quoted(name) + ",\"arguments\":" + quoted(arguments) + "}}]}}]}";
}

void say(Connection& connection, const std::string& text, const std::string& reason = "stop") {
    connection.stream({textEvent(text), endEvent(reason)});
}

std::string errorBody(const std::string& message) {
    return R"({"error":{"message":)" + quoted(message) + "}}";
}

bool mentions(const Request& request, const std::string& text) {
    return request.body.find(text) != std::string::npos;
}

// A tool that notes what it is called with.
class Lookup final : public Tool {
  public:
    std::string name() const override { return "look_up"; }
    std::string description() const override { return "Looks a word up."; }
    GenerationSchema parameters() const override {
        DynamicGenerationSchema::Object object;
        object.name = "Arguments";
        object.properties.push_back(
            {"word", "The word",
             std::make_shared<const DynamicGenerationSchema>(
                 DynamicGenerationSchema{DynamicGenerationSchema::Scalar::string}),
             false});
        return *GenerationSchema::make({object});
    }
    Task<std::string> call(GeneratedContent arguments) override {
        words.push_back(std::get<std::string>(arguments.find("word")->kind));
        std::string result = "entry for " + words.back();
        co_return result;
    }

    std::vector<std::string> words;
};

GenerationSchema ageSchema() {
    DynamicGenerationSchema::Object object;
    object.name = "Person";
    object.properties.push_back(
        {"age", std::nullopt,
         std::make_shared<const DynamicGenerationSchema>(
             DynamicGenerationSchema{DynamicGenerationSchema::Scalar::integer}),
         false});
    return *GenerationSchema::make({object});
}

class ServerModelTest : public testing::Test {
  protected:
    using Script = std::function<void(const Request&, Connection&)>;

    // A server that answers chats as `chat` does. It has no /props, unless `props` is its answer.
    void serve(Script chat, std::string props = {}) {
        m_server =
            std::make_unique<ScriptedServer>([chat = std::move(chat), props = std::move(props)](
                                                 const Request& request, Connection& connection) {
                if (request.path == "/v1/chat/completions") {
                    chat(request, connection);
                } else if (request.path == "/props" && !props.empty()) {
                    connection.answer(200, props);
                } else {
                    connection.answer(404, errorBody("not found"));
                }
            });
        useServer(m_server->url());
    }
    void useServer(const std::string& url) {
        const auto http = std::make_shared<HttpClient>(m_executor);
        m_model = std::make_shared<ServerModel>(
            http,
            std::make_shared<UserServer>(m_executor, http, ServerEndpoint{url, "key", "m", 4096}),
            m_limits);
    }

    std::string respond(const std::string& prompt) {
        const auto session = m_model->makeSession("Be kind.");
        const auto result = await(m_executor, session->respond(prompt));
        return result ? *result : "error: " + result.error().message;
    }
    std::string respondWithTool(const std::string& prompt) {
        const auto session = m_model->makeSession("Use it.", {m_tool});
        const auto result = await(m_executor, session->respond(prompt));
        return result ? *result : "error: " + result.error().message;
    }
    std::string generate(bool includeSchema = false) {
        const auto session = m_model->makeSession("");
        const auto result =
            await(m_executor, session->respond("How old?", ageSchema(), includeSchema));
        return result ? result->text() : "error: " + result.error().message;
    }
    std::vector<Request> chats() const { return m_server->requests("/v1/chat/completions"); }

    std::shared_ptr<RunLoopExecutor> m_executor = std::make_shared<RunLoopExecutor>();
    ServerModel::Limits m_limits;
    std::unique_ptr<ScriptedServer> m_server;
    std::shared_ptr<ServerModel> m_model;
    std::shared_ptr<Lookup> m_tool = std::make_shared<Lookup>();
};

TEST_F(ServerModelTest, SendsInstructionsAndPromptWithABoundAndNoSampling) {
    serve([](const Request&, Connection& connection) { say(connection, "Hello"); });
    EXPECT_EQ(respond("Hi \"there\""), "Hello");
    ASSERT_EQ(chats().size(), 1U);
    EXPECT_EQ(chats()[0].headers.at("authorization"), "Bearer key");
    EXPECT_EQ(chats()[0].body,
              R"({"model":"m","messages":[{"role":"system","content":"Be kind."},)"
              R"({"role":"user","content":"Hi \"there\""}],"max_tokens":800,"stream":true,)"
              R"("stream_options":{"include_usage":true}})");
}

TEST_F(ServerModelTest, AsksForNoMoreTokensThanTheContextLeaves) {
    serve([](const Request&, Connection& connection) { say(connection, "ok"); });
    respond(std::string(14000, 'x'));
    EXPECT_TRUE(mentions(chats()[0], "\"max_tokens\":594,"));
    respond(std::string(50000, 'x'));
    EXPECT_TRUE(mentions(chats()[1], "\"max_tokens\":128,"));
}

TEST_F(ServerModelTest, StreamsSnapshotsOfTheWholeTextAndUsageAtTheEnd) {
    serve([](const Request&, Connection& connection) {
        connection.stream({textEvent("Hel"), textEvent("lo"), endEvent(),
                           R"({"choices":[],"usage":{"prompt_tokens":10,"completion_tokens":2,)"
                           R"("prompt_tokens_details":{"cached_tokens":7}}})"});
    });
    std::vector<std::string> seen;
    const auto session = m_model->makeSession("");
    const auto last = await(m_executor, session->streamResponse("Hi", [&](const auto& snapshot) {
        seen.push_back(snapshot.content + (snapshot.usage ? " with usage" : ""));
    }));
    EXPECT_EQ(seen, (std::vector<std::string>{"Hel", "Hello", "Hello with usage"}));
    ASSERT_TRUE(last && *last);
    EXPECT_EQ((*last)->content, "Hello");
    EXPECT_EQ((*last)->usage, (ModelUsage{10, 7, 2}));
    EXPECT_FALSE(mentions(chats()[0], "system"));
}

TEST_F(ServerModelTest, AStreamWithoutUsageHasNone) {
    serve([](const Request&, Connection& connection) { say(connection, "Hello"); });
    const auto session = m_model->makeSession("");
    const auto last = await(m_executor, session->streamResponse("Hi", {}));
    ASSERT_TRUE(last && *last);
    EXPECT_EQ((*last)->usage, std::nullopt);
}

TEST_F(ServerModelTest, AStreamWithoutTextHasNoSnapshot) {
    serve([](const Request&, Connection& connection) { connection.stream({endEvent()}); });
    const auto session = m_model->makeSession("");
    const auto last =
        await(m_executor, session->streamResponse("Hi", [](const auto&) { ADD_FAILURE(); }));
    ASSERT_TRUE(last);
    EXPECT_EQ(*last, std::nullopt);
}

TEST_F(ServerModelTest, AStreamThatDiesInTheMiddleIsAnError) {
    serve([](const Request&, Connection& connection) {
        connection.beginStream();
        connection.send("data: " + textEvent("Hel") + "\n\ndata: {\"choi");
    });
    int count = 0;
    const auto session = m_model->makeSession("");
    const auto last =
        await(m_executor, session->streamResponse("Hi", [&](const auto&) { count++; }));
    ASSERT_FALSE(last);
    EXPECT_EQ(last.error().message, "The model server stopped in the middle of its answer.");
    EXPECT_EQ(count, 1);
}

TEST_F(ServerModelTest, AChunkedStreamThatDiesInTheMiddleIsAnError) {
    serve([](const Request&, Connection& connection) {
        const std::string event = "data: " + textEvent("Hel") + "\n\n";
        connection.send("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n");
        char length[16];
        std::snprintf(length, sizeof length, "%zx\r\n", event.size());
        connection.send(length + event + "\r\n");
        connection.close();
    });
    EXPECT_EQ(respond("Hi"), "error: The model server stopped in the middle of its answer.");
}

TEST_F(ServerModelTest, AServerThatIsNotThereIsAnErrorAndNotReady) {
    {
        const ScriptedServer gone([](const Request&, Connection&) {});
        useServer(gone.url());
        EXPECT_EQ(m_model->availability(), ModelAvailability());
    }
    EXPECT_TRUE(respond("Hi").starts_with("error: No server answers at http://127.0.0.1:"));
    EXPECT_EQ(m_model->availability().unavailableReason, "modelNotReady");
}

TEST_F(ServerModelTest, AServerElsewhereIsRefused) {
    useServer("http://192.0.2.1:8080");
    EXPECT_EQ(m_model->availability().unavailableReason, "serverNotOnThisMachine");
    EXPECT_TRUE(respond("Hi").starts_with(
        "error: The address http://192.0.2.1:8080 is not on this computer."));
}

TEST_F(ServerModelTest, AServerThatNeverAnswersIsAnError) {
    m_limits.idle = 30ms;
    serve([](const Request&, Connection& connection) { connection.waitForClient(); });
    EXPECT_EQ(respond("Hi"),
              "error: The server at " + m_server->url() + " sent nothing for 30 milliseconds.");
}

TEST_F(ServerModelTest, AnAnswerThatNeverEndsIsAnError) {
    m_limits.total = 50ms;
    serve([](const Request&, Connection& connection) {
        connection.beginStream();
        while (connection.send(": ping\n\n")) {
            std::this_thread::sleep_for(1ms);
        }
    });
    EXPECT_EQ(respond("Hi"), "error: The server at " + m_server->url() +
                                 " did not finish its answer within 50 milliseconds.");
}

TEST_F(ServerModelTest, ErrorsOfTheServerAreShown) {
    std::atomic<int> count = 0;
    serve([&](const Request&, Connection& connection) {
        switch (count++) {
        case 0:
            connection.answer(500, errorBody("out of memory"));
            break;
        case 1:
            connection.answer(500, "", "text/plain");
            break;
        case 2:
            connection.answer(200, "I am a teapot", "text/plain");
            break;
        default:
            connection.answer(400, R"({"error":{"type":"exceed_context_size_error",)"
                                   R"("n_prompt_tokens":9031,"n_ctx":8192,"message":"x"}})");
        }
    });
    EXPECT_EQ(respond("Hi"), "error: The model server answered with an error: out of memory");
    EXPECT_EQ(respond("Hi"), "error: The model server answered with status 500.");
    EXPECT_EQ(respond("Hi"), "error: The model server answered with something that is not JSON.");
    EXPECT_EQ(respond("Hi"), "error: The text is too long for the model: it has 9031 tokens, and "
                             "the model takes 8192.");
}

TEST_F(ServerModelTest, ASessionThatIsDestroyedAbandonsItsAnswer) {
    std::atomic<bool> hasHungUp = false;
    serve([&](const Request&, Connection& connection) {
        connection.beginStream();
        connection.send("data: " + textEvent("Hel") + "\n\n");
        connection.waitForClient();
        hasHungUp = true;
    });
    auto session = m_model->makeSession("");
    auto task = session->streamResponse("Hi", [&](const auto&) { session.reset(); });
    const auto last = await(m_executor, std::move(task));
    ASSERT_FALSE(last);
    EXPECT_EQ(last.error().message, "The request was cancelled.");
    m_server.reset();
    EXPECT_TRUE(hasHungUp);
}

TEST_F(ServerModelTest, ASnapshotMayDestroyTheTaskThatStreams) {
    serve([](const Request&, Connection& connection) {
        connection.stream({textEvent("a"), textEvent("b"), endEvent()});
    });
    using Streaming = Task<Result<std::optional<ModelSnapshot>>>;
    int count = 0;
    const auto session = m_model->makeSession("");
    auto task = std::make_unique<Streaming>();
    *task = session->streamResponse("Hi", [&](const auto&) {
        count++;
        task.reset();
    });
    task->await_suspend(std::noop_coroutine());
    m_executor->runUntil([&] { return count > 0; });
    bool isDone = false;
    m_executor->postAfter(10ms, [&] { isDone = true; });
    m_executor->runUntil([&] { return isDone; });
    EXPECT_EQ(count, 1);
}

TEST_F(ServerModelTest, TakesTheFirstModelOfAServerWhereNoneIsNamed) {
    ScriptedServer server([](const Request& request, Connection& connection) {
        if (request.path == "/v1/models") {
            connection.answer(200, R"({"data":[{"id":"first"},{"id":"second"}]})");
        } else {
            say(connection, "ok");
        }
    });
    const auto http = std::make_shared<HttpClient>(m_executor);
    ServerModel model(
        http, std::make_shared<UserServer>(m_executor, http,
                                           ServerEndpoint{server.url() + "/v1/", "", "", 0}));
    const auto session = model.makeSession("");
    EXPECT_EQ(await(m_executor, session->respond("Hi")), "ok");
    EXPECT_TRUE(mentions(server.requests("/v1/chat/completions")[0], R"("model":"first")"));
}

// Answers that are held to a schema

TEST_F(ServerModelTest, HoldsTheAnswerToTheSchema) {
    serve([](const Request&, Connection& connection) { say(connection, "{ \"age\": 7 }"); });
    EXPECT_EQ(generate(), R"({"age":7})");
    EXPECT_TRUE(mentions(chats()[0], R"("response_format":{"type":"json_schema","json_schema":{)"
                                     R"("name":"answer","strict":true,"schema":)" +
                                         ageSchema().jsonSchema() + "}}"));
    EXPECT_TRUE(mentions(chats()[0], R"("content":"How old?")"));
}

TEST_F(ServerModelTest, AddsTheSchemaToThePromptWhenAsked) {
    serve([](const Request&, Connection& connection) { say(connection, "{\"age\":7}"); });
    EXPECT_EQ(generate(true), R"({"age":7})");
    EXPECT_TRUE(mentions(chats()[0], "How old?\\n\\nAnswer with nothing but JSON"));
    EXPECT_TRUE(mentions(chats()[0], quoted(ageSchema().jsonSchema()).substr(1, 20)));
}

TEST_F(ServerModelTest, AsksInThePromptWhereAServerRefusesSchemas) {
    serve([](const Request& request, Connection& connection) {
        if (mentions(request, "response_format")) {
            connection.answer(400, errorBody("response_format is not supported"));
        } else {
            say(connection, "Sure:\n```json\n{\"age\": 7}\n```");
        }
    });
    EXPECT_EQ(generate(), R"({"age":7})");
    ASSERT_EQ(chats().size(), 2U);
    EXPECT_TRUE(mentions(chats()[1], "Answer with nothing but JSON"));
    // It is not asked again.
    EXPECT_EQ(generate(), R"({"age":7})");
    EXPECT_EQ(chats().size(), 3U);
}

TEST_F(ServerModelTest, AsksInThePromptWhereAServerIgnoresSchemas) {
    serve([](const Request& request, Connection& connection) {
        say(connection, mentions(request, "nothing but JSON") ? "{\"age\":7}" : "Seven years.");
    });
    EXPECT_EQ(generate(), R"({"age":7})");
    EXPECT_EQ(generate(), R"({"age":7})");
    EXPECT_EQ(chats().size(), 3U);
}

TEST_F(ServerModelTest, AsksInThePromptWhereAServerHoldsAnswersToJsonButNotToSchemas) {
    serve([](const Request& request, Connection& connection) {
        say(connection, mentions(request, "response_format") ? "{\"years\":7}" : "{\"age\":7}");
    });
    EXPECT_EQ(generate(), R"({"age":7})");
    EXPECT_EQ(generate(), R"({"age":7})");
    EXPECT_EQ(chats().size(), 3U);
    EXPECT_FALSE(mentions(chats()[2], "response_format"));
}

TEST_F(ServerModelTest, ASchemaThatIsRefusedByAServerThatTakesOthersSaysNothingOfThose) {
    serve([](const Request& request, Connection& connection) {
        if (mentions(request, "response_format") && mentions(request, "How old now?")) {
            connection.answer(400, errorBody("failed to parse grammar"));
        } else {
            say(connection, "{\"age\":7}");
        }
    });
    EXPECT_EQ(generate(), R"({"age":7})");
    const auto session = m_model->makeSession("");
    const auto refused = await(m_executor, session->respond("How old now?", ageSchema(), false));
    ASSERT_TRUE(refused);
    EXPECT_EQ(refused->text(), R"({"age":7})");
    EXPECT_EQ(generate(), R"({"age":7})");
    ASSERT_EQ(chats().size(), 4U);
    EXPECT_FALSE(mentions(chats()[2], "response_format"));
    EXPECT_TRUE(mentions(chats()[3], "response_format"));
}

TEST_F(ServerModelTest, GivesJsonThatNeverFitsAsItIs) {
    serve(
        [](const Request&, Connection& connection) { say(connection, "Well: {\"age\":\"old\"}"); });
    EXPECT_EQ(generate(), R"({"age":"old"})");
    EXPECT_EQ(chats().size(), 2U);
}

TEST_F(ServerModelTest, AnAnswerThatIsNeverJsonIsAnError) {
    serve([](const Request&, Connection& connection) { say(connection, "Seven years."); });
    EXPECT_EQ(generate(), "error: The model's answer does not fit what was asked for. The answer "
                          "holds no JSON.");
    EXPECT_EQ(chats().size(), 2U);
}

TEST_F(ServerModelTest, HalfAJsonObjectIsAnError) {
    serve([](const Request&, Connection& connection) { say(connection, "{\"age\": 7"); });
    EXPECT_EQ(generate(), "error: The model's answer does not fit what was asked for. The answer "
                          "holds no JSON.");
}

TEST_F(ServerModelTest, LeavesOptionalPropertiesOutThatAreNull) {
    using Schema = DynamicGenerationSchema;
    const auto text = std::make_shared<const Schema>(Schema{Schema::Scalar::string});
    const Schema::Object object{
        "Person", {{"nickname", std::nullopt, text, true}, {"name", std::nullopt, text, false}}};
    serve([](const Request&, Connection& connection) {
        say(connection, R"({"nickname": null, "name": "Ada"})");
    });
    const auto session = m_model->makeSession("");
    const auto schema = GenerationSchema::make({object});
    const auto content = await(m_executor, session->respond("Who?", *schema, false));
    ASSERT_TRUE(content);
    EXPECT_EQ(content->text(), R"({"name":"Ada"})");
}

TEST_F(ServerModelTest, PropertyNamesAndChoicesOfAnyCharactersSurvive) {
    using Schema = DynamicGenerationSchema;
    const std::vector<std::string> names = {"",         "a \"b\" c", "line\nbreak",
                                            "back\\sl", "😀 naïve",  std::string("n\0l", 3),
                                            "$ref",     "*",         "\xff"};
    Schema::Object object;
    object.name = "Output";
    for (const std::string& name : names) {
        const Schema::AnyOf choice{name, {"is " + name, "is " + name, "other"}};
        object.properties.push_back(
            {name, std::nullopt, std::make_shared<const Schema>(Schema{choice}), false});
    }
    const auto schema = GenerationSchema::make({object});
    ASSERT_TRUE(schema);
    // Answers with the first choice for every property that the schema in the request declares.
    serve([](const Request& request, Connection& connection) {
        const auto body = GeneratedContent::parse(request.body);
        const GeneratedContent* part = &*body;
        for (const char* key : {"response_format", "json_schema", "schema", "properties"}) {
            part = part->find(key);
        }
        GeneratedContent::Structure answer;
        for (const auto& [key, value] : std::get<GeneratedContent::Structure>(part->kind)) {
            const auto& choices = std::get<GeneratedContent::Array>(value.find("enum")->kind);
            EXPECT_EQ(choices.size(), 2U);
            answer.push_back({key, choices.front()});
        }
        say(connection, GeneratedContent{answer}.text());
    });
    const auto session = m_model->makeSession("");
    const auto content = await(m_executor, session->respond("Go!", *schema, true));
    ASSERT_TRUE(content) << content.error().message;
    EXPECT_EQ(chats().size(), 1U);
    for (const std::string& name : names) {
        const GeneratedContent* value = content->find(name);
        ASSERT_NE(value, nullptr) << name;
        EXPECT_EQ(std::get<std::string>(value->kind), "is " + repairUtf8(name));
    }
}

TEST_F(ServerModelTest, AnAnswerThatIsCutOffIsAnErrorThatSaysSo) {
    serve([](const Request&, Connection& connection) { say(connection, "{\"age\": 1", "length"); });
    EXPECT_EQ(generate(),
              "error: The model's answer was cut off before it was complete, by the limit of 800 "
              "tokens or by the end of the model's context.");
    EXPECT_EQ(chats().size(), 1U);
}

TEST_F(ServerModelTest, AServerThatRefusesWithAndWithoutSchemaIsAnError) {
    serve([](const Request&, Connection& connection) {
        connection.answer(400, errorBody("no such model"));
    });
    EXPECT_EQ(generate(), "error: The model server answered with an error: no such model");
}

// Tools

const std::string withoutTools =
    R"({"chat_template_caps":{"supports_tools":false,"supports_tool_calls":false}})";
const std::string withTools =
    R"({"chat_template_caps":{"supports_tools":true,"supports_tool_calls":true}})";

TEST_F(ServerModelTest, CallsToolsInTheProtocolsOwnWay) {
    for (const std::string& props : {withTools, std::string()}) {
        m_tool->words.clear();
        serve(
            [](const Request& request, Connection& connection) {
                if (!mentions(request, "entry for a")) {
                    connection.stream(
                        {callEvent("look_up", "{\"word\": \"a\"}"), endEvent("tool_calls")});
                } else if (!mentions(request, "entry for b")) {
                    connection.stream(
                        {callEvent("look_up", "{\"word\":\"b\"}"), endEvent("tool_calls")});
                } else {
                    say(connection, "done");
                }
            },
            props);
        EXPECT_EQ(respondWithTool("Look!"), "done");
        EXPECT_EQ(m_tool->words, (std::vector<std::string>{"a", "b"}));
        ASSERT_EQ(chats().size(), 3U);
        EXPECT_TRUE(mentions(chats()[2], R"("tools":[{"type":"function","function":{"name":)"
                                         R"("look_up","description":"Looks a word up.",)"));
        EXPECT_TRUE(mentions(
            chats()[2],
            R"({"role":"assistant","content":"","tool_calls":[{"id":"call00001","type":"function",)"
            R"("function":{"name":"look_up","arguments":"{\"word\":\"a\"}"}}]},)"
            R"({"role":"tool","content":"entry for a","tool_call_id":"call00001"},)"));
    }
}

TEST_F(ServerModelTest, CallsToolsThroughASchemaWhereTheTemplateKnowsNone) {
    serve(
        [](const Request& request, Connection& connection) {
            say(connection, mentions(request, "entry for a")
                                ? R"({"answer":"done"})"
                                : R"({"call":"look_up","arguments":{"word":"a"}})");
        },
        withoutTools);
    EXPECT_EQ(respondWithTool("Look!"), "done");
    EXPECT_EQ(m_tool->words, std::vector<std::string>{"a"});
    ASSERT_EQ(chats().size(), 2U);
    EXPECT_FALSE(mentions(chats()[0], "\"tools\""));
    EXPECT_TRUE(mentions(chats()[0], "- look_up: Looks a word up."));
    EXPECT_TRUE(mentions(chats()[0], R"("schema":{"anyOf":[{"type":"object","properties":{"call":)"
                                     R"({"type":"string","enum":["look_up"]},"arguments":)" +
                                         m_tool->parameters().jsonSchema()));
    EXPECT_TRUE(mentions(
        chats()[1],
        R"({"role":"assistant","content":"{\"call\":\"look_up\",\"arguments\":{\"word\":\"a\"}}"},)"
        R"({"role":"user","content":"Result of look_up:\nentry for a"})"));
    EXPECT_EQ(m_server->requests("/props").size(), 1U);
    respondWithTool("Look again!");
    EXPECT_EQ(m_server->requests("/props").size(), 1U);
}

TEST_F(ServerModelTest, AnswersAtOnceWithoutCallingATool) {
    serve([](const Request&, Connection& connection) { say(connection, "I know."); });
    EXPECT_EQ(respondWithTool("Look!"), "I know.");
    EXPECT_TRUE(m_tool->words.empty());
}

TEST_F(ServerModelTest, GoesOnByASchemaWhereAServerRefusesTools) {
    serve([](const Request& request, Connection& connection) {
        if (mentions(request, "\"tools\"")) {
            connection.answer(400, errorBody("tools are not supported"));
        } else {
            say(connection, mentions(request, "entry for a")
                                ? R"({"answer":"done"})"
                                : R"({"call":"look_up","arguments":{"word":"a"}})");
        }
    });
    EXPECT_EQ(respondWithTool("Look!"), "done");
    EXPECT_EQ(chats().size(), 3U);
}

TEST_F(ServerModelTest, GoesOnByAskingAloneWhereAServerRefusesSchemasToo) {
    serve([](const Request& request, Connection& connection) {
        if (mentions(request, "\"tools\"") || mentions(request, "response_format")) {
            connection.answer(400, errorBody("not supported"));
        } else {
            say(connection,
                mentions(request, "entry for a")
                    ? "Well then: done"
                    : "I call {\"call\": \"look_up\", \"arguments\": {\"word\": \"a\"}}");
        }
    });
    EXPECT_EQ(respondWithTool("Look!"), "Well then: done");
    EXPECT_EQ(m_tool->words, std::vector<std::string>{"a"});
}

TEST_F(ServerModelTest, GoesOnWithWhatWasSaidWhenAServerFailsOverACall) {
    std::atomic<int> count = 0;
    serve([&](const Request& request, Connection& connection) {
        if (count++ == 0) {
            connection.stream({callEvent("look_up", "{\"word\":\"a\"}"), endEvent("tool_calls")});
        } else if (mentions(request, "\"tools\"")) {
            connection.stream({R"({"error":{"message":"Failed to parse the tool call"}})"});
        } else {
            say(connection, R"({"answer":"done"})");
        }
    });
    EXPECT_EQ(respondWithTool("Look!"), "done");
    EXPECT_TRUE(mentions(chats()[2], "Result of look_up:\\nentry for a"));
    // It may go well the next time.
    respondWithTool("Look!");
    EXPECT_TRUE(mentions(chats()[3], "\"tools\""));
}

TEST_F(ServerModelTest, TellsTheModelWhatIsWrongWithACall) {
    for (const auto& [name, arguments, complaint] :
         std::vector<std::tuple<std::string, std::string, std::string>>{
             {"open", "{}", "Error: there is no tool \\\"open\\\". The tools are: look_up."},
             {"look_up", "{broken", "Error: the arguments of the call are not a JSON object."},
             {"look_up", "[1]", "Error: the arguments of the call are not a JSON object."},
             {"look_up", "", "Error in the arguments: \\\"word\\\" is missing."},
             {"look_up", "{\"word\":5}",
              "Error in the arguments: \\\"word\\\" is not a string."}}) {
        const std::string called = name;
        const std::string given = arguments;
        std::atomic<int> count = 0;
        serve([&](const Request&, Connection& connection) {
            if (count++ == 0) {
                connection.stream({callEvent(called, given), endEvent("tool_calls")});
            } else {
                say(connection, "sorry");
            }
        });
        EXPECT_EQ(respondWithTool("Look!"), "sorry");
        EXPECT_TRUE(m_tool->words.empty());
        EXPECT_TRUE(mentions(chats()[1], complaint)) << chats()[1].body;
        // What could not be read is not sent again.
        EXPECT_FALSE(mentions(chats()[1], "broken"));
        EXPECT_FALSE(mentions(chats()[1], "\"[1]\""));
    }
}

TEST_F(ServerModelTest, DropsACallWithoutAName) {
    std::atomic<int> count = 0;
    serve([&](const Request&, Connection& connection) {
        if (count++ == 0) {
            connection.stream({callEvent("", "{}"), endEvent("tool_calls")});
        } else {
            say(connection, "sorry");
        }
    });
    EXPECT_EQ(respondWithTool("Look!"), "sorry");
    EXPECT_FALSE(mentions(chats()[1], "tool_calls"));
    EXPECT_TRUE(mentions(chats()[1], "That call could not be read. The tools are: look_up."));
}

TEST_F(ServerModelTest, AsksForTheAnswerWithoutToolsAfterSixteenRounds) {
    for (const std::string& props : {withTools, withoutTools}) {
        m_tool->words.clear();
        serve(
            [](const Request& request, Connection& connection) {
                if (mentions(request, "No tool can be used any more.")) {
                    say(connection, "enough");
                } else if (mentions(request, "\"tools\"")) {
                    connection.stream(
                        {callEvent("look_up", "{\"word\":\"a\"}"), endEvent("tool_calls")});
                } else {
                    say(connection, R"({"call":"look_up","arguments":{"word":"a"}})");
                }
            },
            props);
        EXPECT_EQ(respondWithTool("Look!"), "enough");
        EXPECT_EQ(m_tool->words.size(), 16U);
        ASSERT_EQ(chats().size(), 17U);
        EXPECT_FALSE(mentions(chats()[16], "\"tools\""));
        EXPECT_EQ(mentions(chats()[16], "response_format"), props == withoutTools);
    }
}

TEST_F(ServerModelTest, AsksForTheAnswerWithWhatFitsWhenTheToolsFillTheContext) {
    serve(
        [&](const Request& request, Connection& connection) {
            const bool isFinal = mentions(request, "No tool can be used any more.");
            if (isFinal && request.body.size() < 4000) {
                say(connection, "enough");
            } else if (!isFinal && request.body.size() < 6000) {
                const std::string word(1000, 'a');
                say(connection, R"({"call":"look_up","arguments":{"word":")" + word + R"("}})");
            } else {
                connection.answer(400, R"({"error":{"type":"exceed_context_size_error",)"
                                       R"("n_prompt_tokens":9031,"n_ctx":8192,"message":"x"}})");
            }
        },
        withoutTools);
    EXPECT_EQ(respondWithTool("Look!"), "enough");
    EXPECT_GT(m_tool->words.size(), 1U);
    EXPECT_LT(m_tool->words.size(), 16U);
}

TEST_F(ServerModelTest, AToolFailureKeepsTheErrorOfTheModel) {
    std::atomic<int> count = 0;
    serve([&](const Request&, Connection& connection) {
        if (count++ == 0) {
            connection.stream({callEvent("look_up", "{\"word\":\"a\"}"), endEvent("tool_calls")});
        } else {
            connection.beginStream();
        }
    });
    EXPECT_EQ(respondWithTool("Look!"), "error: The model server gave an empty answer.");
    EXPECT_EQ(m_tool->words.size(), 1U);
}

} // namespace
} // namespace ombrel

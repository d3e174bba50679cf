#include "platform/ChatCompletion.h"

#include <gtest/gtest.h>
#include <vector>

namespace ombrel {
namespace {

std::string delta(const std::string& text) {
    return "data: {\"choices\":[{\"index\":0,\"delta\":{\"content\":\"" + text + "\"}}]}\n\n";
}

const std::string ending = "data: {\"choices\":[{\"delta\":{},\"finish_reason\":\"stop\"}]}\n\n"
                           "data: [DONE]\n\n";

Result<ChatAnswer, ChatError> read(std::string_view stream) {
    ChatAnswerReader reader;
    reader.take(stream);
    return reader.finish();
}

std::string problem(std::string_view stream) {
    const auto answer = read(stream);
    return answer ? "no problem" : answer.error().message;
}

TEST(ChatAnswerReader, PutsTheAnswerTogetherHoweverItIsCut) {
    const std::string usage =
        "data: {\"choices\":[],\"usage\":{\"prompt_tokens\":12,\"completion_tokens\":3,"
        "\"prompt_tokens_details\":{\"cached_tokens\":9}}}\n\n";
    const std::string stream =
        ": ping\r\n\r\ndata: {\"choices\":[{\"delta\":{\"role\":\"assistant\","
        "\"content\":null}}]}\r\n\r\n" +
        delta("H\xC3\xA9 ") + delta("\xF0\x9F\x98\x80") + delta("\\n!") +
        "data: {\"choices\":[{\"delta\":{},\"finish_reason\":\"stop\"}]}\n\n" + usage +
        "data: [DONE]\n\n";
    for (std::size_t length = 1; length < 60; length++) {
        std::vector<std::string> seen;
        std::vector<bool> hasUsage;
        ChatAnswerReader reader([&](const ChatAnswer& soFar) {
            seen.push_back(soFar.content);
            hasUsage.push_back(soFar.usage.has_value());
        });
        for (std::size_t i = 0; i < stream.size(); i += length) {
            reader.take(std::string_view(stream).substr(i, length));
        }
        const auto answer = reader.finish();
        ASSERT_TRUE(answer);
        EXPECT_EQ(answer->content, "H\xC3\xA9 \xF0\x9F\x98\x80\n!");
        EXPECT_FALSE(answer->isCutOff);
        EXPECT_EQ(answer->usage, (ModelUsage{12, 9, 3}));
        EXPECT_EQ(seen, (std::vector<std::string>{"H\xC3\xA9 ", "H\xC3\xA9 \xF0\x9F\x98\x80",
                                                  "H\xC3\xA9 \xF0\x9F\x98\x80\n!",
                                                  "H\xC3\xA9 \xF0\x9F\x98\x80\n!"}));
        EXPECT_EQ(hasUsage, (std::vector<bool>{false, false, false, true}));
    }
}

TEST(ChatAnswerReader, DoesWithoutUsage) {
    const auto answer = read(delta("a") + ending);
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->usage, std::nullopt);
    const auto odd = read("data: {\"choices\":[{\"delta\":{\"content\":\"a\"}}],\"usage\":null}\n\n"
                          "data: {\"usage\":{\"prompt_tokens\":\"many\"}}\n\n" +
                          ending);
    ASSERT_TRUE(odd);
    EXPECT_EQ(odd->usage, ModelUsage());
}

TEST(ChatAnswerReader, TellsAnAnswerThatWasCutOff) {
    const auto answer =
        read(delta("a") + "data: {\"choices\":[{\"finish_reason\":\"length\"}]}\n\n");
    ASSERT_TRUE(answer);
    EXPECT_TRUE(answer->isCutOff);
}

TEST(ChatAnswerReader, AStreamThatDiesInTheMiddleIsAnError) {
    const std::string stopped = "The model server stopped in the middle of its answer.";
    EXPECT_EQ(problem(delta("a")), stopped);
    EXPECT_EQ(problem(delta("a") + "data: {\"choices\":[{\"del"), stopped);
    EXPECT_EQ(problem(delta("a") + "data: [DO"), stopped);
    EXPECT_EQ(problem(": ping\n\n" + delta("a") + "da"), stopped);
}

TEST(ChatAnswerReader, TheEndOfTheStreamEndsItsLastEvent) {
    EXPECT_EQ(problem(delta("a") + "data: [DONE]"), "no problem");
    EXPECT_EQ(problem(delta("a") + "data: {\"choices\":[{\"finish_reason\":\"stop\"}]}\n"),
              "no problem");
}

TEST(ChatAnswerReader, RefusesNonsense) {
    const std::string notJson = "The model server answered with something that is not JSON.";
    EXPECT_EQ(problem("data: hello\n\n"), notJson);
    EXPECT_EQ(problem("data: [1,2]\n\n"), notJson);
    EXPECT_EQ(problem("<html>welcome</html>"), notJson);
    EXPECT_EQ(problem(""), "The model server gave an empty answer.");
    EXPECT_EQ(problem("{\"hello\":1}"),
              "The model server answered with something that is not a chat answer.");
    EXPECT_EQ(problem("data: {\"choices\":7}\n\ndata: {\"choices\":[7]}\n\n"
                      "data: {\"choices\":[{\"delta\":[]}]}\n\n" +
                      ending),
              "no problem");
    EXPECT_EQ(problem("data: " + std::string(200000, '[') + "\n\n"), notJson);
    EXPECT_EQ(
        problem("data: {\"a\":" + std::string(200000, '[') + std::string(200000, ']') + "}\n\n"),
        notJson);
    EXPECT_EQ(problem(delta(std::string(2000, '[') + "\\\"{") + ending), "no problem");
}

TEST(ChatAnswerReader, RepairsTextThatIsNotUtf8) {
    const auto answer = read(delta("a\xFF") + ending);
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->content, "a\xEF\xBF\xBD");
}

TEST(ChatAnswerReader, GivesAnErrorInTheStream) {
    EXPECT_EQ(problem(delta("a") + "data: {\"error\":{\"message\":\"out of memory\"}}\n\n"),
              "The model server answered with an error: out of memory");
}

TEST(ChatAnswerReader, ReadsAnAnswerThatIsNotAStream) {
    const auto answer = read("{\"choices\":[{\"message\":{\"content\":\"all\"},"
                             "\"finish_reason\":\"stop\"}],\n\n\"usage\":{\"prompt_tokens\":3}}");
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->content, "all");
    EXPECT_EQ(answer->usage, (ModelUsage{3, 0, 0}));
}

TEST(ChatAnswerReader, TellsThoughtsFromTheAnswer) {
    const std::string thought =
        "data: {\"choices\":[{\"delta\":{\"reasoning_content\":\"hm\"}}]}\n\n";
    EXPECT_EQ(read(thought + delta("a") + ending)->content, "a");
    EXPECT_EQ(problem(thought + "data: {\"choices\":[{\"finish_reason\":\"length\"}]}\n\n"),
              "The model used all the tokens of its answer for thinking.");
}

std::string toolDelta(const std::string& calls) {
    return "data: {\"choices\":[{\"delta\":{\"tool_calls\":[" + calls + "]}}]}\n\n";
}

TEST(ChatAnswerReader, PutsToolCallsTogether) {
    const auto answer =
        read(toolDelta(R"({"index":0,"id":"x","function":{"name":"find","arguments":""}})") +
             toolDelta(R"({"index":0,"function":{"arguments":"{\"q\":"}})") +
             toolDelta(R"({"index":3,"id":"y","function":{"name":"open","arguments":"{}"}})") +
             toolDelta(R"({"index":0,"function":{"name":"find","arguments":"1}"}})") + ending);
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->toolCalls,
              (std::vector<ChatToolCall>{{"x", "find", "{\"q\":1}"}, {"y", "open", "{}"}}));
}

TEST(ChatAnswerReader, PutsToolCallsWithoutIndicesTogether) {
    const auto answer =
        read(toolDelta(R"({"id":"x","function":{"name":"find","arguments":"{\"q\":"}})") +
             toolDelta(R"({"id":"x","function":{"arguments":"1}"}})") +
             toolDelta(R"({"id":"y","function":{"name":"open","arguments":{"a":[1]}}}, 7, {})") +
             ending);
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->toolCalls, (std::vector<ChatToolCall>{{"x", "find", "{\"q\":1}"},
                                                            {"y", "open", "{\"a\":[1]}"}}));
}

TEST(ChatAnswerReader, IsSilentOnceAbandoned) {
    int count = 0;
    ChatAnswerReader* self = nullptr;
    ChatAnswerReader reader([&](const ChatAnswer&) {
        count++;
        self->abandon();
    });
    self = &reader;
    reader.take(delta("a") + delta("b"));
    reader.take(delta("c"));
    EXPECT_EQ(count, 1);
}

std::string errorText(int status, const std::string& body,
                      const std::string& type = "application/json") {
    return chatError({status, type, body}).message;
}

TEST(ChatError, SaysWhatTheServerSays) {
    EXPECT_EQ(errorText(500, R"({"error":{"message":"no memory","code":500}})"),
              "The model server answered with an error: no memory");
    EXPECT_EQ(errorText(404, R"({"error":"model 'x' not found"})"),
              "The model server answered with an error: model 'x' not found");
    EXPECT_EQ(errorText(422, R"({"detail":"bad field"})"),
              "The model server answered with an error: bad field");
    EXPECT_EQ(errorText(500, "it broke\n", "text/plain"),
              "The model server answered with an error: it broke");
}

TEST(ChatError, GivesTheStatusWhereTheServerSaysNothing) {
    EXPECT_EQ(errorText(502, "<html><h1>Bad Gateway</h1></html>", "text/html; charset=utf-8"),
              "The model server answered with status 502.");
    EXPECT_EQ(errorText(500, ""), "The model server answered with status 500.");
    EXPECT_EQ(errorText(500, R"({"error":{"code":1}})"),
              "The model server answered with status 500.");
}

TEST(ChatError, SaysThatATextIsTooLong) {
    EXPECT_EQ(errorText(400, R"({"error":{"code":400,"message":"the request is too big",)"
                             R"("type":"exceed_context_size_error","n_prompt_tokens":9031,)"
                             R"("n_ctx":8192}})"),
              "The text is too long for the model: it has 9031 tokens, and the model takes 8192.");
    const auto error = chatError(
        {400, "application/json",
         R"({"error":{"message":"This model's maximum context length is 4096 tokens."}})"});
    EXPECT_EQ(error.kind, ChatError::Kind::tooLong);
    EXPECT_EQ(error.message, "The text is too long for the model.");
}

TEST(ChatError, SaysThatTheKeyIsWrong) {
    const auto error =
        chatError({401, "application/json", R"({"error":{"message":"Invalid API Key"}})"});
    EXPECT_EQ(error.kind, ChatError::Kind::notAllowed);
    EXPECT_EQ(error.message, "The model server does not accept the key.");
}

TEST(ChatRequestBody, HoldsWhatTheProtocolAsksFor) {
    ChatRequest request;
    ChatMessage system;
    system.role = ChatMessage::Role::system;
    system.content = "Be \"short\".";
    ChatMessage assistant;
    assistant.role = ChatMessage::Role::assistant;
    assistant.toolCalls = {{"call00001", "find", "{\"q\":1}"}};
    ChatMessage tool;
    tool.role = ChatMessage::Role::tool;
    tool.content = "nothing\xFF";
    tool.toolCallID = "call00001";
    request.messages = {system, assistant, tool};
    request.tools = {{"find", "Finds.", "{\"type\":\"object\"}"}};
    request.schema = "{\"type\":\"string\"}";
    request.maximumTokens = 5;
    EXPECT_EQ(
        chatRequestBody(request, "m"),
        R"({"model":"m","messages":[{"role":"system","content":"Be \"short\"."},)"
        R"({"role":"assistant","content":"","tool_calls":[{"id":"call00001","type":"function",)"
        R"("function":{"name":"find","arguments":"{\"q\":1}"}}]},)"
        "{\"role\":\"tool\",\"content\":\"nothing\xEF\xBF\xBD\",\"tool_call_id\":\"call00001\"}],"
        R"("tools":[{"type":"function","function":{"name":"find","description":"Finds.",)"
        R"("parameters":{"type":"object"}}}],"response_format":{"type":"json_schema",)"
        R"("json_schema":{"name":"answer","strict":true,"schema":{"type":"string"}}},)"
        R"("max_tokens":5,"stream":true,"stream_options":{"include_usage":true}})");
}

} // namespace
} // namespace ombrel

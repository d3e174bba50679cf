#include "platform/ServerEmbedder.h"

#include "platform/ServerJson.h"
#include "platform/UserServer.h"
#include "tests/platform/Await.h"
#include "tests/platform/ScriptedServer.h"

#include <atomic>
#include <cmath>
#include <gtest/gtest.h>
#include <vector>

namespace ombrel {
namespace {

using test::await;
using test::ScriptedServer;
using Request = ScriptedServer::Request;
using Connection = ScriptedServer::Connection;
using Vectors = std::vector<std::optional<Vector>>;

std::vector<std::string> inputs(const std::string& body) {
    const auto document = parseServerJson(body);
    std::vector<std::string> texts;
    for (const auto& text : (*jsonMember(document, "input")).GetArray()) {
        texts.push_back(*jsonText(&text));
    }
    return texts;
}

// The answer that gives each text the vector (its length, 1), the last one first.
std::string lengths(const std::vector<std::string>& texts) {
    std::string data;
    for (std::size_t i = texts.size(); i-- > 0;) {
        data += std::string(data.empty() ? "" : ",") + "{\"index\":" + std::to_string(i) +
                ",\"embedding\":[" + std::to_string(texts[i].size()) + ",1]}";
    }
    return "{\"data\":[" + data + "]}";
}

const std::string tooLong =
    R"({"error":{"code":400,"message":"input is larger than the max context size",)"
    R"("type":"exceed_context_size_error"}})";

class ServerEmbedderTest : public testing::Test {
  protected:
    using Answer = std::function<void(const std::vector<std::string>&, Connection&)>;

    void serve(Answer answer, std::vector<std::string> languages = {}) {
        m_server = std::make_unique<ScriptedServer>(
            [answer = std::move(answer)](const Request& request, Connection& connection) {
                answer(inputs(request.body), connection);
            });
        const auto http = std::make_shared<HttpClient>(m_executor);
        m_embedder = std::make_shared<ServerEmbedder>(
            http,
            std::make_shared<UserServer>(m_executor, http,
                                         ServerEndpoint{m_server->url(), "key", "m", 0}),
            std::move(languages));
    }
    Vectors vectors(std::vector<std::string> texts, const std::string& language = "en") {
        return await(m_executor, m_embedder->vectors(language, std::move(texts)));
    }

    std::shared_ptr<RunLoopExecutor> m_executor = std::make_shared<RunLoopExecutor>();
    std::unique_ptr<ScriptedServer> m_server;
    std::shared_ptr<ServerEmbedder> m_embedder;
};

TEST_F(ServerEmbedderTest, GivesEachTextItsVectorInWhateverOrderTheyCome) {
    serve([](const auto& texts, auto& connection) { connection.answer(200, lengths(texts)); });
    EXPECT_EQ(vectors({"a", "bb", "ccc"}), (Vectors{Vector{1, 1}, Vector{2, 1}, Vector{3, 1}}));
    const auto requests = m_server->requests();
    ASSERT_EQ(requests.size(), 1U);
    EXPECT_EQ(requests[0].path, "/v1/embeddings");
    EXPECT_EQ(requests[0].body, R"({"model":"m","input":["a","bb","ccc"]})");
    EXPECT_EQ(requests[0].headers.at("authorization"), "Bearer key");
}

TEST_F(ServerEmbedderTest, StoresTheNearestFloatAsADouble) {
    serve([](const auto&, auto& connection) {
        connection.answer(200, R"({"data":[{"embedding":[0.1,-1e-3,7]}]})");
    });
    EXPECT_EQ(vectors({"a"}),
              (Vectors{Vector{static_cast<double>(0.1F), static_cast<double>(-1e-3F), 7.0}}));
}

TEST_F(ServerEmbedderTest, AsksForManyTextsInBatches) {
    serve([](const auto& texts, auto& connection) { connection.answer(200, lengths(texts)); });
    std::vector<std::string> texts;
    for (int i = 0; i < 70; i++) {
        texts.emplace_back(static_cast<std::size_t>(i), 'x');
    }
    const auto result = vectors(texts);
    for (std::size_t i = 0; i < 70; i++) {
        EXPECT_EQ(result[i], (Vector{static_cast<double>(i), 1}));
    }
    EXPECT_EQ(m_server->requests().size(), 3U);
    EXPECT_EQ(m_embedder->batchSize(), 32U);
}

TEST_F(ServerEmbedderTest, AsksForATextOnce) {
    serve([](const auto& texts, auto& connection) { connection.answer(200, lengths(texts)); });
    EXPECT_EQ(vectors({"a", "bb", "a"}), (Vectors{Vector{1, 1}, Vector{2, 1}, Vector{1, 1}}));
    EXPECT_EQ(vectors({"bb", "ccc"}), (Vectors{Vector{2, 1}, Vector{3, 1}}));
    EXPECT_EQ(vectors({"a"}), (Vectors{Vector{1, 1}}));
    const auto requests = m_server->requests();
    ASSERT_EQ(requests.size(), 2U);
    EXPECT_EQ(inputs(requests[0].body), (std::vector<std::string>{"a", "bb"}));
    EXPECT_EQ(inputs(requests[1].body), std::vector<std::string>{"ccc"});
}

TEST_F(ServerEmbedderTest, NoTextsNeedNoServer) {
    serve([](const auto&, auto& connection) { connection.answer(500, ""); });
    EXPECT_EQ(vectors({}), Vectors());
    EXPECT_TRUE(m_server->requests().empty());
}

TEST_F(ServerEmbedderTest, ATextThatFailsLeavesTheOthersTheirVectors) {
    serve([](const auto& texts, auto& connection) {
        for (const auto& text : texts) {
            if (text == "bad") {
                connection.answer(500, R"({"error":{"message":"cannot embed"}})");
                return;
            }
        }
        connection.answer(200, lengths(texts));
    });
    EXPECT_EQ(vectors({"a", "bad", "ccc", "dddd"}),
              (Vectors{Vector{1, 1}, std::nullopt, Vector{3, 1}, Vector{4, 1}}));
}

TEST_F(ServerEmbedderTest, ATextThatIsTooLongGetsTheWeightedMeanOfItsParts) {
    serve([](const auto& texts, auto& connection) {
        for (const auto& text : texts) {
            if (text.size() > 20) {
                connection.answer(400, tooLong);
                return;
            }
        }
        connection.answer(200, lengths(texts));
    });
    // Cut at the blank nearest to the middle: 16 and 15 bytes with the blank at the second's start.
    const std::string text = std::string(16, 'a') + " " + std::string(14, 'b');
    const auto result = vectors({"x", text, "yy"});
    EXPECT_EQ(result[0], (Vector{1, 1}));
    EXPECT_EQ(result[2], (Vector{2, 1}));
    ASSERT_TRUE(result[1]);
    const double first = 16.0 * 16.0 + 15.0 * 15.0;
    const double second = 16.0 + 15.0;
    const double length = std::sqrt(first * first + second * second);
    EXPECT_DOUBLE_EQ((*result[1])[0], first / length);
    EXPECT_DOUBLE_EQ((*result[1])[1], second / length);
    const auto requests = m_server->requests();
    EXPECT_EQ(inputs(requests[requests.size() - 3].body),
              std::vector<std::string>{std::string(16, 'a')});
    EXPECT_EQ(inputs(requests[requests.size() - 2].body),
              std::vector<std::string>{" " + std::string(14, 'b')});
}

TEST_F(ServerEmbedderTest, CutsBetweenScalarsWhereThereIsNoWhiteSpace) {
    std::atomic<int> invalid = 0;
    serve([&](const auto& texts, auto& connection) {
        for (const auto& text : texts) {
            invalid += !isValidUtf8(text) || text.find("\xEF\xBF\xBD") != std::string::npos;
            if (text.size() > 20) {
                connection.answer(413, "");
                return;
            }
        }
        connection.answer(200, lengths(texts));
    });
    std::string text;
    for (int i = 0; i < 33; i++) {
        text += "\xE2\x82\xAC";
    }
    EXPECT_TRUE(vectors({text})[0]);
    EXPECT_EQ(invalid, 0);
}

TEST_F(ServerEmbedderTest, ATextWhosePartsAllFailGetsNothing) {
    serve([](const auto&, auto& connection) { connection.answer(400, tooLong); });
    EXPECT_EQ(vectors({std::string(200, 'x') + " y", ""}), (Vectors{std::nullopt, std::nullopt}));
}

TEST_F(ServerEmbedderTest, AnAnswerThatMakesNoSenseGivesNothing) {
    for (const std::string body :
         {"nonsense", "{}", "[]", R"({"data":[]})", R"({"data":[{"embedding":[]}]})",
          R"({"data":[{"embedding":["1"]}]})", R"({"data":[{"embedding":[1e300]}]})",
          R"({"data":[{"embedding":[1],"index":1}]})", R"({"data":[{"embedding":[1],"index":-1}]})",
          R"({"data":[{"embedding":[1]},{"embedding":[1]}]})"}) {
        serve([body](const auto&, auto& connection) { connection.answer(200, body); });
        EXPECT_EQ(vectors({"a"}), Vectors{std::nullopt}) << body;
    }
}

TEST_F(ServerEmbedderTest, AServerThatIsNotThereGivesNothing) {
    serve([](const auto& texts, auto& connection) { connection.answer(200, lengths(texts)); });
    EXPECT_TRUE(m_embedder->supports("en"));
    m_server.reset();
    EXPECT_EQ(vectors(std::vector<std::string>(40, "a")), Vectors(40));
    EXPECT_FALSE(m_embedder->supports("en"));
}

TEST_F(ServerEmbedderTest, AServerThatDiesIsAskedForNoOtherBatch) {
    serve([](const auto&, auto& connection) { connection.close(); });
    std::vector<std::string> texts;
    for (std::size_t i = 0; i < 100; i++) {
        texts.emplace_back(i, 'x');
    }
    EXPECT_EQ(vectors(texts), Vectors(100));
    EXPECT_EQ(m_server->requests().size(), 1U);
}

TEST_F(ServerEmbedderTest, AWrongKeyGivesNothing) {
    serve([](const auto&, auto& connection) { connection.answer(401, ""); });
    EXPECT_EQ(vectors({"a", "b"}), Vectors(2));
    EXPECT_EQ(m_server->requests().size(), 1U);
}

TEST_F(ServerEmbedderTest, KnowsTheLanguagesOfItsModel) {
    serve([](const auto& texts, auto& connection) { connection.answer(200, lengths(texts)); },
          {"en", "zh"});
    EXPECT_TRUE(m_embedder->supports("en"));
    EXPECT_TRUE(m_embedder->supports("en-GB"));
    EXPECT_TRUE(m_embedder->supports("zh-Hans"));
    EXPECT_FALSE(m_embedder->supports("de"));
    EXPECT_FALSE(m_embedder->supports("enm"));
    EXPECT_EQ(vectors({"a"}, "de"), Vectors{std::nullopt});
    EXPECT_TRUE(m_server->requests().empty());
    serve([](const auto& texts, auto& connection) { connection.answer(200, lengths(texts)); });
    EXPECT_TRUE(m_embedder->supports("de"));
}

} // namespace
} // namespace ombrel

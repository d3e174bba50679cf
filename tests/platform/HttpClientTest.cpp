#include "platform/HttpClient.h"

#include "tests/platform/Await.h"
#include "tests/platform/ScriptedServer.h"

#include <cstdlib>
#include <curl/curl.h>
#include <gtest/gtest.h>

namespace ombrel {
namespace {

using namespace std::chrono_literals;
using test::await;
using test::ScriptedServer;

class HttpClientTest : public testing::Test {
  protected:
    Result<HttpResponse, HttpError> send(HttpRequest request) {
        return await(m_executor, m_client.send(std::move(request)));
    }
    Result<HttpResponse, HttpError> get(const std::string& url) {
        HttpRequest request;
        request.url = url;
        return send(request);
    }

    std::shared_ptr<RunLoopExecutor> m_executor = std::make_shared<RunLoopExecutor>();
    HttpClient m_client{m_executor};
};

TEST_F(HttpClientTest, SendsABodyByPostWithItsKey) {
    ScriptedServer server([](const auto& request, auto& connection) {
        connection.answer(201, request.method + " " + request.path + " " + request.body);
    });
    HttpRequest request;
    request.url = server.url() + "/v1/things?x=1";
    request.body = "{\"a\":1}";
    request.key = "secret";
    const auto response = send(request);
    ASSERT_TRUE(response);
    EXPECT_EQ(response->status, 201);
    EXPECT_EQ(response->contentType, "application/json");
    EXPECT_EQ(response->body, "POST /v1/things?x=1 {\"a\":1}");
    const auto headers = server.requests()[0].headers;
    EXPECT_EQ(headers.at("authorization"), "Bearer secret");
    EXPECT_EQ(headers.at("content-type"), "application/json");
}

TEST_F(HttpClientTest, GetsWithoutABodyAndGivesErrorsOfTheServerAsResponses) {
    ScriptedServer server([](const auto& request, auto& connection) {
        connection.answer(request.headers.contains("authorization") ? 500 : 404, request.method);
    });
    const auto response = get(server.url());
    ASSERT_TRUE(response);
    EXPECT_EQ(response->status, 404);
    EXPECT_EQ(response->body, "GET");
}

TEST_F(HttpClientTest, SendsNoKeyThatWouldAddHeaders) {
    ScriptedServer server([](const auto&, auto& connection) { connection.answer(200, "{}"); });
    HttpRequest request;
    request.url = server.url();
    request.key = "secret\r\nX-Other: 1";
    ASSERT_TRUE(send(request));
    EXPECT_FALSE(server.requests()[0].headers.contains("authorization"));
    EXPECT_FALSE(server.requests()[0].headers.contains("x-other"));
}

TEST_F(HttpClientTest, HandsOverTheBodyAsItComesAndInOrder) {
    ScriptedServer server([](const auto&, auto& connection) {
        connection.beginStream();
        for (int i = 0; i < 200; i++) {
            connection.send(std::to_string(i) + ",");
            if (i % 50 == 0) {
                std::this_thread::sleep_for(2ms);
            }
        }
    });
    std::string expected;
    for (int i = 0; i < 200; i++) {
        expected += std::to_string(i) + ",";
    }
    std::string received;
    HttpRequest request;
    request.url = server.url();
    request.onBody = [&](std::string_view bytes) { received += bytes; };
    const auto response = send(request);
    ASSERT_TRUE(response);
    EXPECT_EQ(received, expected);
    EXPECT_EQ(response->body, "");
}

TEST_F(HttpClientTest, HandsOverTheFirstPieceBeforeTheLastIsSent) {
    std::mutex mutex;
    std::condition_variable changed;
    bool hasReceived = false;
    ScriptedServer server([&](const auto&, auto& connection) {
        connection.beginStream();
        connection.send("first");
        std::unique_lock lock(mutex);
        changed.wait(lock, [&] { return hasReceived; });
        connection.send(" last");
    });
    std::string received;
    HttpRequest request;
    request.url = server.url();
    request.onBody = [&](std::string_view bytes) {
        received += bytes;
        const std::lock_guard lock(mutex);
        hasReceived = true;
        changed.notify_all();
    };
    ASSERT_TRUE(send(request));
    EXPECT_EQ(received, "first last");
}

TEST_F(HttpClientTest, KeepsTheBodyOfAnErrorForTheResponse) {
    ScriptedServer server([](const auto&, auto& connection) { connection.answer(400, "why"); });
    HttpRequest request;
    request.url = server.url();
    request.onBody = [](std::string_view) { ADD_FAILURE(); };
    const auto response = send(request);
    ASSERT_TRUE(response);
    EXPECT_EQ(response->body, "why");
}

TEST_F(HttpClientTest, UsesAConnectionAgain) {
    ScriptedServer server([](const auto&, auto& connection) { connection.answer(200, "{}"); });
    ASSERT_TRUE(get(server.url()));
    ASSERT_TRUE(get(server.url()));
    EXPECT_EQ(server.requests().size(), 2U);
    EXPECT_EQ(server.connectionCount(), 1);
}

TEST_F(HttpClientTest, TriesAgainWhenAKeptConnectionIsClosed) {
    ScriptedServer server([](const auto&, auto& connection) {
        connection.answer(200, "{}");
        connection.close();
    });
    ASSERT_TRUE(get(server.url()));
    ASSERT_TRUE(get(server.url()));
    EXPECT_EQ(server.connectionCount(), 2);
}

TEST_F(HttpClientTest, FailsClearlyWhenNobodyListens) {
    std::string url;
    {
        ScriptedServer server([](const auto&, auto&) {});
        url = server.url();
    }
    const auto response = get(url + "/v1/models");
    ASSERT_FALSE(response);
    EXPECT_EQ(response.error().kind, HttpError::Kind::cannotConnect);
    EXPECT_EQ(response.error().message, "No server answers at " + url + ".");
}

TEST_F(HttpClientTest, FailsWhenTheConnectionEndsWithoutAnAnswer) {
    ScriptedServer server([](const auto&, auto& connection) { connection.close(); });
    const auto response = get(server.url());
    ASSERT_FALSE(response);
    EXPECT_EQ(response.error().kind, HttpError::Kind::broken);
    EXPECT_FALSE(response.error().isPartial);
    EXPECT_EQ(response.error().message,
              "The server at " + server.url() + " ended the connection without an answer.");
}

TEST_F(HttpClientTest, FailsWhenTheConnectionEndsInTheMiddle) {
    ScriptedServer server([](const auto&, auto& connection) {
        connection.send("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nhalf");
        connection.close();
    });
    const auto response = get(server.url());
    ASSERT_FALSE(response);
    EXPECT_EQ(response.error().kind, HttpError::Kind::broken);
    EXPECT_TRUE(response.error().isPartial);
}

TEST_F(HttpClientTest, FailsWhenTheAnswerIsNotHttp) {
    ScriptedServer server([](const auto&, auto& connection) {
        connection.send("220 smtp.example ESMTP\r\n");
        connection.close();
    });
    const auto response = get(server.url());
    ASSERT_FALSE(response);
    EXPECT_EQ(response.error().kind, HttpError::Kind::broken);
}

TEST_F(HttpClientTest, EndsARequestThatNobodyAnswers) {
    ScriptedServer server([](const auto&, auto& connection) { connection.waitForClient(); });
    HttpRequest request;
    request.url = server.url();
    request.idleLimit = 30ms;
    const auto response = send(request);
    ASSERT_FALSE(response);
    EXPECT_EQ(response.error().kind, HttpError::Kind::timedOut);
    EXPECT_EQ(response.error().message,
              "The server at " + server.url() + " sent nothing for 30 milliseconds.");
}

TEST_F(HttpClientTest, EndsAnAnswerThatNeverEnds) {
    ScriptedServer server([](const auto&, auto& connection) {
        connection.beginStream();
        while (connection.send("x")) {
            std::this_thread::sleep_for(1ms);
        }
    });
    HttpRequest request;
    request.url = server.url();
    request.totalLimit = 50ms;
    const auto response = send(request);
    ASSERT_FALSE(response);
    EXPECT_EQ(response.error().kind, HttpError::Kind::timedOut);
    EXPECT_TRUE(response.error().isPartial);
}

TEST_F(HttpClientTest, RefusesAnAnswerThatIsTooLarge) {
    ScriptedServer server(
        [](const auto&, auto& connection) { connection.answer(200, std::string(5000, 'x')); });
    HttpRequest request;
    request.url = server.url();
    request.bodyLimit = 4999;
    const auto response = send(request);
    ASSERT_FALSE(response);
    EXPECT_EQ(response.error().kind, HttpError::Kind::tooLarge);
    request.bodyLimit = 5000;
    EXPECT_TRUE(send(request));
}

TEST_F(HttpClientTest, FollowsNoRedirect) {
    ScriptedServer server([](const auto& request, auto& connection) {
        if (request.path == "/") {
            connection.send("HTTP/1.1 302 Found\r\nLocation: /other\r\nContent-Length: 0\r\n\r\n");
        }
    });
    const auto response = get(server.url() + "/");
    ASSERT_TRUE(response);
    EXPECT_EQ(response->status, 302);
    EXPECT_EQ(server.requests().size(), 1U);
}

TEST_F(HttpClientTest, UsesNoProxyThatTheEnvironmentNames) {
    ScriptedServer proxy([](const auto&, auto& connection) { connection.answer(200, "proxy"); });
    ScriptedServer server([](const auto&, auto& connection) { connection.answer(200, "server"); });
    setenv("http_proxy", proxy.url().c_str(), 1);
    setenv("all_proxy", proxy.url().c_str(), 1);
    const auto response = get(server.url());
    unsetenv("http_proxy");
    unsetenv("all_proxy");
    ASSERT_TRUE(response);
    EXPECT_EQ(response->body, "server");
    EXPECT_EQ(proxy.connectionCount(), 0);
}

TEST_F(HttpClientTest, StopsWhenItsTokenIsStopped) {
    ScriptedServer server([](const auto&, auto& connection) { connection.waitForClient(); });
    std::stop_source source;
    m_executor->postAfter(5ms, [&] { source.request_stop(); });
    HttpRequest request;
    request.url = server.url();
    const auto response = await(m_executor, m_client.send(request, source.get_token()));
    ASSERT_FALSE(response);
    EXPECT_EQ(response.error().kind, HttpError::Kind::cancelled);
}

TEST_F(HttpClientTest, HangsUpWhenItsTaskIsDestroyed) {
    std::atomic<bool> hasHungUp = false;
    ScriptedServer server([&](const auto&, auto& connection) {
        connection.beginStream();
        connection.send("a");
        connection.waitForClient();
        hasHungUp = true;
    });
    int count = 0;
    auto task = std::make_unique<Task<Result<HttpResponse, HttpError>>>();
    HttpRequest request;
    request.url = server.url();
    request.onBody = [&](std::string_view) {
        count++;
        task.reset(); // From inside its own callback.
    };
    *task = m_client.send(request);
    task->await_suspend(std::noop_coroutine());
    m_executor->runUntil([&] {
        if (!hasHungUp) {
            m_executor->postAfter(1ms, [] {});
        }
        return hasHungUp.load();
    });
    EXPECT_EQ(count, 1);
}

TEST_F(HttpClientTest, RequestsOfAClientThatIsDestroyedEndAsCancelled) {
    ScriptedServer server([](const auto&, auto& connection) { connection.waitForClient(); });
    auto client = std::make_unique<HttpClient>(m_executor);
    HttpRequest request;
    request.url = server.url();
    auto task = client->send(request);
    m_executor->postAfter(5ms, [&] { client.reset(); });
    const auto response = await(m_executor, std::move(task));
    ASSERT_FALSE(response);
    EXPECT_EQ(response.error().kind, HttpError::Kind::cancelled);
}

TEST_F(HttpClientTest, AnswersManyRequestsAtOnce) {
    ScriptedServer server(
        [](const auto& request, auto& connection) { connection.answer(200, request.body); });
    std::vector<std::string> bodies(20);
    int done = 0;
    for (std::size_t i = 0; i < bodies.size(); i++) {
        HttpRequest numbered;
        numbered.url = server.url();
        numbered.body = std::to_string(i);
        m_executor->spawn([](HttpClient* client, HttpRequest request, std::string* body,
                             int* count) -> Task<void> {
            auto response = co_await client->send(std::move(request));
            *body = response ? response->body : response.error().message;
            (*count)++;
        }(&m_client, std::move(numbered), &bodies[i], &done));
    }
    m_executor->runUntil([&] { return done == 20; });
    for (std::size_t i = 0; i < bodies.size(); i++) {
        EXPECT_EQ(bodies[i], std::to_string(i));
    }
}

TEST(WhyNotLocal, AcceptsTheAddressesOfThisMachineOnly) {
    for (const std::string url :
         {"http://localhost", "http://LOCALHOST:11434/v1", "http://127.0.0.1:8080",
          "http://127.9.8.7", "http://[::1]:1234", "HTTP://127.1/", "http://2130706433/"}) {
        EXPECT_EQ(whyNotLocal(url), std::nullopt) << url;
    }
    for (const std::string url :
         {"http://192.0.2.1", "http://example.com", "http://localhost.example.com",
          "http://localhost@192.0.2.1/", "http://127.0.0.1.example.com", "http://0.0.0.0",
          "http://[::ffff:127.0.0.1]", "http://[2001:db8::1]", "http://[::]", "http://128.0.0.1",
          "http://1270.0.0.1", "http://10.0.0.1#@127.0.0.1", "http://notlocalhost"}) {
        EXPECT_TRUE(whyNotLocal(url)) << url;
    }
    EXPECT_EQ(whyNotLocal("http://example.com:80"),
              "The address http://example.com:80 is not on this computer. Nothing is sent to other "
              "machines: use localhost, 127.0.0.1 or [::1].");
    EXPECT_EQ(whyNotLocal("https://localhost"),
              "The address https://localhost does not start with http://, which is how the studio "
              "talks to servers on this computer.");
    EXPECT_EQ(whyNotLocal("file:///etc/passwd")->substr(0, 34),
              "The address file:///etc/passwd doe");
    EXPECT_EQ(whyNotLocal("localhost:11434"),
              "\"localhost:11434\" is not an address such as http://localhost:11434.");
    EXPECT_TRUE(whyNotLocal(""));
    EXPECT_TRUE(whyNotLocal("http://"));
    EXPECT_TRUE(whyNotLocal(std::string("http://localhost\0.example.com", 29)));
}

TEST_F(HttpClientTest, RefusesAnotherMachineBeforeItConnects) {
    const auto response = get("http://192.0.2.1:80/");
    ASSERT_FALSE(response);
    EXPECT_EQ(response.error().kind, HttpError::Kind::notLocal);
}

// The second line of defence alone: what a handle does when an address of another machine reaches
// the making of the socket.
TEST(RestrictToThisMachine, MakesNoSocketToAnotherMachine) {
    CURL* easy = curl_easy_init();
    restrictToThisMachine(easy);
    // The name is of this machine, the address that it resolves to is not.
    curl_slist* resolved = curl_slist_append(nullptr, "localhost:80:192.0.2.1");
    curl_easy_setopt(easy, CURLOPT_RESOLVE, resolved);
    curl_easy_setopt(easy, CURLOPT_URL, "http://localhost:80/");
    curl_easy_setopt(easy, CURLOPT_TIMEOUT_MS, 20000L);
    EXPECT_EQ(curl_easy_perform(easy), CURLE_COULDNT_CONNECT);
    long connections = -1;
    curl_easy_getinfo(easy, CURLINFO_NUM_CONNECTS, &connections);
    EXPECT_EQ(connections, 0);
    curl_easy_setopt(easy, CURLOPT_URL, "https://localhost:80/");
    EXPECT_EQ(curl_easy_perform(easy), CURLE_UNSUPPORTED_PROTOCOL);
    curl_easy_cleanup(easy);
    curl_slist_free_all(resolved);
}

TEST(RestrictToThisMachine, MakesSocketsToThisMachine) {
    ScriptedServer server([](const auto&, auto& connection) { connection.answer(200, ""); });
    CURL* easy = curl_easy_init();
    restrictToThisMachine(easy);
    curl_easy_setopt(easy, CURLOPT_URL, server.url().c_str());
    EXPECT_EQ(curl_easy_perform(easy), CURLE_OK);
    curl_easy_cleanup(easy);
}

} // namespace
} // namespace ombrel

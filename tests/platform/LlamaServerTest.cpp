#include "platform/LlamaServer.h"

#include "tests/platform/Await.h"
#include "tests/platform/GgufBytes.h"
#include "tests/platform/TemporaryFolder.h"

#include <algorithm>
#include <csignal>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <vector>

namespace ombrel {
namespace {

using namespace std::chrono_literals;
using test::await;

// A program that notes how it was called and is ready at once.
constexpr std::string_view readyProgram = R"(#!/usr/bin/env python3
import http.server, os, sys
with open(os.path.join(os.path.dirname(sys.argv[0]), "calls"), "a") as calls:
    calls.write(" ".join(sys.argv[1:]) + "\n")
with open(os.path.join(os.path.dirname(sys.argv[0]), "key"), "w") as key:
    key.write(os.environ["LLAMA_API_KEY"])
class Handler(http.server.BaseHTTPRequestHandler):
    def do_GET(self):
        self.send_response(200 if self.path == "/health" else 404)
        self.send_header("Content-Length", "0")
        self.end_headers()
    def log_message(self, *arguments):
        pass
port = int(sys.argv[sys.argv.index("--port") + 1])
http.server.HTTPServer(("127.0.0.1", port), Handler).serve_forever()
)";

class LlamaServerTest : public testing::Test {
  protected:
    void install(std::string_view program, const std::string& model = test::languageModelBytes()) {
        m_options.program = m_folder.write("llama-server", program);
        std::filesystem::permissions(*m_options.program, std::filesystem::perms::owner_all);
        m_options.modelFile = m_folder.write("model.gguf", model);
        m_server = std::make_shared<LlamaServer>(m_executor, m_http, m_options);
    }
    Result<ServerEndpoint> ready() { return await(m_executor, m_server->ready()); }
    std::string problem() {
        const auto endpoint = ready();
        return endpoint ? "no problem" : endpoint.error().message;
    }
    std::string contents(const std::string& name) const {
        std::ifstream stream(m_folder.path() / name);
        return std::string(std::istreambuf_iterator<char>(stream), {});
    }
    std::size_t startCount() const {
        const std::string calls = contents("calls");
        return static_cast<std::size_t>(std::count(calls.begin(), calls.end(), '\n'));
    }
    void waitUntilGone() {
        while (m_server->processId()) {
            bool isDone = false;
            m_executor->postAfter(1ms, [&] { isDone = true; });
            m_executor->runUntil([&] { return isDone; });
        }
    }

    test::TemporaryFolder m_folder;
    std::shared_ptr<RunLoopExecutor> m_executor = std::make_shared<RunLoopExecutor>();
    std::shared_ptr<HttpClient> m_http = std::make_shared<HttpClient>(m_executor);
    LlamaServer::Options m_options;
    std::shared_ptr<LlamaServer> m_server;
};

TEST_F(LlamaServerTest, IsNotInstalledWithoutProgramOrModel) {
    m_server = std::make_shared<LlamaServer>(m_executor, m_http, m_options);
    EXPECT_EQ(m_server->unavailableReason(), "modelNotInstalled");
    EXPECT_EQ(problem(), "The model server (llama-server) is not installed.");
    install(readyProgram);
    EXPECT_EQ(m_server->unavailableReason(), std::nullopt);
    std::filesystem::remove(*m_options.modelFile);
    EXPECT_EQ(m_server->unavailableReason(), "modelNotInstalled");
    EXPECT_EQ(problem(), "No model is installed in the models folder.");
}

TEST_F(LlamaServerTest, StartsOnceForAllWhoAskAndStaysReady) {
    install(readyProgram);
    std::vector<Result<ServerEndpoint>> answers;
    for (int i = 0; i < 3; i++) {
        m_executor->spawn([](std::shared_ptr<LlamaServer> server,
                             std::vector<Result<ServerEndpoint>>* results) -> Task<void> {
            auto endpoint = co_await server->ready();
            results->push_back(std::move(endpoint));
        }(m_server, &answers));
    }
    m_executor->runUntil([&] { return answers.size() == 3; });
    for (const auto& answer : answers) {
        ASSERT_TRUE(answer) << answer.error().message;
        EXPECT_EQ(*answer, *answers[0]);
    }
    EXPECT_EQ(*ready(), *answers[0]);
    EXPECT_EQ(startCount(), 1U);
}

TEST_F(LlamaServerTest, ListensOnLoopbackWithAKeyThatIsNotOnTheCommandLine) {
    install(readyProgram);
    const auto endpoint = ready();
    ASSERT_TRUE(endpoint);
    EXPECT_TRUE(endpoint->url.starts_with("http://127.0.0.1:"));
    EXPECT_EQ(endpoint->contextTokens, 4096); // What the model was trained for.
    EXPECT_EQ(endpoint->key, contents("key"));
    EXPECT_EQ(endpoint->key.size(), 48U);
    EXPECT_EQ(contents("calls").find(endpoint->key), std::string::npos);
    EXPECT_EQ(contents("calls"),
              "--model " + m_options.modelFile->string() + " --host 127.0.0.1 --port " +
                  endpoint->url.substr(17) +
                  " --ctx-size 4096 --parallel 1 --jinja --temp 0.2 --repeat-penalty 1.1\n");
}

TEST_F(LlamaServerTest, GivesAnEmbeddingModelBatchesAsLargeAsItsContext) {
    m_options.purpose = LlamaServer::Purpose::embedding;
    install(readyProgram, test::embeddingModelBytes());
    ASSERT_TRUE(ready());
    EXPECT_TRUE(contents("calls").ends_with(
        " --ctx-size 512 --parallel 1 --embeddings --batch-size 512 --ubatch-size 512\n"));
}

TEST_F(LlamaServerTest, ChoosesAKeyOfItsOwnForEachServer) {
    install(readyProgram);
    const auto first = ready();
    m_server = std::make_shared<LlamaServer>(m_executor, m_http, m_options);
    EXPECT_NE(first->key, ready()->key);
}

TEST_F(LlamaServerTest, AServerThatDoesNotStartIsAnErrorWithItsLastWords) {
    install("#!/bin/sh\necho starting\necho 'loading' >&2\necho 'no such tensor' >&2\nexit 3\n");
    EXPECT_EQ(problem(), "The model server could not be started with model.gguf (exit status 3): "
                         "loading\nno such tensor");
    EXPECT_EQ(m_server->processId(), std::nullopt);
}

TEST_F(LlamaServerTest, AServerThatKeepsFailingIsNotStartedAgainAtOnce) {
    install("#!/bin/sh\nexit 3\n");
    const std::string failed = "The model server could not be started with model.gguf (exit status "
                               "3): ";
    EXPECT_EQ(problem(), failed);
    EXPECT_EQ(problem(), failed);
    EXPECT_EQ(problem(), failed + " It can be started again in 1 second.");
}

TEST_F(LlamaServerTest, AServerThatIsNeverReadyIsAnErrorAndEnded) {
    m_options.startLimit = 200ms;
    install("#!/bin/sh\nexec sleep 1000\n");
    EXPECT_EQ(problem(), "The model server did not get ready with model.gguf within 1 second.");
    EXPECT_EQ(m_server->processId(), std::nullopt);
}

TEST_F(LlamaServerTest, AProgramThatCannotRunIsAnError) {
    install("#!/nowhere/at/all\n");
    EXPECT_NE(problem(), "no problem");
}

TEST_F(LlamaServerTest, AModelThatIsDamagedIsAnError) {
    install(readyProgram, "GGUF");
    EXPECT_EQ(problem(), m_options.modelFile->string() +
                             " has version 0 of the model format (GGUF), and only "
                             "2 and 3 are known.");
}

TEST_F(LlamaServerTest, AServerThatWasKilledIsStartedAgainByTheNextRequest) {
    install(readyProgram);
    const auto first = ready();
    ASSERT_TRUE(first);
    kill(*m_server->processId(), SIGKILL);
    waitUntilGone();
    EXPECT_EQ(m_server->unavailableReason(), std::nullopt);
    const auto second = ready();
    ASSERT_TRUE(second);
    EXPECT_NE(first->key, second->key);
    EXPECT_EQ(startCount(), 2U);
}

TEST_F(LlamaServerTest, AServerThatDoesNotAnswerIsReplaced) {
    install(readyProgram);
    const auto first = ready();
    m_server->connectionFailed();
    EXPECT_EQ(m_server->processId(), std::nullopt);
    EXPECT_NE(first->key, ready()->key);
}

TEST_F(LlamaServerTest, EndsWithItsObject) {
    install(readyProgram);
    ASSERT_TRUE(ready());
    const int id = *m_server->processId();
    m_server.reset();
    while (kill(id, 0) == 0) { // Until it has been reaped.
        std::this_thread::sleep_for(1ms);
    }
}

TEST_F(LlamaServerTest, ThoseWhoWaitForAServerThatIsGivenUpGetAnError) {
    install("#!/bin/sh\nexec sleep 1000\n");
    auto task = m_server->ready();
    m_executor->postAfter(20ms, [&] { m_server.reset(); });
    const auto endpoint = await(m_executor, std::move(task));
    ASSERT_FALSE(endpoint);
    EXPECT_EQ(endpoint.error().message, "The model server was ended.");
}

TEST_F(LlamaServerTest, TellsWhatItWaitsFor) {
    std::vector<std::string> told;
    m_options.onProgress = [&](const std::string& status) { told.push_back(status); };
    install(readyProgram);
    ASSERT_TRUE(ready());
    ASSERT_GE(told.size(), 2U);
    EXPECT_EQ(told.front(), "Loading model.gguf");
    EXPECT_EQ(told.back(), "Ready: model.gguf");
}

} // namespace
} // namespace ombrel

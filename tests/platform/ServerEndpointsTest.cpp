#include "platform/ServerEndpoints.h"

#include "platform/RunLoopExecutor.h"
#include "tests/platform/Await.h"

#include <gtest/gtest.h>
#include <utility>

namespace ombrel {
namespace {

// Is ready at once, with what the test has set.
class GivenServer : public ModelServer {
  public:
    explicit GivenServer(Result<ServerEndpoint> given) : endpoint(std::move(given)) {}

    std::optional<std::string> unavailableReason() override { return std::nullopt; }
    Task<Result<ServerEndpoint>> ready() override {
        ++asked;
        return [](Result<ServerEndpoint> given) -> Task<Result<ServerEndpoint>> {
            co_return given;
        }(endpoint);
    }
    void connectionFailed() override {}

    Result<ServerEndpoint> endpoint;
    int asked = 0;
};

struct Asked {
    std::shared_ptr<RunLoopExecutor> executor = std::make_shared<RunLoopExecutor>();
    std::shared_ptr<GivenServer> language = std::make_shared<GivenServer>(
        ServerEndpoint{"http://127.0.0.1:8123", "secret", "small", 4096});
    std::shared_ptr<GivenServer> embedding =
        std::make_shared<GivenServer>(ServerEndpoint{"http://127.0.0.1:8124", "", "", 512});

    EnvironmentVariables environment(bool withEmbeddings) const {
        ServerEndpoints endpoints(executor, language, embedding);
        return test::await(executor, endpoints.environment(withEmbeddings));
    }
};

TEST(ServerEndpoints, TellsTheLanguageModelAlone) {
    const Asked asked;
    EXPECT_EQ(asked.environment(false),
              (EnvironmentVariables{{"OMBREL_MODEL_URL", "http://127.0.0.1:8123/v1"},
                                    {"OMBREL_MODEL_KEY", "secret"},
                                    {"OMBREL_MODEL_NAME", "small"},
                                    {"OMBREL_EMBEDDING_URL", ""},
                                    {"OMBREL_EMBEDDING_KEY", ""},
                                    {"OMBREL_EMBEDDING_NAME", ""},
                                    {"OMBREL_MODEL_ERROR", ""}}));
    EXPECT_EQ(asked.embedding->asked, 0); // It would be started for nothing.
}

TEST(ServerEndpoints, TellsTheEmbeddingModelToo) {
    const auto variables = Asked().environment(true);
    EXPECT_EQ(variables[0], (std::pair<std::string, std::string>{"OMBREL_MODEL_URL",
                                                                 "http://127.0.0.1:8123/v1"}));
    EXPECT_EQ(variables[3], (std::pair<std::string, std::string>{"OMBREL_EMBEDDING_URL",
                                                                 "http://127.0.0.1:8124/v1"}));
}

TEST(ServerEndpoints, SaysWhyThereIsNoModel) {
    Asked asked;
    asked.language->endpoint = failure("No model is installed in the models folder.");
    EXPECT_EQ(asked.environment(false),
              (EnvironmentVariables{
                  {"OMBREL_MODEL_URL", ""},
                  {"OMBREL_MODEL_KEY", ""},
                  {"OMBREL_MODEL_NAME", ""},
                  {"OMBREL_EMBEDDING_URL", ""},
                  {"OMBREL_EMBEDDING_KEY", ""},
                  {"OMBREL_EMBEDDING_NAME", ""},
                  {"OMBREL_MODEL_ERROR", "No model is installed in the models folder."}}));
}

TEST(ServerEndpoints, LeavesAnEmbeddingModelOutThatThereIsNot) {
    Asked asked;
    asked.embedding->endpoint = failure("No model is installed in the models folder.");
    const auto variables = asked.environment(true);
    EXPECT_EQ(variables[3], (std::pair<std::string, std::string>{"OMBREL_EMBEDDING_URL", ""}));
    EXPECT_EQ(variables[6], (std::pair<std::string, std::string>{"OMBREL_MODEL_ERROR", ""}));
}

} // namespace
} // namespace ombrel

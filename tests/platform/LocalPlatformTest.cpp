#include "platform/LocalPlatform.h"

#include "platform/LanguageRecognizer.h"
#include "platform/OnDeviceModel.h"
#include "platform/PdfText.h"
#include "platform/SentenceEmbedder.h"
#include "tests/platform/Await.h"
#include "tests/platform/GgufBytes.h"
#include "tests/platform/ScriptedServer.h"
#include "tests/platform/TemporaryFolder.h"

#include <cstdlib>
#include <gtest/gtest.h>

namespace ombrel {
namespace {

using test::await;
using test::ScriptedServer;

// A user with a data folder of their own.
class LocalPlatformTest : public testing::Test {
  protected:
    LocalPlatformTest() {
        if (const char* before = std::getenv("XDG_DATA_HOME")) {
            m_before = before;
        }
        setenv("XDG_DATA_HOME", m_folder.path().c_str(), 1);
        std::filesystem::create_directories(m_folder.path() / "Ombrel" / "Models");
        std::filesystem::create_directories(m_folder.path() / "Ombrel" / "Tools");
        const auto program = m_folder.write("Ombrel/Tools/llama-server", "#!/bin/sh\nexit 1\n");
        std::filesystem::permissions(program, std::filesystem::perms::owner_all);
    }
    ~LocalPlatformTest() override {
        if (m_before) {
            setenv("XDG_DATA_HOME", m_before->c_str(), 1);
        } else {
            unsetenv("XDG_DATA_HOME");
        }
    }
    Platform make(const ServiceSettings& settings = {}) {
        return makeLocalPlatform(m_executor, settings);
    }

    test::TemporaryFolder m_folder;
    std::optional<std::string> m_before;
    std::shared_ptr<RunLoopExecutor> m_executor = std::make_shared<RunLoopExecutor>();
};

TEST_F(LocalPlatformTest, HasEveryServiceAlsoWithoutModels) {
    const Platform platform = make();
    EXPECT_EQ(platform.executor, m_executor);
    EXPECT_EQ(platform.model->availability().unavailableReason, "modelNotInstalled");
    EXPECT_FALSE(platform.embedder->supports("en"));
    EXPECT_EQ(platform.languages->dominantLanguage(
                  "This is a sentence in plain English, as everybody can see at once."),
              "en");
    EXPECT_TRUE(platform.pdf);
    const auto session = platform.model->makeSession("");
    const auto answer = await(m_executor, session->respond("Hi"));
    ASSERT_FALSE(answer);
    EXPECT_EQ(answer.error().message, "No model is installed in the models folder.");
    const auto vectors = await(m_executor, platform.embedder->vectors("en", {"a"}));
    EXPECT_EQ(vectors, std::vector<std::optional<Vector>>{std::nullopt});
}

TEST_F(LocalPlatformTest, UsesTheModelsOfTheModelsFolder) {
    m_folder.write("Ombrel/Models/chat.gguf", test::languageModelBytes());
    EXPECT_TRUE(make().model->availability().isAvailable());
    EXPECT_FALSE(make().embedder->supports("en"));
    m_folder.write("Ombrel/Models/embedding.gguf", test::embeddingModelBytes());
    EXPECT_TRUE(make().embedder->supports("en"));
    EXPECT_TRUE(make().embedder->supports("de"));
    ServiceSettings settings;
    settings.modelsFolder = m_folder.path() / "elsewhere";
    EXPECT_FALSE(make(settings).model->availability().isAvailable());
}

TEST_F(LocalPlatformTest, KnowsTheLanguageOfTheEnglishModelByItsName) {
    m_folder.write("Ombrel/Models/all-MiniLM-L6-v2.Q8_0.gguf", test::embeddingModelBytes());
    EXPECT_TRUE(make().embedder->supports("en"));
    EXPECT_FALSE(make().embedder->supports("de"));
}

TEST_F(LocalPlatformTest, UsesTheServersOfTheUser) {
    ScriptedServer server([](const auto& request, auto& connection) {
        if (request.path == "/v1/embeddings") {
            connection.answer(200, R"({"data":[{"embedding":[1,2]}]})");
        } else {
            connection.answer(200, R"({"choices":[{"message":{"content":"Hello"},)"
                                   R"("finish_reason":"stop"}]})");
        }
    });
    ServiceSettings settings;
    settings.serverURL = server.url();
    settings.serverKey = "k1";
    settings.serverModel = "chatty";
    settings.embeddingServerURL = server.url() + "/v1";
    settings.embeddingServerKey = "k2";
    settings.embeddingServerModel = "vectors";
    const Platform platform = make(settings);
    EXPECT_TRUE(platform.model->availability().isAvailable());
    EXPECT_TRUE(platform.embedder->supports("de"));
    const auto session = platform.model->makeSession("");
    EXPECT_EQ(await(m_executor, session->respond("Hi")), "Hello");
    const auto vectors = await(m_executor, platform.embedder->vectors("de", {"a"}));
    EXPECT_EQ(vectors, (std::vector<std::optional<Vector>>{Vector{1, 2}}));
    const auto requests = server.requests();
    ASSERT_EQ(requests.size(), 2U);
    EXPECT_EQ(requests[0].headers.at("authorization"), "Bearer k1");
    EXPECT_NE(requests[0].body.find(R"("model":"chatty")"), std::string::npos);
    EXPECT_EQ(requests[1].path, "/v1/embeddings");
    EXPECT_EQ(requests[1].headers.at("authorization"), "Bearer k2");
    EXPECT_NE(requests[1].body.find(R"("model":"vectors")"), std::string::npos);
}

} // namespace
} // namespace ombrel

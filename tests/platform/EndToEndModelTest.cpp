#include "platform/InstalledModels.h"
#include "platform/LlamaServer.h"
#include "platform/LocalPlatform.h"
#include "platform/OnDeviceModel.h"
#include "platform/Process.h"
#include "platform/SentenceEmbedder.h"
#include "platform/ServerEmbedder.h"
#include "platform/ServerModel.h"
#include "tests/platform/Await.h"

#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <unistd.h>

// The real model server with the models that resources/models/install-models installs.
namespace ombrel {
namespace {

using namespace std::chrono_literals;
using test::await;

const std::string embeddingModelFile = "all-MiniLM-L6-v2.f16.gguf";
const char* const holdServer = "OMBREL_TEST_HOLD_SERVER";

ServiceSettings testedSettings() {
    ServiceSettings settings;
    settings.languageModel = starterModelFile;
    settings.embeddingModel = embeddingModelFile;
    return settings;
}

LlamaServer::Options optionsFor(const std::string& modelFile, LlamaServer::Purpose purpose) {
    LlamaServer::Options options;
    options.program = LlamaServer::findProgram();
    options.modelFile = testedSettings().modelsPath() / modelFile;
    options.purpose = purpose;
    return options;
}

// With the variable above set, this program starts the language model's server, says which process
// that is, and stays until it is killed.
class HoldServer : public testing::Environment {
  public:
    void SetUp() override {
        if (!std::getenv(holdServer)) {
            return;
        }
        const auto executor = std::make_shared<RunLoopExecutor>();
        const auto http = std::make_shared<HttpClient>(executor);
        LlamaServer server(
            executor, http,
            optionsFor(std::string(starterModelFile), LlamaServer::Purpose::language));
        const auto endpoint = await(executor, server.ready());
        std::printf("server %d\n", endpoint ? *server.processId() : 0);
        std::fflush(stdout);
        executor->run();
    }
};
const auto* const registered = testing::AddGlobalTestEnvironment(new HoldServer);

// A process that has ended and waits for its parent to notice counts as gone.
bool isRunning(int process) {
    std::ifstream file("/proc/" + std::to_string(process) + "/stat");
    const std::string stat(std::istreambuf_iterator<char>(file), {});
    const auto name = stat.rfind(") ");
    return name != std::string::npos && stat[name + 2] != 'Z' && stat[name + 2] != 'X';
}

class EndToEndModel : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_NE(registered, nullptr);
        const auto models = testedSettings().modelsPath();
        for (const auto& file : {models / starterModelFile, models / embeddingModelFile}) {
            ASSERT_TRUE(std::filesystem::exists(file))
                << "Run resources/models/install-models: there is no " << file;
        }
        ASSERT_TRUE(LlamaServer::findProgram())
            << "Run resources/models/install-models: there is no llama-server";
        m_platform = makeLocalPlatform(m_executor, testedSettings());
    }
    void pass(std::chrono::milliseconds time) {
        bool isDone = false;
        m_executor->postAfter(time, [&] { isDone = true; });
        m_executor->runUntil([&] { return isDone; });
    }
    std::vector<std::optional<Vector>> vectors(std::vector<std::string> texts) {
        return await(m_executor, m_platform.embedder->vectors("en", std::move(texts)));
    }

    std::shared_ptr<RunLoopExecutor> m_executor = std::make_shared<RunLoopExecutor>();
    Platform m_platform;
};

double cosine(const Vector& a, const Vector& b) {
    double dot = 0;
    double squaresOfA = 0;
    double squaresOfB = 0;
    for (std::size_t i = 0; i < a.size(); i++) {
        dot += a[i] * b[i];
        squaresOfA += a[i] * a[i];
        squaresOfB += b[i] * b[i];
    }
    return dot / std::sqrt(squaresOfA * squaresOfB);
}

TEST_F(EndToEndModel, StreamsAnAnswerWithUsage) {
    EXPECT_EQ(m_platform.model->availability(), ModelAvailability());
    const std::string instructions = "Answer the question in one short sentence.";
    std::vector<ModelSnapshot> snapshots;
    for (int i = 0; i < 2; i++) {
        snapshots.clear();
        const auto session = m_platform.model->makeSession(instructions);
        const auto last =
            await(m_executor, session->streamResponse("What colour is the sky?",
                                                      [&](const ModelSnapshot& snapshot) {
                                                          snapshots.push_back(snapshot);
                                                      }));
        ASSERT_TRUE(last) << last.error().message;
        ASSERT_TRUE(*last);
        ASSERT_TRUE((*last)->usage);
        EXPECT_GT((*last)->usage->inputTokens, 10);
        EXPECT_GT((*last)->usage->outputTokens, 0);
        EXPECT_LE((*last)->usage->outputTokens, 1024);
        // One for each piece of the answer, and one with the usage.
        ASSERT_GE(snapshots.size(), (*last)->content.empty() ? 1U : 2U);
        EXPECT_EQ(snapshots.back().content, (*last)->content);
        for (std::size_t j = 1; j < snapshots.size(); j++) {
            EXPECT_TRUE(snapshots[j].content.starts_with(snapshots[j - 1].content));
        }
    }
    // The prompt of the first time was kept.
    EXPECT_GT(snapshots.back().usage->cachedInputTokens, 10);
}

TEST_F(EndToEndModel, AnswersWithinASchema) {
    using Schema = DynamicGenerationSchema;
    const auto shared = [](Schema schema) {
        return std::make_shared<const Schema>(std::move(schema));
    };
    Schema::Object object;
    object.name = "Animal";
    object.properties.push_back(
        {"legs", "How many legs it has", shared({Schema::Scalar::integer}), false});
    object.properties.push_back(
        {"size", "How large it is", shared({Schema::AnyOf{"Size", {"small", "large"}}}), false});
    const auto schema = GenerationSchema::make({object});
    ASSERT_TRUE(schema);
    const auto session = m_platform.model->makeSession("Describe the animal.");
    const auto content = await(m_executor, session->respond("An elephant", *schema, true));
    ASSERT_TRUE(content) << content.error().message;
    ASSERT_NE(content->find("legs"), nullptr);
    EXPECT_TRUE(std::holds_alternative<GeneratedContent::Number>(content->find("legs")->kind));
    ASSERT_NE(content->find("size"), nullptr);
    const auto size = std::get<std::string>(content->find("size")->kind);
    EXPECT_TRUE(size == "small" || size == "large") << size;
}

// Gives whatever it is asked.
class Echo final : public Tool {
  public:
    std::string name() const override { return "look_up"; }
    std::string description() const override { return "Looks a word up in the dictionary."; }
    GenerationSchema parameters() const override {
        DynamicGenerationSchema::Object object;
        object.name = "Arguments";
        object.properties.push_back(
            {"word", "The word to look up",
             std::make_shared<const DynamicGenerationSchema>(
                 DynamicGenerationSchema{DynamicGenerationSchema::Scalar::string}),
             false});
        return *GenerationSchema::make({object});
    }
    Task<std::string> call(GeneratedContent arguments) override {
        EXPECT_TRUE(std::holds_alternative<std::string>(arguments.find("word")->kind));
        std::string result = "A word with several meanings.";
        co_return result;
    }
};

TEST_F(EndToEndModel, ConversationsWithToolsEndWithAnAnswer) {
    const auto session = m_platform.model->makeSession("Look words up before you explain them.",
                                                       {std::make_shared<Echo>()});
    const auto answer = await(m_executor, session->respond("What is a spanner?"));
    // A small model may write on until it is cut off.
    EXPECT_TRUE(answer || answer.error().message.starts_with("The model's answer was cut off"))
        << answer.error().message;
}

TEST_F(EndToEndModel, RefusesAPromptThatIsTooLongClearly) {
    std::string prompt;
    for (int i = 0; i < 9000; i++) {
        prompt += "word ";
    }
    const auto session = m_platform.model->makeSession("");
    const auto answer = await(m_executor, session->respond(prompt));
    ASSERT_FALSE(answer);
    EXPECT_TRUE(answer.error().message.starts_with("The text is too long for the model: it has "))
        << answer.error().message;
}

TEST_F(EndToEndModel, EmbedsSentencesByTheirMeaning) {
    EXPECT_TRUE(m_platform.embedder->supports("en"));
    EXPECT_FALSE(m_platform.embedder->supports("de"));
    const auto result = vectors({"A man is eating food.", "A man is eating a piece of bread."});
    ASSERT_TRUE(result[0] && result[1]);
    EXPECT_EQ(result[0]->size(), 384U);
    EXPECT_NEAR(cosine(*result[0], *result[1]), 0.755, 0.005);
}

TEST_F(EndToEndModel, GivesATextTheSameVectorInWhateverCompany) {
    const auto together =
        vectors({"One sentence.", "Another one, which is longer.", "And a third."});
    // A platform of its own, so that nothing is remembered.
    m_platform = makeLocalPlatform(m_executor, testedSettings());
    const auto alone = vectors({"Another one, which is longer."});
    ASSERT_TRUE(alone[0]);
    EXPECT_EQ(*alone[0], *together[1]);
}

TEST_F(EndToEndModel, EmbedsTextsLongerThanTheModelTakes) {
    std::string text;
    for (int i = 0; i < 3000; i++) {
        text += i % 2 ? "bread " : "water ";
    }
    const auto result = vectors({text, "bread and water", "the speed of light"});
    ASSERT_TRUE(result[0] && result[1] && result[2]);
    EXPECT_GT(cosine(*result[0], *result[1]), cosine(*result[0], *result[2]));
}

TEST_F(EndToEndModel, AServerThatIsKilledInTheMiddleIsAnErrorAndThenStartsAgain) {
    const auto http = std::make_shared<HttpClient>(m_executor);
    const auto server = std::make_shared<LlamaServer>(
        m_executor, http,
        optionsFor(std::string(starterModelFile), LlamaServer::Purpose::language));
    ServerModel model(http, server);
    const auto session = model.makeSession("");
    const auto interrupted =
        await(m_executor, session->streamResponse("Tell a long story.", [&](const auto&) {
            if (server->processId()) {
                kill(*server->processId(), SIGKILL);
            }
        }));
    ASSERT_FALSE(interrupted);
    EXPECT_EQ(interrupted.error().message, "The model server stopped in the middle of its answer.");
    const auto answer = await(m_executor, session->respond("Say OK."));
    ASSERT_TRUE(answer) << answer.error().message;
}

TEST_F(EndToEndModel, TheServerGoesWhenTheProgramIsKilled) {
    std::string output;
    ProcessLaunch launch;
    launch.arguments = {std::filesystem::read_symlink("/proc/self/exe").string(),
                        "--gtest_filter=EndToEndModel.StreamsAnAnswerWithUsage"};
    launch.environment = {{holdServer, "1"}};
    ProcessHandlers handlers;
    bool hasEnded = false;
    handlers.onOutput = [&](std::string_view bytes) { output += bytes; };
    handlers.onExit = [&](ProcessExit) { hasEnded = true; };
    const auto child = Process::start(m_executor, launch, handlers);
    ASSERT_TRUE(child);
    const std::string mark = "server ";
    m_executor->runUntil([&] {
        const auto at = output.find(mark);
        return hasEnded || (at != std::string::npos && output.find('\n', at) != std::string::npos);
    });
    ASSERT_FALSE(hasEnded) << output;
    const int server = std::stoi(output.substr(output.find(mark) + mark.size()));
    ASSERT_GT(server, 0) << "The server did not start";
    ASSERT_TRUE(isRunning(server));
    kill((*child)->id(), SIGKILL);
    // Which is at once; the test's own time limit is what fails it otherwise.
    while (isRunning(server)) {
        pass(5ms);
    }
    EXPECT_FALSE(isRunning(server));
}

} // namespace
} // namespace ombrel

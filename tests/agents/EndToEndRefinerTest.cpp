#include "agents/AgentInstructionRefiner.h"

#include "platform/InstalledModels.h"
#include "platform/LocalPlatform.h"
#include "platform/RunLoopExecutor.h"
#include "tests/agents/Properties.h"
#include "tests/platform/Await.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

// With the model server and model that resources/models/install-models installs.
namespace ombrel {
namespace {

using namespace test;

TEST(EndToEndRefiner, TheModelProposesInstructionsOrIsCutOff) {
    ServiceSettings settings;
    settings.languageModel = starterModelFile;
    const auto executor = std::make_shared<RunLoopExecutor>();
    const Platform platform = makeLocalPlatform(executor, settings);
    ASSERT_TRUE(platform.model->availability().isAvailable())
        << "Run resources/models/install-models";
    Agent agent = newAgent("Triage");
    agent.summary = "Sorts tickets";
    agent.instructions = "Say if the ticket is a bug or a question.";
    agent.input = {property("ticket", stringKind())};
    agent.output = enumerationOutput({"bug", "question"});
    const auto result =
        await(executor, AgentInstructionRefiner::refine(platform.model, std::move(agent)));
    // What it writes is its own affair; a small model may write on until it is cut off.
    EXPECT_TRUE(result || result.error().message.starts_with("The model's answer was cut off"))
        << result.error().message;
}

} // namespace
} // namespace ombrel

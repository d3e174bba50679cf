#include "agents/AgentEvaluation.h"
#include "agents/AgentRunner.h"
#include "platform/InstalledModels.h"
#include "platform/LocalPlatform.h"
#include "platform/OnDeviceModel.h"
#include "platform/RunLoopExecutor.h"
#include "tests/agents/Knowledge.h"
#include "tests/agents/Properties.h"
#include "tests/platform/Await.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

// With the model server and model that resources/models/install-models installs.
namespace ombrel {
namespace {

using namespace test;

class EndToEndAgent : public testing::Test {
  protected:
    void SetUp() override {
        ServiceSettings settings;
        settings.languageModel = starterModelFile;
        m_platform = makeLocalPlatform(m_executor, settings);
        ASSERT_TRUE(m_platform.model->availability().isAvailable())
            << "Run resources/models/install-models";
    }
    AgentRunResult tryAgent(const Agent& agent, const std::string& input) {
        return await(m_executor, runAgent(m_platform, agent, m_indexes, input));
    }
    static Agent agentThat(std::string instructions, AgentOutputKind output) {
        Agent agent = newAgent("Tried");
        agent.instructions = std::move(instructions);
        agent.output = std::move(output);
        return agent;
    }

    std::shared_ptr<RunLoopExecutor> m_executor = std::make_shared<RunLoopExecutor>();
    Platform m_platform;
    std::vector<RAGIndex> m_indexes;
};

const AgentOutputField& fieldNamed(const AgentRunResult& result, const std::string& name) {
    for (const AgentOutputField& field : result.objectFields) {
        if (field.name == name) {
            return field;
        }
    }
    throw std::out_of_range(name);
}

// The text of a field that is neither missing nor a case.
std::string plainText(const AgentRunResult& result, const std::string& name) {
    return std::get<AgentOutputFieldValue::Plain>(fieldNamed(result, name).value.value).text;
}

TEST_F(EndToEndAgent, AnswersWithTextFromTheKnowledgeItHas) {
    m_indexes = {knowledge("Manual", {"The pump of model 7 hums at 50 hertz."})};
    Agent agent = agentWith({m_indexes[0].id});
    agent.instructions = "Answer in one short sentence.";
    const AgentRunResult result = tryAgent(agent, "At how many hertz does the pump hum?");
    ASSERT_FALSE(result.isError) << result.outputText;
    EXPECT_GT(result.durationSeconds, 0);
    ASSERT_EQ(result.retrievedContext.size(), 1U);
    ASSERT_EQ(result.retrievedContext[0].chunks.size(), 1U);
    EXPECT_EQ(result.retrievedContext[0].chunks[0].text, "The pump of model 7 hums at 50 hertz.");
}

TEST_F(EndToEndAgent, AnswersWithACaseOfAnEnumeration) {
    const Agent agent =
        agentThat("Sort the ticket.", enumerationOutput({"bug", "bug", "a \"wish\"\nfor more"}));
    const AgentRunResult result = tryAgent(agent, "The window does not open any more.");
    ASSERT_FALSE(result.isError) << result.outputText;
    EXPECT_TRUE(result.outputText == "bug" || result.outputText == "a \"wish\"\nfor more")
        << result.outputText;
}

TEST_F(EndToEndAgent, AnswersWithANestedObjectInDeclaredOrder) {
    // Nothing that a small model can go on writing without end.
    const PropertyKind author = objectOf({property("name", enumerationOf({"Herbert", "Lem"})),
                                          property("isAlive", boolKind(), true)});
    const Agent agent =
        agentThat("Describe the book in a few words.",
                  objectOutput({property("note", enumerationOf({"good", "bad"}), true),
                                property("year", intKind()), property("author", author),
                                property("the \"mood\"\n😀", enumerationOf({"dark", "light"}))}));
    const AgentRunResult result = tryAgent(agent, "Dune, by Frank Herbert, of 1965");
    ASSERT_FALSE(result.isError) << result.outputText;
    const auto content = GeneratedContent::parse(result.outputText);
    ASSERT_TRUE(content) << result.outputText;
    std::vector<std::string> keys;
    for (const auto& entry : std::get<GeneratedContent::Structure>(content->kind)) {
        keys.push_back(entry.key);
    }
    std::vector<std::string> declared = {"year", "author", "the \"mood\"\n😀"};
    if (content->find("note")) {
        declared.insert(declared.begin(), "note");
    }
    EXPECT_EQ(keys, declared);
    const std::string year = plainText(result, "year");
    EXPECT_EQ(year.find_first_not_of("-0123456789"), std::string::npos) << year;
    EXPECT_TRUE(plainText(result, "author").starts_with("{ name: "));
    const auto mood = std::get<AgentOutputFieldValue::EnumCase>(
                          fieldNamed(result, "the \"mood\"\n😀").value.value)
                          .name;
    EXPECT_TRUE(mood == "dark" || mood == "light") << mood;
}

TEST_F(EndToEndAgent, AnswersWithAnArray) {
    const Agent agent = agentThat(
        "Name one or two tags for the text.",
        objectOutput({property("tags", arrayOf(enumerationOf({"tool", "fruit", "animal"})))}));
    const AgentRunResult result = tryAgent(agent, "apple");
    if (result.isError) { // a small model may write on until it is cut off
        EXPECT_NE(result.outputText.find("The model's answer was cut off"), std::string::npos)
            << result.outputText;
        return;
    }
    ASSERT_EQ(result.objectFields.size(), 1U);
    EXPECT_EQ(result.objectFields[0].typeLabel, "[Enum]");
    const std::string tags = plainText(result, "tags");
    EXPECT_TRUE(tags.starts_with('[') && tags.ends_with(']')) << tags;
}

TEST_F(EndToEndAgent, RunsEvaluationCasesSideBySide) {
    const auto state = AppState::make(m_platform);
    const Uuid agentID = state->addAgent().id;
    Agent agent = agentThat("Sort the ticket.", enumerationOutput({"bug"}));
    agent.id = agentID;
    state->updateAgent(agent);
    for (const char* input : {"It crashes.", "It is slow."}) {
        const std::optional<Uuid> added = addCase(*state, agentID);
        setCaseInput(*state, agentID, *added, input);
        setExpectedEnumCase(*state, agentID, *added, "BUG");
    }
    const auto running = std::make_shared<RunningCases>();
    ASSERT_TRUE(m_executor->runUntil(runAllCases(state, agentID, running)));
    for (const AgentEvaluationCase& each : state->agent(agentID)->evaluationCases) {
        EXPECT_EQ(each.lastOutput, "bug");
        EXPECT_EQ(each.lastPassed, true);
    }
    EXPECT_TRUE((*running)->empty());
}

} // namespace
} // namespace ombrel

#include "agents/AgentRunner.h"

#include "agents/AgentTexts.h"
#include "core/JsonEncoder.h"
#include "tests/agents/Knowledge.h"
#include "tests/agents/Properties.h"
#include "tests/support/TestPlatform.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

namespace ombrel {
namespace {

using namespace test;
using namespace std::chrono_literals;
using Value = AgentOutputFieldValue;

class RunAgent : public testing::Test {
  protected:
    AgentRunResult runNow(const std::string& input = "The pump leaks.") {
        return run(*m_test.executor, runAgent(m_test.platform, m_agent, m_indexes, input));
    }
    void answers(ModelAnswer answer) {
        answer.takes = 1500ms;
        m_test.model->queue.push_back(std::move(answer));
    }
    const ModelCall& call() { return m_test.model->calls.at(0); }

    TestPlatform m_test = makeTestPlatform();
    std::vector<RAGIndex> m_indexes = {knowledge("Manual", {"the pump hums", "valves"})};
    Agent m_agent = agentWith({});
};

TEST(CanRunAgent, NeedsAnInputThatIsNotBlankAndNoRun) {
    EXPECT_TRUE(canRunAgent("Hi", false));
    EXPECT_FALSE(canRunAgent("Hi", true));
    EXPECT_FALSE(canRunAgent("", false));
    EXPECT_FALSE(canRunAgent(" \n\t\u00a0", false));
}

TEST_F(RunAgent, GivesTheModelsText) {
    answers("Replace the seal.");
    const AgentRunResult result = runNow();
    EXPECT_EQ(result.outputText, "Replace the seal.");
    EXPECT_EQ(result.durationSeconds, 1.5);
    EXPECT_FALSE(result.isError);
    EXPECT_TRUE(result.objectFields.empty());
    EXPECT_EQ(call().kind, ModelCall::Kind::respond);
    EXPECT_EQ(call().prompt, "The pump leaks.");
    EXPECT_TRUE(call().tools.empty());
}

TEST_F(RunAgent, SendsInputAndInstructionsAsTheyStandWithoutAttachments) {
    m_agent.instructions = "Be {{context.mood}}. ";
    m_agent.contextFieldNames = {"mood"};
    m_agent.toolIDs = {Uuid::random()};
    answers("ok");
    EXPECT_TRUE(runNow("  Hi\n").retrievedContext.empty());
    EXPECT_EQ(call().instructions, "Be {{context.mood}}. ");
    EXPECT_EQ(call().prompt, "  Hi\n");
    EXPECT_TRUE(call().tools.empty());
}

TEST_F(RunAgent, PutsWhatItRetrievedIntoTheInstructions) {
    m_agent = agentWith({m_indexes[0].id});
    answers("ok");
    const AgentRunResult result = runNow("pump?");
    ASSERT_EQ(result.retrievedContext.size(), 1U);
    EXPECT_EQ(result.retrievedContext[0].chunks.size(), 1U);
    EXPECT_EQ(call().instructions, "Be kind.\n\nContext:\n[1] Manual > Part 1: the pump hums");
    EXPECT_EQ(call().prompt, "pump?");
}

TEST_F(RunAgent, IsRefusedAtOnceWithoutAModel) {
    m_agent = agentWith({m_indexes[0].id});
    m_test.model->unavailableReason = "modelNotReady";
    const AgentRunResult result = runNow("pump?");
    EXPECT_EQ(result.outputText,
              "On-device model unavailable — enable Apple Intelligence to run this agent.");
    EXPECT_EQ(result.durationSeconds, 0);
    EXPECT_TRUE(result.isError);
    EXPECT_TRUE(result.retrievedContext.empty());
    EXPECT_TRUE(result.objectFields.empty());
    EXPECT_EQ(m_test.model->sessionCount, 0U);
}

TEST_F(RunAgent, SaysWhyTheModelFailedAndKeepsTheContext) {
    m_agent = agentWith({m_indexes[0].id});
    for (const bool isStructured : {false, true}) {
        m_agent.output = isStructured ? objectOutput({property("a", intKind())}) : textOutput();
        answers(ModelAnswer::fails("The request was cancelled."));
        const AgentRunResult result = runNow("pump?");
        EXPECT_EQ(result.outputText, "The on-device model failed: The request was cancelled.");
        EXPECT_EQ(result.durationSeconds, 1.5);
        EXPECT_TRUE(result.isError);
        EXPECT_EQ(result.retrievedContext.size(), 1U);
        EXPECT_TRUE(result.objectFields.empty());
    }
}

TEST_F(RunAgent, RefusesAnEnumerationWithoutCasesAndKeepsTheContext) {
    m_agent = agentWith({m_indexes[0].id});
    m_agent.output = enumerationOutput({});
    const AgentRunResult result = runNow("pump?");
    EXPECT_EQ(result.outputText, "This output type has no cases/properties to generate yet.");
    EXPECT_EQ(result.durationSeconds, 0);
    EXPECT_TRUE(result.isError);
    EXPECT_EQ(result.retrievedContext.size(), 1U);
    EXPECT_TRUE(m_test.model->calls.empty());
}

TEST_F(RunAgent, ReportsASchemaThatCannotBeHeld) {
    m_agent = agentWith({m_indexes[0].id});
    m_agent.output = objectOutput({property("a", intKind()), property("a", intKind())});
    const AgentRunResult result = runNow("pump?");
    EXPECT_EQ(result.outputText, "The on-device model failed: The object \"Output\" has two "
                                 "properties named \"a\".");
    EXPECT_TRUE(result.isError);
    EXPECT_EQ(result.retrievedContext.size(), 1U);
    EXPECT_TRUE(m_test.model->calls.empty());
}

TEST_F(RunAgent, ShowsTheOutputTextAloneForAnEnumeration) {
    m_agent.output = enumerationOutput({"bug", "question"});
    answers("\"bug\"");
    const AgentRunResult result = runNow();
    EXPECT_EQ(result.outputText, "bug");
    EXPECT_FALSE(result.isError);
    EXPECT_EQ(result.durationSeconds, 1.5);
    EXPECT_TRUE(result.objectFields.empty());
    EXPECT_EQ(call().kind, ModelCall::Kind::respondWithSchema);
    EXPECT_EQ(call().schema->jsonSchema(), R"({"type":"string","enum":["bug","question"]})");
    EXPECT_TRUE(call().includeSchemaInPrompt);
    EXPECT_EQ(call().prompt, "The pump leaks.");
}

TEST_F(RunAgent, ShowsAFieldForEachPropertyOfAnObject) {
    m_agent.output =
        objectOutput({property("title", stringKind()), property("count", intKind(), true),
                      property("kind", enumerationOf({"bug"}))});
    answers(R"({"kind":"other", "title":"Leak"})");
    const AgentRunResult result = runNow();
    EXPECT_EQ(result.outputText, R"({"kind":"other","title":"Leak"})");
    EXPECT_FALSE(result.isError);
    ASSERT_EQ(result.objectFields.size(), 3U);
    EXPECT_EQ(result.objectFields[0].value, Value{Value::Plain{"Leak"}});
    EXPECT_EQ(result.objectFields[1].value, Value{Value::Missing{}});
    // A value that is no case.
    EXPECT_EQ(result.objectFields[2].value, (Value{Value::EnumCase{"other", std::nullopt}}));
}

TEST_F(RunAgent, ShowsTheRawTextOfAStructuredAnswerThatIsNoStructure) {
    m_agent.output = objectOutput({property("title", stringKind())});
    answers("[\"Leak\"]");
    const AgentRunResult result = runNow();
    EXPECT_EQ(result.outputText, "[\"Leak\"]");
    EXPECT_FALSE(result.isError);
    EXPECT_TRUE(result.objectFields.empty());
}

TEST_F(RunAgent, AsksTheModelForAnObjectWithoutProperties) {
    m_agent.output = objectOutput({});
    answers("{}");
    const AgentRunResult result = runNow();
    EXPECT_EQ(result.outputText, "{}");
    EXPECT_FALSE(result.isError);
    EXPECT_TRUE(result.objectFields.empty());
}

TEST_F(RunAgent, HalfAnObjectIsAFailureOfTheModel) {
    m_agent.output = objectOutput({property("title", stringKind())});
    answers("{\"title\": \"Le");
    const AgentRunResult result = runNow();
    EXPECT_TRUE(result.outputText.starts_with("The on-device model failed: "));
    EXPECT_TRUE(result.isError);
}

TEST_F(RunAgent, IsNotChangedByEditsMeanwhile) {
    m_agent.output = enumerationOutput({"bug"});
    m_test.model->gate.close();
    answers("\"bug\"");
    const auto result =
        start(*m_test.executor, runAgent(m_test.platform, m_agent, m_indexes, "pump?"));
    m_agent = agentWith({});
    m_indexes.clear();
    m_test.model->gate.open();
    m_test.executor->runAll();
    ASSERT_TRUE(*result);
    EXPECT_EQ((*result)->outputText, "bug");
}

TEST_F(RunAgent, ResultsAreWrittenAsTheirKeysSay) {
    m_agent.output =
        objectOutput({property("kind", enumerationOf({"bug"})), property("gone", stringKind())});
    answers("{\"kind\":\"bug\"}");
    AgentRunResult result = runNow();
    const std::string first = result.objectFields[0].id.text();
    const std::string second = result.objectFields[1].id.text();
    EXPECT_EQ(encodeJson(result),
              R"({"outputText":"{\"kind\":\"bug\"}","durationSeconds":1.5,"isError":false,)"
              R"("retrievedContext":[],"objectFields":[{"id":")" +
                  first +
                  R"(","name":"kind","typeLabel":"Enum","value":{"enumCase":{"name":"bug"}}},)"
                  R"({"id":")" +
                  second + R"(","name":"gone","typeLabel":"String","value":{"missing":{}}}]})");
}

TEST(RunStatusText, IsTheDurationOrThatItFailed) {
    AgentRunResult result;
    result.durationSeconds = 1.256;
    EXPECT_EQ(runStatusText(result), "1.26s");
    result.isError = true;
    EXPECT_EQ(runStatusText(result), "Failed");
}

} // namespace
} // namespace ombrel

#include "agents/AgentInstructionRefiner.h"

#include "tests/agents/Properties.h"
#include "tests/support/TestPlatform.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <variant>

namespace ombrel {
namespace {

using namespace test;
using Refiner = AgentInstructionRefiner;

Agent triage() {
    Agent agent = newAgent("Triage");
    agent.summary = "Sorts tickets";
    agent.instructions = "Sort the ticket for {{context.team}}.";
    agent.input = {property("ticket", stringKind())};
    agent.output = enumerationOutput({"bug", "question"});
    agent.contextFieldNames = {"team"};
    return agent;
}

TEST(SetupDescription, TellsNameSummaryInputOutputAndContextFields) {
    EXPECT_EQ(Refiner::setupDescription(triage()),
              "Name: Triage\n"
              "Summary: Sorts tickets\n"
              "Input fields: ticket (String)\n"
              "Output: one of [bug, question]\n"
              "Flow context placeholders in use: {{context.team}}");
}

TEST(SetupDescription, KeepsTheLineOfAnEmptyNameAndLeavesOutAnEmptySummary) {
    EXPECT_EQ(Refiner::setupDescription(newAgent("")), "Name: \nInput: none\nOutput: plain text");
}

TEST(SetupDescription, SaysNoneForAnAgentWithoutInput) {
    Agent agent = triage();
    agent.input.clear();
    const std::string setup = Refiner::setupDescription(agent);
    EXPECT_NE(setup.find("\nInput: none\n"), std::string::npos);
    EXPECT_EQ(setup.find("Input fields:"), std::string::npos);
}

TEST(SetupDescription, EndsTheLineOfAnObjectWithoutPropertiesWithABlank) {
    Agent agent = newAgent("A");
    agent.output = objectOutput({});
    EXPECT_TRUE(Refiner::setupDescription(agent).ends_with("\nOutput object fields: "));
}

TEST(SetupDescription, ShowsAnArrayInBracketsAndNeitherOptionalityNorDescriptions) {
    Agent agent = newAgent("A");
    AgentProperty tags = property("tags", arrayOf(stringKind()), true);
    tags.description = "At most three";
    agent.input = {tags, property("count", intKind())};
    agent.output = objectOutput({tags, property("rows", arrayOf(arrayOf(boolKind())))});
    EXPECT_EQ(Refiner::setupDescription(agent), "Name: A\n"
                                                "Input fields: tags ([String]), count (Int)\n"
                                                "Output object fields: tags ([String]), rows "
                                                "([[Bool]])");
}

TEST(SetupDescription, TakesPlaceholdersFromTheContextFieldsAlone) {
    Agent agent = triage();
    agent.contextFieldNames.clear();
    EXPECT_EQ(Refiner::setupDescription(agent).find("placeholders"), std::string::npos);
    agent.contextFieldNames = {"team", "day"};
    EXPECT_TRUE(Refiner::setupDescription(agent).ends_with(
        "placeholders in use: {{context.team}}, {{context.day}}"));
}

TEST(CanRefineInstructions, NeedsMoreThanBlanks) {
    Agent agent = newAgent("A");
    EXPECT_FALSE(canRefineInstructions(agent));
    agent.instructions = " \n\t\u00A0";
    EXPECT_FALSE(canRefineInstructions(agent));
    agent.instructions = " x ";
    EXPECT_TRUE(canRefineInstructions(agent));
}

class RefineInstructions : public testing::Test {
  protected:
    Result<Refiner::Result> refine(const Agent& agent) {
        return run(*platform.executor, Refiner::refine(platform.model, agent));
    }
    TestPlatform platform = makeTestPlatform();
};

TEST_F(RefineInstructions, GivesTheRewrittenTextAndItsSummary) {
    platform.model->queue = {R"({"instructions":"Sort \"it\".\nWell.","summary":"Shorter."})"};
    const auto result = refine(triage());
    ASSERT_TRUE(result) << result.error().message;
    EXPECT_EQ(*result, (Refiner::Result{"Sort \"it\".\nWell.", "Shorter."}));
}

TEST_F(RefineInstructions, AsksForBothPropertiesWithTheirGuides) {
    platform.model->queue = {R"({"instructions":"a","summary":"b"})"};
    ASSERT_TRUE(refine(triage()));
    ASSERT_EQ(platform.model->calls.size(), 1U);
    const ModelCall& call = platform.model->calls[0];
    EXPECT_EQ(call.kind, ModelCall::Kind::respondWithSchema);
    EXPECT_TRUE(call.includeSchemaInPrompt);
    EXPECT_TRUE(call.tools.empty());
    EXPECT_EQ(call.instructions,
              "You are an expert prompt engineer. You improve the system instructions given to "
              "another AI agent so it behaves more reliably and follows its own input/output "
              "contract, without changing its intent. Keep any {{context.field}} placeholders "
              "exactly as written — they're substituted at runtime and must not be renamed, "
              "reworded, or removed. Keep the rewritten instructions reasonably concise.");
    const auto& object = std::get<DynamicGenerationSchema::Object>(call.schema->root().form);
    EXPECT_EQ(object.name, "RefinedAgentInstructions");
    ASSERT_EQ(object.properties.size(), 2U);
    EXPECT_EQ(object.properties[0].name, "instructions");
    EXPECT_EQ(object.properties[0].description,
              "The rewritten instructions: clear, specific, and unambiguous. Preserve the original "
              "intent and keep any {{context.field}} placeholders exactly as written.");
    EXPECT_EQ(object.properties[1].name, "summary");
    EXPECT_EQ(object.properties[1].description,
              "A one or two sentence summary of what was changed and why.");
    EXPECT_FALSE(object.properties[0].isOptional || object.properties[1].isOptional);
}

TEST_F(RefineInstructions, QuotesTheInstructionsVerbatimEvenWithTripleQuotes) {
    platform.model->queue = {R"({"instructions":"a","summary":"b"})"};
    Agent agent = triage();
    agent.instructions = " Say \"\"\"hello\"\"\".\n";
    ASSERT_TRUE(refine(agent));
    EXPECT_EQ(platform.model->calls.at(0).prompt,
              "Here is the agent's real setup:\n" + Refiner::setupDescription(agent) +
                  "\n\nCurrent instructions:\n\"\"\"\n Say \"\"\"hello\"\"\".\n\n\"\"\"\n\n"
                  "Rewrite the instructions to be clearer and more specific, and more likely to "
                  "produce output that reliably matches the input/output fields above.");
}

TEST_F(RefineInstructions, AsksNothingOfAModelThatIsUnavailable) {
    platform.model->unavailableReason = "modelNotInstalled";
    const auto result = refine(triage());
    ASSERT_FALSE(result);
    EXPECT_EQ(result.error().message, "On-device model unavailable — enable Apple Intelligence to "
                                      "refine instructions.");
    EXPECT_EQ(platform.model->sessionCount, 0U);
}

TEST_F(RefineInstructions, PassesTheModelsFailureThrough) {
    platform.model->queue = {ModelAnswer::fails("The context is full.")};
    const auto result = refine(triage());
    ASSERT_FALSE(result);
    EXPECT_EQ(result.error().message, "The context is full.");
}

TEST_F(RefineInstructions, FailsWhenTheAnswerLacksTheText) {
    for (const char* answer : {R"({"summary":"b"})", R"({"instructions":1,"summary":"b"})", "[]"}) {
        platform.model->queue = {answer};
        EXPECT_FALSE(refine(triage())) << answer;
    }
}

} // namespace
} // namespace ombrel

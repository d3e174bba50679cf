#include "agents/AgentEvaluation.h"

#include "tests/agents/Properties.h"
#include "tests/core/Workspace.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace ombrel {
namespace {

using namespace test;

AgentEvaluationCase caseWith(std::string input) {
    AgentEvaluationCase made;
    made.id = Uuid::random();
    made.input = std::move(input);
    return made;
}

AgentEvaluationCase expecting(std::string enumCase) {
    AgentEvaluationCase made = caseWith("input");
    made.expectedEnumCase = std::move(enumCase);
    return made;
}

AgentEvaluationCase expecting(std::map<std::string, std::string> fields) {
    AgentEvaluationCase made = caseWith("input");
    made.expectedObjectFields = std::move(fields);
    return made;
}

Agent agentOf(AgentOutputKind output) {
    Agent agent = newAgent("Triage");
    agent.output = std::move(output);
    return agent;
}

TEST(Judge, SaysNothingOfATextAgentWhateverTheCaseHolds) {
    AgentEvaluationCase given = expecting("bug");
    given.expectedObjectFields = {{"a", "bug"}};
    EXPECT_EQ(judge(agentOf(textOutput()), given, "bug"), std::nullopt);
}

TEST(Judge, AnEnumerationNeedsAnExpectation) {
    const Agent agent = agentOf(enumerationOutput({"bug"}));
    EXPECT_EQ(judge(agent, expecting(""), "bug"), std::nullopt);
    EXPECT_EQ(judge(agent, expecting("bug"), "bug"), true);
    EXPECT_EQ(judge(agent, expecting("bug"), "question"), false);
}

TEST(Judge, TakesNoNoticeOfCase) {
    EXPECT_EQ(judge(agentOf(enumerationOutput({"bug"})), expecting("Bug"), "bug"), true);
    EXPECT_EQ(judge(agentOf(objectOutput({})), expecting({{"a", "DUNE"}}), R"({"a":"Dune"})"),
              true);
}

TEST(Judge, IsContentWithAPartOfAWord) {
    EXPECT_EQ(judge(agentOf(enumerationOutput({"low", "slow"})), expecting("low"), "\"slow\""),
              true);
}

TEST(Judge, DoesNotTrimTheExpectedCase) {
    EXPECT_EQ(judge(agentOf(enumerationOutput({"bug"})), expecting(" "), "bug"), false);
}

TEST(Judge, AnObjectWithBlankExpectationsOnlyIsUnjudged) {
    const Agent agent = agentOf(objectOutput({property("a", stringKind())}));
    EXPECT_EQ(judge(agent, expecting({{"a", " \n"}, {"b", ""}}), "{}"), std::nullopt);
    EXPECT_EQ(judge(agent, expecting(std::map<std::string, std::string>()), "{}"), std::nullopt);
}

TEST(Judge, AnObjectNeedsEveryExpectedValue) {
    const Agent agent = agentOf(objectOutput({}));
    const std::string output = R"({"title":"Dune","year":1965})";
    EXPECT_EQ(judge(agent, expecting({{"title", "Dune"}, {"year", "1965"}}), output), true);
    EXPECT_EQ(judge(agent, expecting({{"title", "Dune"}, {"year", "1966"}}), output), false);
    EXPECT_EQ(judge(agent, expecting({{"title", "Dune"}, {"year", " "}}), output), true);
}

TEST(Judge, FindsAValueThatStandsEscapedInTheJsonOfAnObject) {
    const AgentEvaluationCase given = expecting({{"title", "The \"Old\"\nMan"}});
    EXPECT_EQ(judge(agentOf(objectOutput({})), given, R"({"title":"the \"old\"\nman"})"), true);
    EXPECT_EQ(judge(agentOf(objectOutput({})), given, R"({"title":"the old\nman"})"), false);
    // The answer of an enumeration is no JSON.
    const Agent agent = agentOf(enumerationOutput({"a \"wish\""}));
    EXPECT_EQ(judge(agent, expecting("a \"wish\""), "A \"Wish\""), true);
    EXPECT_EQ(judge(agent, expecting("a \"wish\""), R"(a \"wish\")"), false);
}

TEST(Judge, FindsAnExpectedValueAnywhereInTheText) {
    const Agent agent = agentOf(objectOutput({}));
    EXPECT_EQ(judge(agent, expecting({{"title", "year"}}), R"({"year":"Dune"})"), true);
    EXPECT_EQ(judge(agent, expecting({{"gone", "Dune"}}), R"({"year":"Dune"})"), true);
    // The kept values stay untrimmed.
    EXPECT_EQ(judge(agent, expecting({{"title", " Dune"}}), R"({"year":"Dune"})"), false);
}

TEST(CanRunCase, NeedsAnInputThatIsNotBlankAndNoRunOfTheCase) {
    const AgentEvaluationCase given = caseWith("Hi");
    EXPECT_TRUE(canRunCase(given, {}));
    EXPECT_TRUE(canRunCase(given, {Uuid::random()}));
    EXPECT_FALSE(canRunCase(given, {given.id}));
    EXPECT_FALSE(canRunCase(caseWith(" \n"), {}));
}

TEST(CanRunAllCases, NeedsCasesAndNoRun) {
    Agent agent = newAgent("A");
    EXPECT_FALSE(canRunAllCases(agent, {}));
    agent.evaluationCases = {caseWith("")};
    EXPECT_TRUE(canRunAllCases(agent, {}));
    EXPECT_FALSE(canRunAllCases(agent, {Uuid::random()}));
}

class Evaluation : public testing::Test {
  protected:
    Evaluation() {
        Agent agent = agentOf(enumerationOutput({"bug", "question"}));
        m_agentID = agent.id;
        m_workspace->agents = std::vector<Agent>{std::move(agent)};
    }
    // Gives the agent a case for each input.
    void setInputs(const std::vector<std::string>& inputs) {
        Agent agent = stored();
        agent.evaluationCases.clear();
        for (const std::string& input : inputs) {
            agent.evaluationCases.push_back(caseWith(input));
        }
        m_workspace->updateAgent(agent);
    }
    void setOutput(AgentOutputKind output) {
        Agent agent = stored();
        agent.output = std::move(output);
        m_workspace->updateAgent(agent);
    }
    const Agent& stored() const { return *m_workspace->agent(m_agentID); }
    const AgentEvaluationCase& storedCase(std::size_t place = 0) const {
        return stored().evaluationCases.at(place);
    }
    Uuid caseID(std::size_t place = 0) const { return storedCase(place).id; }
    Task<void> runOne(std::size_t place = 0) {
        return runCase(m_workspace.state, m_agentID, storedCase(place), m_running);
    }
    ScriptedModel& model() { return *m_workspace.platform.model; }
    TestExecutor& executor() { return *m_workspace.platform.executor; }

    Workspace m_workspace;
    std::shared_ptr<RunningCases> m_running = std::make_shared<RunningCases>();
    Uuid m_agentID;
};

TEST_F(Evaluation, WritesOutputAndVerdictToTheCase) {
    setInputs({"It crashes."});
    setExpectedEnumCase(*m_workspace.state, m_agentID, caseID(), "Bug");
    model().queue = {"\"bug\"", "\"question\""};
    EXPECT_TRUE(m_workspace.schedules([&] { run(executor(), runOne()); }));
    EXPECT_EQ(model().prompts(), std::vector<std::string>{"It crashes."});
    EXPECT_EQ(storedCase().lastOutput, "bug");
    EXPECT_EQ(storedCase().lastPassed, true);
    run(executor(), runOne());
    EXPECT_EQ(storedCase().lastOutput, "question");
    EXPECT_EQ(storedCase().lastPassed, false);
    EXPECT_TRUE((*m_running)->empty());
}

TEST_F(Evaluation, ACaseWithoutExpectationGetsNoVerdictButKeepsItsOutput) {
    setInputs({"It crashes."});
    Agent agent = stored();
    agent.evaluationCases[0].lastPassed = true; // of an earlier run
    m_workspace->updateAgent(agent);
    model().queue = {"\"bug\""};
    run(executor(), runOne());
    EXPECT_EQ(storedCase().lastOutput, "bug");
    EXPECT_EQ(storedCase().lastPassed, std::nullopt);
}

TEST_F(Evaluation, TheCasesOfATextAgentNeverGetAVerdictButKeepTheirOutput) {
    setOutput(textOutput());
    setInputs({"It crashes."});
    setExpectedEnumCase(*m_workspace.state, m_agentID, caseID(), "bug");
    model().queue = {"a bug"};
    run(executor(), runOne());
    EXPECT_EQ(storedCase().lastOutput, "a bug");
    EXPECT_EQ(storedCase().lastPassed, std::nullopt);
}

TEST_F(Evaluation, AFailedRunIsJudgedByItsMessage) {
    setInputs({"It crashes."});
    setExpectedEnumCase(*m_workspace.state, m_agentID, caseID(), "model");
    model().queue = {ModelAnswer::fails("no bug here")};
    run(executor(), runOne());
    EXPECT_EQ(storedCase().lastOutput, "The on-device model failed: no bug here");
    EXPECT_EQ(storedCase().lastPassed, true);
}

TEST_F(Evaluation, JudgesByTheAgentAsItWasAtTheStart) {
    setInputs({"It crashes."});
    setExpectedEnumCase(*m_workspace.state, m_agentID, caseID(), "bug");
    model().queue = {"\"bug\""};
    model().gate.close();
    const auto done = start(executor(), runOne());
    setOutput(textOutput());
    setCaseInput(*m_workspace.state, m_agentID, caseID(), "edited");
    model().gate.open();
    executor().runAll();
    EXPECT_TRUE(*done);
    EXPECT_EQ(storedCase().lastPassed, true);
    EXPECT_EQ(storedCase().input, "edited"); // What was edited meanwhile stays.
}

TEST_F(Evaluation, TheIdIsAmongTheRunningOnesFromTheCallToTheEnd) {
    setInputs({"It crashes."});
    model().queue = {"\"bug\""};
    model().gate.close();
    Task<void> task = runOne();
    EXPECT_EQ(**m_running, std::set<Uuid>{caseID()});
    const auto done = start(executor(), std::move(task));
    EXPECT_EQ(**m_running, std::set<Uuid>{caseID()});
    model().gate.open();
    executor().runAll();
    EXPECT_TRUE(*done);
    EXPECT_TRUE((*m_running)->empty());
}

TEST_F(Evaluation, DropsTheResultOfACaseThatIsGone) {
    setInputs({"first", "second"});
    model().queue = {"\"bug\""};
    model().gate.close();
    const Uuid gone = caseID();
    const auto done = start(executor(), runOne());
    removeCase(*m_workspace.state, m_agentID, gone);
    m_workspace.settle();
    model().gate.open();
    executor().runAll();
    EXPECT_TRUE(*done);
    EXPECT_EQ(stored().evaluationCases.size(), 1U);
    EXPECT_EQ(storedCase().lastOutput, std::nullopt);
    EXPECT_FALSE(m_workspace->hasPendingCheckpoint());
    EXPECT_TRUE((*m_running)->empty());
}

TEST_F(Evaluation, DropsTheResultOfAnAgentThatIsGone) {
    setInputs({"first"});
    model().queue = {"\"bug\""};
    model().gate.close();
    const auto done = start(executor(), runOne());
    m_workspace->deleteAgent(m_agentID);
    model().gate.open();
    executor().runAll();
    EXPECT_TRUE(*done);
    EXPECT_TRUE((*m_running)->empty());
}

TEST_F(Evaluation, ARunOfAnAgentThatIsGoneDoesNothing) {
    const AgentEvaluationCase given = caseWith("first");
    run(executor(), runCase(m_workspace.state, Uuid::random(), given, m_running));
    EXPECT_TRUE(model().calls.empty());
    EXPECT_TRUE((*m_running)->empty());
}

TEST_F(Evaluation, ARunOutlivesWhoeverBeganIt) {
    setInputs({"first"});
    model().queue = {"\"bug\""};
    model().gate.close();
    executor().spawn(runOne());
    executor().runAll();
    m_running.reset();
    model().gate.open();
    executor().runAll();
    EXPECT_EQ(storedCase().lastOutput, "bug");
}

TEST_F(Evaluation, RunAllRunsTheCasesSideBySideAndEndsWithTheLast) {
    setInputs({"a", " ", "c", "d", "e"});
    model().answer = [](const ModelCall& call) { return "\"of " + call.prompt + "\""; };
    model().gate.close();
    const auto done = start(executor(), runAllCases(m_workspace.state, m_agentID, m_running));
    EXPECT_EQ((*m_running)->size(), 5U);
    EXPECT_FALSE(canRunAllCases(stored(), **m_running));
    EXPECT_EQ(model().prompts(), (std::vector<std::string>{"a", " ", "c", "d", "e"}));
    for (std::size_t left = 4; left > 0; --left) {
        ASSERT_TRUE(model().gate.letOne());
        executor().runAll();
        EXPECT_EQ((*m_running)->size(), left);
        EXPECT_FALSE(*done);
        EXPECT_FALSE(canRunAllCases(stored(), **m_running));
    }
    model().gate.open();
    executor().runAll();
    EXPECT_TRUE(*done);
    EXPECT_TRUE(canRunAllCases(stored(), **m_running));
    EXPECT_EQ(storedCase(1).lastOutput, "of  ");
    EXPECT_EQ(storedCase(4).lastOutput, "of e");
}

TEST_F(Evaluation, RunAllDoesNothingWhileACaseRuns) {
    setInputs({"a", "b"});
    model().gate.close();
    const auto first = start(executor(), runOne());
    run(executor(), runAllCases(m_workspace.state, m_agentID, m_running));
    EXPECT_EQ(model().calls.size(), 1U);
    EXPECT_EQ((*m_running)->size(), 1U);
}

TEST_F(Evaluation, RunAllOfNoCasesOrNoAgentEnds) {
    run(executor(), runAllCases(m_workspace.state, m_agentID, m_running));
    run(executor(), runAllCases(m_workspace.state, Uuid::random(), m_running));
    EXPECT_TRUE(model().calls.empty());
}

TEST_F(Evaluation, ANewCaseIsEmptyAndStandsAtTheEnd) {
    setInputs({"first"});
    std::optional<Uuid> added;
    EXPECT_TRUE(m_workspace.schedules([&] { added = addCase(*m_workspace.state, m_agentID); }));
    ASSERT_EQ(stored().evaluationCases.size(), 2U);
    AgentEvaluationCase expected;
    expected.id = *added;
    EXPECT_EQ(storedCase(1), expected);
    EXPECT_NE(*added, Uuid());
    EXPECT_EQ(addCase(*m_workspace.state, Uuid::random()), std::nullopt);
}

TEST_F(Evaluation, EditingKeepsTheLastResult) {
    setInputs({"first"});
    Agent agent = stored();
    agent.evaluationCases[0].lastOutput = "bug";
    agent.evaluationCases[0].lastPassed = true;
    m_workspace->updateAgent(agent);
    setCaseInput(*m_workspace.state, m_agentID, caseID(), "other");
    setExpectedEnumCase(*m_workspace.state, m_agentID, caseID(), "question");
    EXPECT_TRUE(m_workspace.schedules(
        [&] { setExpectedObjectField(*m_workspace.state, m_agentID, caseID(), "title", "Dune"); }));
    EXPECT_EQ(storedCase().input, "other");
    EXPECT_EQ(storedCase().expectedEnumCase, "question");
    EXPECT_EQ(storedCase().expectedObjectFields,
              (std::map<std::string, std::string>{{"title", "Dune"}}));
    EXPECT_EQ(storedCase().lastOutput, "bug");
    EXPECT_EQ(storedCase().lastPassed, true);
}

TEST_F(Evaluation, EditingWhatIsGoneDoesNothing) {
    setInputs({"first"});
    const std::vector<Agent> before = *m_workspace->agents;
    EXPECT_FALSE(m_workspace.schedules([&] {
        setCaseInput(*m_workspace.state, m_agentID, Uuid::random(), "x");
        setExpectedEnumCase(*m_workspace.state, Uuid::random(), caseID(), "x");
        removeCase(*m_workspace.state, m_agentID, Uuid::random());
    }));
    EXPECT_EQ(*m_workspace->agents, before);
}

TEST_F(Evaluation, AnotherOutputKeepsTheExpectedCaseUnused) {
    setInputs({"first"});
    setExpectedEnumCase(*m_workspace.state, m_agentID, caseID(), "bug");
    setOutput(objectOutput({property("title", stringKind())}));
    EXPECT_EQ(storedCase().expectedEnumCase, "bug");
    EXPECT_EQ(judge(stored(), storedCase(), "nothing of the kind"), std::nullopt);
}

TEST(ExpectedChoices, OfAnEnumerationAreNoneAndItsCases) {
    EXPECT_EQ(expectedEnumChoices(agentOf(enumerationOutput({"bug", "question"}))),
              (std::vector<std::string>{"", "bug", "question"}));
    EXPECT_TRUE(expectedEnumChoices(agentOf(textOutput())).empty());
    EXPECT_TRUE(expectedEnumChoices(agentOf(objectOutput({}))).empty());
}

TEST(ExpectedChoices, OfAnObjectAreARowForEachPropertyWithWhatIsStored) {
    const Agent agent =
        agentOf(objectOutput({property("title", stringKind()), property("isNew", boolKind()),
                              property("kind", enumerationOf({"bug"})), property("n", intKind())}));
    const AgentEvaluationCase given = expecting({{"title", "Dune"}, {"gone", "still judged"}});
    EXPECT_EQ(expectedFields(agent, given),
              (std::vector<ExpectedField>{{"title", "Dune", std::nullopt},
                                          {"isNew", "", {{"true", "false"}}},
                                          {"kind", "", {{"", "bug"}}},
                                          {"n", "", std::nullopt}}));
    EXPECT_TRUE(expectedFields(agentOf(textOutput()), given).empty());
    // The value of a property that was removed counts all the same.
    EXPECT_EQ(judge(agent, given, "Dune"), false);
    EXPECT_EQ(judge(agent, given, "Dune is still judged"), true);
}

TEST_F(Evaluation, UsageCountsAFlowOnceHoweverManyNodesItHas) {
    EXPECT_EQ(usageLine(*m_workspace.state, m_agentID), "Not used in any flow yet");
    const Uuid first = m_workspace->addFlow().id;
    const Uuid second = m_workspace->addFlow().id;
    const FlowNodeKind node{FlowNodeKind::Agent{m_agentID}};
    m_workspace->addFlowNode(node, first, 0, 0);
    m_workspace->addFlowNode(node, first, 100, 0);
    EXPECT_EQ(usageLine(*m_workspace.state, m_agentID), "Used in 1 flow");
    m_workspace->addFlowNode(node, second, 0, 0);
    EXPECT_EQ(usageLine(*m_workspace.state, m_agentID), "Used in 2 flows");
}

} // namespace
} // namespace ombrel

#include "flows/FlowValidator.h"
#include "tests/flows/FlowSamples.h"
#include "tests/support/TestPlatform.h"

#include <gtest/gtest.h>

namespace ombrel {
namespace {

using test::Drawing;
using Operator = WireBranchOperator;
using Severity = FlowIssue::Severity;

// What an issue says, without its id.
struct Said {
    Severity severity;
    std::string message;
    std::optional<Uuid> nodeID;
    bool operator==(const Said&) const = default;
    friend std::ostream& operator<<(std::ostream& out, const Said& said) {
        return out << rawValue(said.severity) << " " << said.message << " "
                   << (said.nodeID ? said.nodeID->text() : "-");
    }
};

Said errorOn(Uuid node, std::string message) {
    return {Severity::error, std::move(message), node};
}
Said warningOn(Uuid node, std::string message) {
    return {Severity::warning, std::move(message), node};
}
const Said neverFinishes{Severity::warning,
                         "No End node is reachable from Start — this flow can never finish.",
                         std::nullopt};
const Said noStart{Severity::error, "This flow has no Start node.", std::nullopt};

std::vector<Said> issuesOf(const Drawing& drawing) {
    std::vector<Said> said;
    for (const FlowIssue& issue :
         FlowValidator::validate(drawing.flow, drawing.agents, drawing.tools)) {
        said.push_back({issue.severity, issue.message, issue.nodeID});
    }
    return said;
}

using Issues = std::vector<Said>;

TEST(FlowValidator, TellsOfANewFlowThatStartIsNotConnectedAndThatItNeverFinishes) {
    const Drawing drawing;
    EXPECT_EQ(
        issuesOf(drawing),
        (Issues{errorOn(drawing.start(), "Start isn't connected to anything."), neverFinishes}));
}

TEST(FlowValidator, SaysOnlyThatThereIsNoStartOfAFlowWithoutNodes) {
    Drawing drawing;
    drawing.flow.nodes.clear();
    EXPECT_EQ(issuesOf(drawing), Issues{noStart});
}

TEST(FlowValidator, ReportsEveryNodeAsUnreachableWhenThereIsNoStart) {
    Drawing drawing;
    drawing.flow.nodes.clear();
    const Uuid end = drawing.end("done", false);
    const Uuid branch = drawing.branch("f");
    drawing.connect(branch, end, "true");
    drawing.connect(branch, drawing.end("no"), "false");
    const Uuid no = drawing.flow.nodes.back().id;
    EXPECT_EQ(issuesOf(drawing),
              (Issues{noStart, warningOn(end, "End (.done) isn't reachable from Start."),
                      warningOn(branch, "This branch isn't reachable from Start."),
                      warningOn(no, "End (.no) isn't reachable from Start."),
                      errorOn(branch, "Branch has nothing upstream to read \"f\" from.")}));
}

TEST(FlowValidator, RefusesEveryStartButTheFirstAndNeverCallsOneUnreachable) {
    Drawing drawing;
    const Uuid second = drawing.node(FlowNodeKind::Start{});
    const Uuid third = drawing.node(FlowNodeKind::Start{});
    drawing.connect(drawing.start(), drawing.end());
    drawing.connect(second, drawing.end("other"));
    EXPECT_EQ(issuesOf(drawing), (Issues{errorOn(second, "A flow can only have one Start node."),
                                         errorOn(third, "A flow can only have one Start node."),
                                         warningOn(drawing.flow.nodes.back().id,
                                                   "End (.other) isn't reachable from Start."),
                                         errorOn(third, "Start isn't connected to anything.")}));
}

TEST(FlowValidator, AcceptsAnEnumerationWithOneOfTwoCasesConnected) {
    Drawing drawing;
    const Uuid agent = drawing.agent("Triage", test::enumeration({"a", "b"}));
    drawing.connect(drawing.start(), agent);
    drawing.connect(agent, drawing.end(), "a");
    EXPECT_EQ(issuesOf(drawing), Issues{});
}

TEST(FlowValidator, AcceptsTwoEndsOfOneNameFedByOneAgent) {
    Drawing drawing;
    const Uuid agent = drawing.agent("Triage", test::enumeration({"a", "b"}));
    drawing.connect(drawing.start(), agent);
    drawing.connect(agent, drawing.end("same"), "a");
    drawing.connect(agent, drawing.end("same"), "b");
    EXPECT_EQ(issuesOf(drawing), Issues{});
}

// Start, a router and two agents behind it, each with an End of the same name.
struct TwoEnds : Drawing {
    explicit TwoEnds(AgentOutputKind output) {
        router = agent("Router", test::enumeration({"a", "b"}));
        left = agent("Left", output);
        right = agent("Right", output);
        laterEnd = end("done");
        earlierEnd = end("done");
        // The order of the nodes decides, not the order of the edges.
        connect(start(), router);
        connect(router, left, "a");
        connect(router, right, "b");
        connect(right, earlierEnd);
        connect(left, laterEnd);
    }
    Uuid router, left, right, laterEnd, earlierEnd;
};

TEST(FlowValidator, RefusesTwoEndsOfOneNameAfterDifferentObjects) {
    const TwoEnds drawing(test::object({}));
    EXPECT_EQ(issuesOf(drawing),
              Issues{errorOn(drawing.earlierEnd,
                             "Two End nodes both named \".done\" carry different agents' output "
                             "(\"Left\" and \"Right\") — rename one of the End nodes.")});
}

TEST(FlowValidator, AcceptsTwoEndsOfOneNameAfterTexts) {
    EXPECT_EQ(issuesOf(TwoEnds({})), Issues{});
}

TEST(FlowValidator, AcceptsTwoEndsOfOneNameOfWhichOneCarriesNothing) {
    TwoEnds drawing(test::object({}));
    drawing.flow.nodes.back().kind.value = FlowNodeKind::End{"done", false};
    EXPECT_EQ(issuesOf(drawing), Issues{});
}

TEST(FlowValidator, FindsTheOutputOfAnEndThroughToolsAndBranches) {
    TwoEnds drawing(test::object({test::property("ok", PropertyKind::Bool{})}));
    const Uuid branch = drawing.branch("ok");
    const Uuid tool = drawing.tool("log");
    drawing.flow.edges.back().toNodeID = branch;
    drawing.connect(branch, tool, "true");
    drawing.connect(branch, drawing.end("no"), "false");
    drawing.connect(tool, drawing.laterEnd);
    EXPECT_EQ(issuesOf(drawing).size(), 1u);
    EXPECT_EQ(issuesOf(drawing)[0].nodeID, drawing.earlierEnd);
}

// Start, an agent with this output, a branch on its field and two Ends.
struct Branched : Drawing {
    explicit Branched(AgentOutputKind output, FlowNodeKind::Branch condition = {}) {
        reader = agent("Reader", std::move(output));
        choice = node(std::move(condition));
        connect(start(), reader);
        connect(reader, choice);
        connect(choice, end("yes"), "true");
        connect(choice, end("no"), "false");
    }
    Uuid reader, choice;
};

TEST(FlowValidator, RefusesABranchOnTextAndOnAnEnumeration) {
    const std::string message =
        "Branch field \"amount\" isn't available here — the preceding agent doesn't return an "
        "object.";
    const Branched onText({}, {"amount", Operator::equals, ""});
    EXPECT_EQ(issuesOf(onText), Issues{errorOn(onText.choice, message)});
    const Branched onCases(test::enumeration({"a"}), {"amount", Operator::equals, ""});
    EXPECT_EQ(issuesOf(onCases), Issues{errorOn(onCases.choice, message)});
}

TEST(FlowValidator, RefusesABranchOnAFieldThatIsNotThere) {
    const Branched drawing(test::object({test::property("Amount", PropertyKind::Int{})}),
                           {"amount", Operator::equals, ""});
    EXPECT_EQ(issuesOf(drawing),
              Issues{errorOn(drawing.choice, "Branch field \"amount\" doesn't exist on the "
                                             "preceding agent's output.")});
}

TEST(FlowValidator, JudgesByTheFirstPropertyOfTheName) {
    const Branched drawing(test::object({test::property("x", PropertyKind::Bool{}),
                                         test::property("x", PropertyKind::Int{})}),
                           {"x", Operator::lessThan, "1"});
    EXPECT_EQ(issuesOf(drawing).at(0).message, "\"x\" is a yes/no value — only \"=\" applies.");
}

// What a branch on a field "x" of this kind says; empty when it is in order.
std::string judged(decltype(PropertyKind::value) kind, Operator operation, std::string value) {
    const Branched drawing(test::object({test::property("x", std::move(kind))}),
                           {"x", operation, std::move(value)});
    const Issues issues = issuesOf(drawing);
    return issues.empty() ? "" : issues.at(0).message;
}

TEST(FlowValidator, AllowsTheOperatorsThatAKindOfFieldHas) {
    const auto text = PropertyKind::String{};
    EXPECT_EQ(judged(text, Operator::equals, ""), "");
    EXPECT_EQ(judged(text, Operator::contains, ""), "");
    EXPECT_EQ(judged(text, Operator::isEmpty, ""), "");
    for (const Operator operation : {Operator::greaterThan, Operator::lessThan}) {
        EXPECT_EQ(judged(text, operation, "1"), "\"x\" is text — numeric comparisons don't apply.");
    }
    for (const decltype(PropertyKind::value)& number :
         {decltype(PropertyKind::value)(PropertyKind::Int{}),
          decltype(PropertyKind::value)(PropertyKind::Double{})}) {
        EXPECT_EQ(judged(number, Operator::equals, "no number"), "");
        EXPECT_EQ(judged(number, Operator::greaterThan, "1"), "");
        EXPECT_EQ(judged(number, Operator::lessThan, "-2.5"), "");
        EXPECT_EQ(judged(number, Operator::contains, "1"),
                  "\"x\" is a number — contains doesn't apply.");
        EXPECT_EQ(judged(number, Operator::isEmpty, "1"),
                  "\"x\" is a number — is empty doesn't apply.");
    }
    for (const Operator operation :
         {Operator::contains, Operator::isEmpty, Operator::greaterThan, Operator::lessThan}) {
        EXPECT_EQ(judged(PropertyKind::Bool{}, operation, "1"),
                  "\"x\" is a yes/no value — only \"=\" applies.");
        EXPECT_EQ(judged(PropertyKind::Enumeration{}, operation, "1"),
                  "\"x\" is an enum — only \"=\" applies.");
    }
    EXPECT_EQ(judged(PropertyKind::Bool{}, Operator::equals, "maybe"), "");
    EXPECT_EQ(judged(PropertyKind::Enumeration{}, Operator::equals, "no case"), "");
    EXPECT_EQ(judged(PropertyKind::Array{}, Operator::isEmpty, ""), "");
    for (const Operator operation :
         {Operator::equals, Operator::contains, Operator::greaterThan, Operator::lessThan}) {
        EXPECT_EQ(judged(PropertyKind::Array{}, operation, "1"),
                  "\"x\" is a list — only \"is empty\" applies.");
    }
    for (const auto& operation : rawValues(Operator{})) {
        EXPECT_EQ(judged(PropertyKind::Object{}, operation.value, "1"),
                  "\"x\" is itself an object — pick one of its properties instead.");
    }
}

TEST(FlowValidator, TakesAValueAsANumberWhenAllOfItIsOne) {
    for (const char* value : {"1e3", "1", "-1", "+1", ".5", "5.", "0x1p3", "inf", "nan"}) {
        EXPECT_EQ(judged(PropertyKind::Int{}, Operator::greaterThan, value), "") << value;
    }
    for (const std::string value :
         {"abc", " 1", "\t1", "\n1", "\v1", "\f1", "\r1", "", "1 ", "1,5", "1x", "--1", "."}) {
        EXPECT_EQ(judged(PropertyKind::Int{}, Operator::greaterThan, value),
                  "\"" + value + "\" isn't a number.");
    }
    const std::string withNul("1\0", 2);
    EXPECT_EQ(judged(PropertyKind::Int{}, Operator::lessThan, withNul),
              "\"" + withNul + "\" isn't a number.");
}

TEST(FlowValidator, FindsNothingUpstreamOfABranchAfterStart) {
    Drawing drawing;
    const Uuid branch = drawing.branch("request");
    drawing.connect(drawing.start(), branch);
    drawing.connect(branch, drawing.end("yes"), "true");
    drawing.connect(branch, drawing.end("no"), "false");
    EXPECT_EQ(issuesOf(drawing),
              Issues{errorOn(branch, "Branch has nothing upstream to read \"request\" from.")});
}

TEST(FlowValidator, ReportsEachOutcomeOfABranchThatIsNotConnected) {
    Drawing drawing;
    const Uuid agent =
        drawing.agent("Reader", test::object({test::property("x", PropertyKind::String{})}));
    const Uuid branch = drawing.branch("x");
    drawing.connect(drawing.start(), agent);
    drawing.connect(agent, branch);
    drawing.connect(branch, drawing.end()); // leaves by no port
    EXPECT_EQ(issuesOf(drawing),
              (Issues{errorOn(branch, "Branch's \"true\" outcome has no connection."),
                      errorOn(branch, "Branch's \"false\" outcome has no connection.")}));
    drawing.flow.edges.back().fromPort = "true";
    EXPECT_EQ(issuesOf(drawing),
              Issues{errorOn(branch, "Branch's \"false\" outcome has no connection.")});
    drawing.connect(branch, drawing.end("other"), "true"); // two on one port are accepted
    drawing.connect(branch, drawing.end("no"), "false");
    EXPECT_EQ(issuesOf(drawing), Issues{});
}

TEST(FlowValidator, CountsAConnectionFromAnUnreachableNode) {
    Drawing drawing;
    const Uuid agent = drawing.agent("Writer");
    const Uuid stray = drawing.agent("Stray");
    const Uuid end = drawing.end("done");
    drawing.connect(drawing.start(), agent);
    drawing.connect(agent, end);
    drawing.connect(stray, end);
    EXPECT_EQ(issuesOf(drawing),
              (Issues{warningOn(stray, "\"Stray\" isn't reachable from Start."),
                      errorOn(end, "End (.done) has more than one incoming connection — not "
                                   "supported yet.")}));
}

TEST(FlowValidator, CountsConnectionsToANodeThatDoesNotExist) {
    Drawing drawing;
    const Uuid agent = drawing.agent("Triage", test::enumeration({"a", "b", "c"}));
    const Uuid gone = Uuid::random();
    drawing.connect(drawing.start(), agent);
    drawing.connect(agent, gone, "a");
    drawing.connect(agent, gone, "b");
    EXPECT_EQ(issuesOf(drawing), Issues{errorOn(gone, "This node has more than one incoming "
                                                      "connection — not supported yet.")});
}

TEST(FlowValidator, GivesADeletedAgentOneErrorAndNoneForItsConnections) {
    Drawing drawing;
    const Uuid agent = drawing.agent("Writer");
    drawing.agents.clear();
    drawing.connect(drawing.start(), agent);
    drawing.connect(drawing.start(), agent);
    const Uuid end = drawing.end();
    drawing.connect(agent, end);
    drawing.connect(agent, drawing.end("other"));
    EXPECT_EQ(issuesOf(drawing),
              (Issues{errorOn(agent, "This agent node has more than one incoming connection — not "
                                     "supported yet."),
                      errorOn(agent, "This node references a deleted agent.")}));
}

TEST(FlowValidator, CallsADeletedAgentThisAgentNodeWhenItIsUnreachable) {
    Drawing drawing;
    const Uuid agent = drawing.agent("Writer");
    drawing.agents.clear();
    drawing.connect(drawing.start(), drawing.end());
    EXPECT_EQ(issuesOf(drawing),
              (Issues{warningOn(agent, "This agent node isn't reachable from Start."),
                      errorOn(agent, "This node references a deleted agent.")}));
}

TEST(FlowValidator, GivesADeletedToolOneError) {
    Drawing drawing;
    const Uuid tool = drawing.tool("status");
    drawing.tools.clear();
    drawing.connect(drawing.start(), tool);
    EXPECT_EQ(issuesOf(drawing),
              (Issues{errorOn(tool, "This node references a deleted tool."), neverFinishes}));
}

TEST(FlowValidator, ReportsAToolConnectedBackToItsAgent) {
    Drawing drawing;
    const Uuid agent = drawing.agent("Writer");
    const Uuid tool = drawing.tool("status");
    drawing.connect(agent, tool);
    drawing.connect(tool, agent);
    EXPECT_EQ(
        issuesOf(drawing),
        (Issues{warningOn(agent, "\"Writer\" isn't reachable from Start."),
                warningOn(tool, "This tool node isn't reachable from Start."),
                errorOn(drawing.start(), "Start isn't connected to anything."), neverFinishes}));
    drawing.connect(drawing.start(), agent);
    EXPECT_EQ(issuesOf(drawing),
              (Issues{errorOn(agent, "\"Writer\" has more than one incoming connection — not "
                                     "supported yet."),
                      neverFinishes}));
}

TEST(FlowValidator, WantsOneConnectionFromAToolAndFromATextAgent) {
    Drawing drawing;
    const Uuid agent = drawing.agent("Writer");
    const Uuid tool = drawing.tool("status");
    drawing.connect(drawing.start(), agent);
    drawing.connect(drawing.start(), tool); // more than one connection from Start is accepted
    EXPECT_EQ(issuesOf(drawing),
              (Issues{errorOn(agent, "\"Writer\" needs a connection to continue the flow."),
                      errorOn(tool, "This tool node needs a connection to continue the flow."),
                      neverFinishes}));
    for (const Uuid node : {agent, tool}) {
        drawing.connect(node, drawing.end("a", false));
        drawing.connect(node, drawing.end("b", false), "port");
    }
    EXPECT_EQ(
        issuesOf(drawing),
        (Issues{
            errorOn(agent, "\"Writer\" has a single output — only one connection is allowed."),
            errorOn(tool, "A tool node has a single output — only one connection is allowed.")}));
}

TEST(FlowValidator, AllowsNoConnectionOutOfAnEnd) {
    Drawing drawing;
    const Uuid first = drawing.end("first");
    drawing.connect(drawing.start(), first);
    drawing.connect(first, drawing.end("second"));
    EXPECT_EQ(issuesOf(drawing), Issues{errorOn(first, "End can't have outgoing connections.")});
}

TEST(FlowValidator, AcceptsAnEdgeBackIntoStart) {
    Drawing drawing;
    const Uuid agent = drawing.agent("Triage", test::enumeration({"a", "b"}));
    drawing.connect(drawing.start(), agent);
    drawing.connect(agent, drawing.start(), "a");
    EXPECT_EQ(issuesOf(drawing), Issues{});
}

TEST(FlowValidator, DoesNotTakeAnEnumerationWithoutCasesAsAWayToFinish) {
    Drawing drawing;
    drawing.connect(drawing.start(), drawing.agent("Triage", test::enumeration({})));
    EXPECT_EQ(issuesOf(drawing), Issues{neverFinishes});
}

TEST(FlowValidator, EndsInALoopOfToolsAndBranchesWithNothingUpstream) {
    Drawing drawing;
    drawing.connect(drawing.start(), drawing.end());
    const Uuid tool = drawing.tool("status");
    const Uuid first = drawing.branch("f");
    const Uuid second = drawing.branch("g");
    const Uuid alone = drawing.branch("h");
    drawing.connect(tool, first);
    drawing.connect(first, second, "true");
    drawing.connect(second, tool, "true");
    drawing.connect(alone, alone, "true");
    Issues nothingUpstream;
    for (const Said& said : issuesOf(drawing)) {
        if (said.message.starts_with("Branch has nothing upstream")) {
            nothingUpstream.push_back(said);
        }
    }
    EXPECT_EQ(nothingUpstream,
              (Issues{errorOn(first, "Branch has nothing upstream to read \"f\" from."),
                      errorOn(second, "Branch has nothing upstream to read \"g\" from."),
                      errorOn(alone, "Branch has nothing upstream to read \"h\" from.")}));
}

TEST(FlowValidator, GivesEveryIssueANewId) {
    const Drawing drawing;
    const auto first = FlowValidator::validate(drawing.flow, {}, {});
    const auto second = FlowValidator::validate(drawing.flow, {}, {});
    EXPECT_NE(first[0].id, first[1].id);
    EXPECT_NE(first[0].id, second[0].id);
}

TEST(FlowValidator, WalksAThousandBranchesInARow) {
    Drawing drawing;
    Uuid last =
        drawing.agent("Reader", test::object({test::property("x", PropertyKind::String{})}));
    drawing.connect(drawing.start(), last);
    for (int i = 0; i < 1000; ++i) {
        const Uuid branch = drawing.branch("x");
        drawing.connect(last, branch, i == 0 ? std::nullopt : std::optional<std::string>("true"));
        drawing.connect(branch, drawing.end("case" + std::to_string(i)), "false");
        last = branch;
    }
    drawing.connect(last, drawing.end("last"), "true");
    EXPECT_EQ(issuesOf(drawing), Issues{});
    std::ranges::reverse(drawing.flow.nodes); // finds what is upstream from the far end
    EXPECT_EQ(issuesOf(drawing), Issues{});
}

TEST(FlowIssues, AreNoneForAFlowThatIsNotThere) {
    const auto state = AppState::make(test::makeTestPlatform().platform);
    EXPECT_TRUE(flowIssues(*state, Uuid::random()).empty());
    EXPECT_FALSE(canRunFlow(*state, Uuid::random()));
}

TEST(FlowIssues, KeepAFlowFromRunningOnlyWhenTheyAreErrors) {
    const auto state = AppState::make(test::makeTestPlatform().platform);
    const Uuid id = state->addFlow().id;
    EXPECT_EQ(flowIssues(*state, id).size(), 2u);
    EXPECT_FALSE(canRunFlow(*state, id));
    Flow flow = *state->flow(id);
    const Uuid end = Uuid::random();
    flow.nodes.push_back({end, {FlowNodeKind::End{"done", true}}, {}});
    flow.nodes.push_back({Uuid::random(), {FlowNodeKind::End{"stray", true}}, {}});
    flow.edges.push_back({Uuid::random(), flow.nodes[0].id, std::nullopt, end});
    state->updateFlow(flow);
    ASSERT_EQ(flowIssues(*state, id).size(), 1u);
    EXPECT_EQ(flowIssues(*state, id)[0].severity, Severity::warning);
    EXPECT_TRUE(canRunFlow(*state, id));
}

} // namespace
} // namespace ombrel

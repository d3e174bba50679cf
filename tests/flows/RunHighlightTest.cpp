#include "flows/RunHighlight.h"
#include "tests/flows/FlowSamples.h"

#include <gtest/gtest.h>

namespace ombrel {
namespace {

using test::Drawing;
using State = FlowRunHighlight::NodeState;

FlowTraceEvent event(std::string kind, std::optional<std::string> node, std::string detail,
                     std::optional<std::int64_t> tokenEstimate = std::nullopt) {
    FlowTraceEvent made;
    made.id = Uuid::random();
    made.kind = std::move(kind);
    made.node = std::move(node);
    made.detail = std::move(detail);
    made.tokenEstimate = tokenEstimate;
    return made;
}

FlowRunHighlight highlightOf(const Drawing& drawing) {
    return FlowRunHighlight(drawing.flow, drawing.agents, drawing.tools);
}

void tell(FlowRunHighlight& highlight, std::string kind, std::optional<std::string> node = {},
          std::string detail = "") {
    apply(highlight, event(std::move(kind), std::move(node), std::move(detail)));
}

// Start, then an agent that routes to a refund desk, a sales desk, and nowhere.
struct Routed : Drawing {
    Uuid triage = agent("Triage", test::enumeration({"refund", "sales", "other"}));
    Uuid refunds = agent("Refund desk");
    Uuid sales = agent("Sales desk");
    Uuid done = end("done");
    Uuid sold = end("sold");
    Uuid first = connect(start(), triage);
    Uuid toSales = connect(triage, sales, "sales");
    Uuid toRefunds = connect(triage, refunds, "refund");
    Uuid refunded = connect(refunds, done);
    Uuid sale = connect(sales, sold);
};

// Two ports that lead to nodes for one and the same agent.
struct SameName : Drawing {
    Uuid triage = agent("Triage", test::enumeration({"a", "b", "c"}));
    Uuid left = agent("Desk");
    Uuid right = node(flow.nodes.back().kind.value);
    Uuid first = connect(start(), triage);
    Uuid toLeft = connect(triage, left, "a");
    Uuid toRight = connect(triage, right, "b");
};

TEST(RunHighlight, StartsLiveAndEmpty) {
    const Routed drawing;
    const FlowRunHighlight highlight = highlightOf(drawing);
    EXPECT_EQ(highlight.flowID, drawing.flow.id);
    EXPECT_TRUE(highlight.isLive);
    EXPECT_FALSE(highlight.succeeded);
    EXPECT_TRUE(highlight.visitedNodeIDs.empty());
    EXPECT_TRUE(highlight.values.empty());
    EXPECT_EQ(highlight.nodes, drawing.flow.nodes);
    EXPECT_EQ(highlight.edges, drawing.flow.edges);
    EXPECT_EQ(highlight.agentNames.size(), 3u);
    EXPECT_EQ(state(highlight, drawing.start()), State::notReached);
}

TEST(RunHighlight, TakesTheEdgeOfTheRouteTaken) {
    for (const char* detail :
         {"refund", ".refund", "Route.refund", " .refund\n", "The route is Refund, of course"}) {
        const Routed drawing;
        FlowRunHighlight highlight = highlightOf(drawing);
        tell(highlight, "flowStarted", {}, "Give it back");
        tell(highlight, "nodeEntered", "Triage", "input: Give it back");
        tell(highlight, "outputReceived", {}, "refund");
        tell(highlight, "routeTaken", {}, detail);
        EXPECT_EQ(highlight.pendingPort, "refund") << detail;
        tell(highlight, "nodeEntered", "Refund desk", "input: Give it back");
        EXPECT_EQ(highlight.visitedNodeIDs,
                  (std::vector{drawing.start(), drawing.triage, drawing.refunds}));
        EXPECT_EQ(highlight.visitedEdgeIDs, (std::set{drawing.first, drawing.toRefunds}));
        EXPECT_EQ(highlight.lastEdgeID, drawing.toRefunds);
        EXPECT_EQ(highlight.activeNodeID, drawing.refunds);
        EXPECT_FALSE(highlight.pendingPort);
        EXPECT_EQ(highlight.values.at(drawing.start()).output, "Give it back");
        EXPECT_EQ(highlight.values.at(drawing.triage).input, "Give it back");
        EXPECT_EQ(highlight.values.at(drawing.triage).output, "refund");
        EXPECT_EQ(highlight.values.at(drawing.refunds).step, 3);
    }
}

TEST(RunHighlight, LetsTheNameDecideAmongTargetsBeforeThePort) {
    const Routed drawing;
    FlowRunHighlight highlight = highlightOf(drawing);
    tell(highlight, "flowStarted");
    tell(highlight, "nodeEntered", "Triage");
    tell(highlight, "routeTaken", {}, "refund");
    tell(highlight, "nodeEntered", "Sales desk");
    EXPECT_EQ(highlight.lastEdgeID, drawing.toSales);
    EXPECT_EQ(highlight.currentNodeID, drawing.sales);
}

TEST(RunHighlight, ChoosesByThePortAmongTargetsOfOneName) {
    const SameName drawing;
    FlowRunHighlight highlight = highlightOf(drawing);
    tell(highlight, "flowStarted");
    tell(highlight, "nodeEntered", "Triage");
    tell(highlight, "routeTaken", {}, "b");
    tell(highlight, "nodeEntered", "Desk");
    EXPECT_EQ(highlight.lastEdgeID, drawing.toRight);
}

TEST(RunHighlight, TakesTheFirstMatchWhenNoEdgeHasThePendingPort) {
    const SameName drawing;
    FlowRunHighlight highlight = highlightOf(drawing);
    tell(highlight, "flowStarted");
    tell(highlight, "nodeEntered", "Triage");
    highlight.pendingPort = "c";
    tell(highlight, "nodeEntered", "Desk");
    EXPECT_EQ(highlight.lastEdgeID, drawing.toLeft);
    EXPECT_FALSE(highlight.pendingPort);
}

TEST(RunHighlight, PrefersAnExactPortToOneAfterADotToOneInside) {
    Drawing drawing;
    const Uuid triage = drawing.agent("Triage");
    drawing.connect(drawing.start(), triage);
    for (const char* port : {"ref", "fund", "a.refund", "refund"}) {
        drawing.connect(triage, drawing.end(port), port);
    }
    drawing.connect(triage, drawing.end("none"), "");
    FlowRunHighlight highlight = highlightOf(drawing);
    tell(highlight, "routeTaken", {}, "refund");
    EXPECT_FALSE(highlight.pendingPort); // there is no current node yet
    tell(highlight, "flowStarted");
    tell(highlight, "nodeEntered", "Triage");
    for (const auto& [detail, port] :
         std::vector<std::pair<std::string, std::string>>{{"refund", "refund"},
                                                          {"a.refund", "a.refund"},
                                                          {"b.a.refund", "a.refund"},
                                                          {"x.fund", "fund"},
                                                          {"REFUNDED", "ref"}}) {
        tell(highlight, "routeTaken", {}, detail);
        EXPECT_EQ(highlight.pendingPort, port) << detail;
    }
    tell(highlight, "routeTaken", {}, "something else");
    EXPECT_FALSE(highlight.pendingPort);
}

TEST(RunHighlight, ChangesOnlyThePendingPortForAnUnknownName) {
    const Routed drawing;
    FlowRunHighlight highlight = highlightOf(drawing);
    tell(highlight, "flowStarted");
    tell(highlight, "nodeEntered", "Triage");
    FlowRunHighlight before = highlight;
    tell(highlight, "routeTaken", {}, "refund");
    tell(highlight, "nodeEntered", "Nobody", "input: x");
    EXPECT_EQ(highlight, before);
    tell(highlight, "routeTaken", {}, "refund");
    tell(highlight, "nodeEntered");
    EXPECT_EQ(highlight.pendingPort, "refund");
}

TEST(RunHighlight, BeginsThePathAnewWhenTheFlowStartsAgain) {
    const Routed drawing;
    FlowRunHighlight highlight = highlightOf(drawing);
    tell(highlight, "flowStarted", {}, "one");
    tell(highlight, "nodeEntered", "Triage");
    tell(highlight, "error", {}, "lost");
    tell(highlight, "flowStarted", {}, "two");
    EXPECT_EQ(highlight.visitedNodeIDs, std::vector{drawing.start()});
    EXPECT_TRUE(highlight.visitedEdgeIDs.empty());
    EXPECT_FALSE(highlight.lastEdgeID);
    EXPECT_FALSE(highlight.failedNodeID);
    EXPECT_FALSE(highlight.activeNodeID);
    EXPECT_EQ(highlight.values.size(), 1u);
    EXPECT_EQ(highlight.values.at(drawing.start()).output, "two");
    EXPECT_EQ(highlight.currentNodeID, drawing.start());
}

TEST(RunHighlight, ForgetsThePathButNotItsPlaceWhenThereIsNoStart) {
    Routed drawing;
    drawing.flow.nodes.erase(drawing.flow.nodes.begin());
    FlowRunHighlight highlight = highlightOf(drawing);
    tell(highlight, "nodeEntered", "Triage");
    tell(highlight, "flowStarted");
    EXPECT_TRUE(highlight.visitedNodeIDs.empty());
    EXPECT_EQ(highlight.currentNodeID, drawing.triage);
    EXPECT_EQ(highlight.activeNodeID, drawing.triage);
}

TEST(RunHighlight, JumpsWithoutAnEdgeWhenTheGraphDisagrees) {
    const Routed drawing;
    FlowRunHighlight highlight = highlightOf(drawing);
    tell(highlight, "flowStarted");
    tell(highlight, "nodeEntered", "Refund desk");
    EXPECT_EQ(highlight.currentNodeID, drawing.refunds);
    EXPECT_FALSE(highlight.lastEdgeID);
    EXPECT_TRUE(highlight.visitedEdgeIDs.empty());
    EXPECT_EQ(highlight.values.at(drawing.refunds).step, 2);
}

TEST(RunHighlight, FollowsABranchByItsOutcome) {
    for (const bool outcome : {true, false}) {
        Drawing drawing;
        const Uuid agent = drawing.agent("Reader");
        const Uuid branch = drawing.branch("amount");
        const Uuid small = drawing.end("small");
        const Uuid large = drawing.end("large");
        drawing.connect(drawing.start(), agent);
        drawing.connect(agent, branch);
        const Uuid no = drawing.connect(branch, small, "false");
        const Uuid yes = drawing.connect(branch, large, "true");
        FlowRunHighlight highlight = highlightOf(drawing);
        tell(highlight, "flowStarted");
        tell(highlight, "nodeEntered", "Reader");
        const std::string detail = outcome ? "amount > 5 -> true" : "amount > 5 -> false";
        tell(highlight, "branch", {}, detail);
        EXPECT_EQ(highlight.values.at(branch).output, detail);
        tell(highlight, "flowFinished", {}, ".done");
        EXPECT_EQ(highlight.lastEdgeID, outcome ? yes : no);
        EXPECT_EQ(highlight.values.at(outcome ? large : small).output, ".done");
        EXPECT_FALSE(highlight.activeNodeID);
    }
}

TEST(RunHighlight, ShowsWhatAToolReturnedWithoutMakingItActive) {
    Drawing drawing;
    const Uuid agent = drawing.agent("Reader");
    const Uuid tool = drawing.tool("orderStatus");
    drawing.connect(drawing.start(), agent);
    const Uuid edge = drawing.connect(agent, tool);
    FlowRunHighlight highlight = highlightOf(drawing);
    tell(highlight, "flowStarted");
    tell(highlight, "nodeEntered", "Reader");
    tell(highlight, "toolCalled", {}, "ignored");
    EXPECT_EQ(highlight.currentNodeID, agent);
    tell(highlight, "toolCalled", "orderStatus", "{\"status\":\"sent\"}");
    EXPECT_EQ(highlight.currentNodeID, tool);
    EXPECT_EQ(highlight.lastEdgeID, edge);
    EXPECT_EQ(highlight.activeNodeID, agent);
    EXPECT_EQ(highlight.values.at(tool).output, "{\"status\":\"sent\"}");
}

TEST(RunHighlight, KeepsWhatTheNodeRetrievedAndHowLargeItsPromptWas) {
    const Routed drawing;
    FlowRunHighlight highlight = highlightOf(drawing);
    tell(highlight, "ragRetrieved", {}, "too early");
    apply(highlight, event("promptBuilt", {}, "too early", 3));
    tell(highlight, "outputReceived", {}, "too early");
    EXPECT_TRUE(highlight.values.empty());
    tell(highlight, "flowStarted");
    tell(highlight, "nodeEntered", "Triage", "no prefix");
    tell(highlight, "ragRetrieved", {}, "2 passages");
    apply(highlight, event("promptBuilt", {}, "…", 812));
    const FlowNodeRunValue& value = highlight.values.at(drawing.triage);
    EXPECT_EQ(value.input, "no prefix");
    EXPECT_EQ(value.retrieval, "2 passages");
    EXPECT_EQ(value.tokenEstimate, 812);
}

TEST(RunHighlight, IgnoresKindsThatItDoesNotKnow) {
    const Routed drawing;
    FlowRunHighlight highlight = highlightOf(drawing);
    tell(highlight, "flowStarted");
    const FlowRunHighlight before = highlight;
    tell(highlight, "historyTrimmed", "Triage", "x");
    tell(highlight, "", "Triage", "x");
    EXPECT_EQ(highlight, before);
}

TEST(RunHighlight, FindsTheFirstEndWhenTheFlowEndsInAnUnconnectedCase) {
    const Routed drawing;
    FlowRunHighlight highlight = highlightOf(drawing);
    tell(highlight, "flowStarted");
    tell(highlight, "nodeEntered", "Triage");
    tell(highlight, "routeTaken", {}, "other");
    tell(highlight, "flowFinished", {}, ".other");
    EXPECT_EQ(highlight.currentNodeID, drawing.done);
    EXPECT_FALSE(highlight.lastEdgeID);
    EXPECT_EQ(highlight.values.at(drawing.done).output, ".other");
}

TEST(RunHighlight, MarksTheCurrentNodeOnAnError) {
    const Routed drawing;
    FlowRunHighlight highlight = highlightOf(drawing);
    tell(highlight, "flowStarted");
    tell(highlight, "nodeEntered", "Triage");
    tell(highlight, "error", "Sales desk", "The model is gone");
    EXPECT_EQ(highlight.failedNodeID, drawing.triage);
    EXPECT_EQ(highlight.values.at(drawing.triage).error, "The model is gone");
    EXPECT_FALSE(highlight.activeNodeID);
    EXPECT_EQ(state(highlight, drawing.triage), State::failed);
}

TEST(RunHighlight, FindsTheNodeOfAnErrorByNameBeforeTheWalkBegins) {
    const Routed drawing;
    FlowRunHighlight highlight = highlightOf(drawing);
    tell(highlight, "error", "Sales desk", "broken");
    EXPECT_EQ(highlight.failedNodeID, drawing.sales);
    EXPECT_EQ(highlight.values.at(drawing.sales).error, "broken");
    EXPECT_TRUE(highlight.visitedNodeIDs.empty());
}

TEST(RunHighlight, FailsNoNodeForAnErrorWithoutPlaceOrName) {
    const Routed drawing;
    FlowRunHighlight highlight = highlightOf(drawing);
    tell(highlight, "error", {}, "broken");
    EXPECT_FALSE(highlight.failedNodeID);
    finish(highlight, false);
    EXPECT_FALSE(highlight.failedNodeID);
    EXPECT_EQ(bannerText(highlight), "Run failed before the flow started");
}

TEST(RunHighlight, FallsBackToTheActiveThenTheCurrentNodeWhenARunFails) {
    const Routed drawing;
    FlowRunHighlight highlight = highlightOf(drawing);
    tell(highlight, "error", {}, "broken");
    tell(highlight, "flowStarted");
    tell(highlight, "nodeEntered", "Triage");
    FlowRunHighlight afterOutput = highlight;
    finish(highlight, false);
    EXPECT_EQ(highlight.failedNodeID, drawing.triage);
    EXPECT_FALSE(highlight.activeNodeID);
    EXPECT_FALSE(highlight.isLive);
    EXPECT_EQ(highlight.succeeded, false);

    tell(afterOutput, "outputReceived", {}, "x");
    EXPECT_FALSE(afterOutput.activeNodeID);
    finish(afterOutput, false);
    EXPECT_EQ(afterOutput.failedNodeID, drawing.triage);
}

TEST(RunHighlight, MarksNothingWhenARunSucceeds) {
    const Routed drawing;
    FlowRunHighlight highlight = highlightOf(drawing);
    tell(highlight, "flowStarted");
    tell(highlight, "nodeEntered", "Triage");
    finish(highlight, true);
    EXPECT_FALSE(highlight.failedNodeID);
    EXPECT_FALSE(highlight.activeNodeID);
    EXPECT_EQ(highlight.succeeded, true);
}

TEST(RunHighlight, TellsFailedBeforeActiveBeforeVisited) {
    const Routed drawing;
    FlowRunHighlight highlight = highlightOf(drawing);
    tell(highlight, "flowStarted");
    tell(highlight, "nodeEntered", "Triage");
    EXPECT_EQ(state(highlight, drawing.start()), State::visited);
    EXPECT_EQ(state(highlight, drawing.triage), State::active);
    EXPECT_EQ(state(highlight, drawing.sales), State::notReached);
    tell(highlight, "error", {}, "broken");
    highlight.activeNodeID = drawing.triage;
    EXPECT_EQ(state(highlight, drawing.triage), State::failed);
}

TEST(RunHighlight, KeepsTheFirstStepOfAnAgentVisitedTwiceAndItsLatestInput) {
    const Routed drawing;
    FlowRunHighlight highlight = highlightOf(drawing);
    tell(highlight, "flowStarted");
    tell(highlight, "nodeEntered", "Triage", "input: one");
    tell(highlight, "nodeEntered", "Sales desk", "input: two");
    tell(highlight, "nodeEntered", "Triage", "input: three");
    EXPECT_EQ(highlight.visitedNodeIDs.size(), 3u);
    EXPECT_EQ(highlight.values.at(drawing.triage).step, 2);
    EXPECT_EQ(highlight.values.at(drawing.triage).input, "three");
}

TEST(RunHighlight, WalksTheCopyOfTheDrawing) {
    Routed drawing;
    FlowRunHighlight highlight = highlightOf(drawing);
    drawing.flow.nodes.clear();
    drawing.flow.edges.clear();
    tell(highlight, "flowStarted");
    tell(highlight, "nodeEntered", "Triage");
    EXPECT_EQ(highlight.lastEdgeID, drawing.first);
}

TEST(RunBanner, TellsHowFarTheRunIs) {
    const Routed drawing;
    FlowRunHighlight highlight = highlightOf(drawing);
    EXPECT_EQ(bannerText(highlight), "Starting the run…");
    tell(highlight, "flowStarted");
    EXPECT_EQ(bannerText(highlight), "Running · step 1");
    FlowRunHighlight failed = highlight;
    finish(failed, false);
    EXPECT_EQ(bannerText(failed), "Run failed at step 1");
    FlowRunHighlight ended = highlight;
    finish(ended, true);
    EXPECT_EQ(bannerText(ended), "Run path · 1 step");
    tell(highlight, "nodeEntered", "Triage");
    finish(highlight, true);
    EXPECT_EQ(bannerText(highlight), "Run path · 2 steps");
    FlowRunHighlight nothing = highlightOf(drawing);
    finish(nothing, true);
    EXPECT_EQ(bannerText(nothing), "Run path · 0 steps");
}

TEST(RunBubble, ListsWhatTheNodeSawInOrder) {
    const Routed drawing;
    FlowRunHighlight highlight = highlightOf(drawing);
    EXPECT_FALSE(runBubble(highlight, drawing.triage));
    tell(highlight, "flowStarted");
    tell(highlight, "nodeEntered", "Triage", "input: hello");
    tell(highlight, "error", {}, "broken");
    tell(highlight, "ragRetrieved", {}, "1 passage");
    apply(highlight, event("promptBuilt", {}, "", 12));
    tell(highlight, "outputReceived", {}, "refund");
    const RunBubble expected{"Step 2",
                             {{"Input", "hello"},
                              {"Output", "refund"},
                              {"Retrieved", "1 passage"},
                              {"Prompt size", "~12 tokens"},
                              {"Error", "broken"}}};
    EXPECT_EQ(runBubble(highlight, drawing.triage), expected);
}

TEST(RunBubble, NamesTheOutputByTheKindOfNode) {
    Drawing drawing;
    const std::vector<std::pair<Uuid, std::string>> labels{{drawing.start(), "Run input"},
                                                           {drawing.agent("A"), "Output"},
                                                           {drawing.branch("f"), "Decision"},
                                                           {drawing.tool("t"), "Returned"},
                                                           {drawing.end(), "Result"}};
    FlowRunHighlight highlight = highlightOf(drawing);
    for (const auto& [id, label] : labels) {
        highlight.values[id].output = "x";
        EXPECT_EQ(runBubble(highlight, id)->rows, (std::vector<RunBubble::Row>{{label, "x"}}));
    }
}

} // namespace
} // namespace ombrel

#include "flows/FlowEditorTexts.h"
#include "flows/FlowValidator.h"
#include "tests/flows/FlowSamples.h"

#include <gtest/gtest.h>

namespace ombrel {
namespace {

using test::Drawing;

struct Texts : Drawing {
    std::string title(Uuid id) const { return nodeTitle(*flow.node(id), agents, tools); }
    std::string subtitle(Uuid id) const { return nodeSubtitle(*flow.node(id), flow, agents); }
};

TEST(NodeCardText, StartNamesTheInputFields) {
    Texts drawing;
    EXPECT_EQ(drawing.title(drawing.start()), "Start");
    EXPECT_EQ(drawing.subtitle(drawing.start()), "request");
    drawing.flow.startInput.push_back(test::property("age", PropertyKind::Int{}));
    EXPECT_EQ(drawing.subtitle(drawing.start()), "request, age");
    drawing.flow.startInput.clear();
    EXPECT_EQ(drawing.subtitle(drawing.start()), "");
}

TEST(NodeCardText, AgentsSayTheirNameAndOutput) {
    Texts drawing;
    const Uuid text = drawing.agent("Writer");
    const Uuid choice = drawing.agent("Triage", test::enumeration({"a"}));
    const Uuid object = drawing.agent("Reader", test::object({}));
    EXPECT_EQ(drawing.title(text), "Writer");
    EXPECT_EQ(drawing.subtitle(text), "Text");
    EXPECT_EQ(drawing.subtitle(choice), "Enum");
    EXPECT_EQ(drawing.subtitle(object), "Object");
    drawing.agents.clear();
    EXPECT_EQ(drawing.title(text), "Deleted Agent");
    EXPECT_EQ(drawing.subtitle(text), "");
}

TEST(NodeCardText, ToolsSayThatTheirDataIsMadeUp) {
    Texts drawing;
    const Uuid tool = drawing.tool("lookUp");
    EXPECT_EQ(drawing.title(tool), "lookUp");
    EXPECT_EQ(drawing.subtitle(tool), "mock data");
    drawing.tools.clear();
    EXPECT_EQ(drawing.title(tool), "Deleted Tool");
    EXPECT_EQ(drawing.subtitle(tool), "mock data");
}

TEST(NodeCardText, BranchesSayTheirCondition) {
    using enum WireBranchOperator;
    Texts drawing;
    EXPECT_EQ(drawing.title(drawing.branch("age")), "Branch");
    EXPECT_EQ(drawing.subtitle(drawing.branch("", equals, "")), "field = ");
    EXPECT_EQ(drawing.subtitle(drawing.branch("age", greaterThan, "12")), "age > 12");
    EXPECT_EQ(drawing.subtitle(drawing.branch("age", lessThan, "12")), "age < 12");
    EXPECT_EQ(drawing.subtitle(drawing.branch("name", contains, "an")), "name contains an");
    EXPECT_EQ(drawing.subtitle(drawing.branch("tags", isEmpty, "left")), "tags is empty");
}

TEST(NodeCardText, EndsSayTheirCaseAndWhetherItCarriesAValue) {
    Texts drawing;
    EXPECT_EQ(drawing.title(drawing.end("done")), ".done");
    EXPECT_EQ(drawing.subtitle(drawing.end("done", true)), "carries value");
    EXPECT_EQ(drawing.subtitle(drawing.end("done", false)), "no value");
}

TEST(NodeCardText, ATitleFindsTheFirstNodeThatHasIt) {
    Texts drawing;
    const Uuid first = drawing.end("done");
    drawing.end("done");
    EXPECT_EQ(nodeTitled(drawing.flow, ".done", drawing.agents, drawing.tools), first);
    EXPECT_EQ(nodeTitled(drawing.flow, "done", drawing.agents, drawing.tools), std::nullopt);
}

TEST(NodeCardText, MarksAgentsThatDrawOnKnowledge) {
    Texts drawing;
    const Uuid writer = drawing.agent("Writer");
    EXPECT_FALSE(drawsOnKnowledge(*drawing.flow.node(writer), drawing.agents));
    drawing.agents[0].ragAttachments.push_back({});
    EXPECT_TRUE(drawsOnKnowledge(*drawing.flow.node(writer), drawing.agents));
    EXPECT_FALSE(drawsOnKnowledge(*drawing.flow.node(drawing.start()), drawing.agents));
}

TEST(FlowEditorTexts, CountTheIssues) {
    EXPECT_EQ(readinessText({}), "Ready to run");
    EXPECT_EQ(readinessText(std::vector<FlowIssue>(1)), "1 issue");
    EXPECT_EQ(readinessText(std::vector<FlowIssue>(2)), "2 issues");
    EXPECT_EQ(maxHopsText(Flow("New")), "Max hops 6");
}

TEST(FlowEditorTexts, AskForThePort) {
    Texts drawing;
    const Uuid branch = drawing.branch("x");
    const Uuid end = drawing.end("done");
    EXPECT_EQ(portQuestion(drawing.flow, branch, end, drawing.agents, drawing.tools),
              "Connect Branch → .done as:");
    EXPECT_EQ(portQuestion(drawing.flow, branch, Uuid::random(), drawing.agents, drawing.tools),
              "Connect Branch → this node as:");
}

} // namespace
} // namespace ombrel

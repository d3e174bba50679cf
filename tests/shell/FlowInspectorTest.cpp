#include "tests/shell/FlowEditorFixture.h"

namespace ombrel {
namespace {

using test::click;
using test::Drawing;
using test::find;
using test::isShown;
using test::pressKey;
using test::Studio;
using test::textOf;
using Editor = test::FlowEditorFixture;

TEST(FlowInspector, ShowsTheFlowWhenNothingIsSelected) {
    Editor editor;
    EXPECT_TRUE(editor.soonShows("inspector.flow"));
    EXPECT_TRUE(editor.soonSays("inspector.flow.name", "Support"));
    test::type(editor.window, "inspector.flow.name", QStringLiteral("Help"));
    editor.settle();
    EXPECT_EQ(editor.flow().name, "Help");
    EXPECT_FALSE(isShown(editor.window, "inspector.flow.maxHistory"));
    auto& hops = find<QSpinBox>(editor.window, "inspector.flow.maxHops");
    EXPECT_EQ(hops.minimum(), 1);
    EXPECT_EQ(hops.maximum(), 50);
    hops.setValue(9);
    EXPECT_EQ(editor.flow().maxHops, 9);
    auto& kind = find<QComboBox>(editor.window, "inspector.flow.kind");
    kind.setCurrentIndex(1);
    Q_EMIT kind.activated(1);
    editor.settle();
    EXPECT_EQ(editor.flow().kind, FlowKind::conversational);
    EXPECT_TRUE(editor.soonShows("inspector.flow.maxHistory"));
    EXPECT_TRUE(editor.soonShows("inspector.flow.conversationNote"));
    auto& history = find<QSpinBox>(editor.window, "inspector.flow.maxHistory");
    EXPECT_EQ(history.singleStep(), 200);
    history.stepUp();
    EXPECT_EQ(editor.flow().maxHistoryTokens, 2200);
}

TEST(FlowInspector, ShowsNumbersOutOfItsRangeWithoutChangingThem) {
    Editor editor;
    Flow flow = editor.flow();
    flow.maxHops = 5'000'000'000;
    editor.workspace().updateFlow(flow);
    editor.settle();
    EXPECT_TRUE(editor.studio.until(
        [&] { return find<QSpinBox>(editor.window, "inspector.flow.maxHops").value() == 50; }));
    EXPECT_EQ(editor.flow().maxHops, 5'000'000'000);
}

TEST(FlowInspector, DeletingTheSelectedNodeBringsTheFlowBack) {
    Editor editor;
    editor.clickAt(editor.centre("Desk"));
    EXPECT_TRUE(editor.soonShows("inspector.node"));
    EXPECT_TRUE(editor.soonSays("inspector.node.name", "Desk"));
    EXPECT_TRUE(editor.soonSays("inspector.node.note", "Output: Object"));
    click(editor.window, "inspector.node.delete");
    editor.settle();
    EXPECT_TRUE(editor.soonShows("inspector.flow"));
    EXPECT_FALSE(isShown(editor.window, "inspector.node"));
}

TEST(FlowInspector, DeletingTheAgentOfTheSelectedNodeTellsSo) {
    Editor editor;
    editor.clickAt(editor.centre("Desk"));
    editor.workspace().deleteAgent(editor.workspace().agents->at(1).id);
    editor.settle();
    EXPECT_TRUE(editor.soonSays("inspector.node.note", "This agent was deleted."));
    EXPECT_FALSE(isShown(editor.window, "inspector.node.edit"));
}

TEST(FlowInspector, EditsABranch) {
    Editor editor;
    const Uuid id = editor.nodeNamed("Branch");
    editor.clickAt(editor.centre("Branch"));
    const auto branch = [&] {
        return std::get<FlowNodeKind::Branch>(editor.flow().node(id)->kind.value);
    };
    test::type(editor.window, "inspector.branch.field", QStringLiteral("size"));
    test::type(editor.window, "inspector.branch.value", QStringLiteral("3"));
    editor.settle();
    EXPECT_EQ(branch().field, "size");
    EXPECT_EQ(branch().value, "3");
    auto& operation = find<QComboBox>(editor.window, "inspector.branch.operator");
    EXPECT_EQ(operation.currentText(), QStringLiteral(">"));
    Q_EMIT operation.activated(2);
    editor.settle();
    EXPECT_EQ(branch().operation, WireBranchOperator::isEmpty);
    EXPECT_TRUE(
        editor.studio.until([&] { return !isShown(editor.window, "inspector.branch.value"); }));
}

TEST(FlowInspector, EditsAnEnd) {
    Editor editor;
    const Uuid id = editor.nodeNamed(".done");
    editor.clickAt(editor.centre(".done"));
    test::type(editor.window, "inspector.end.caseName", QStringLiteral("paid"));
    click(editor.window, "inspector.end.carries");
    editor.settle();
    EXPECT_EQ(editor.flow().node(id)->kind, (FlowNodeKind{FlowNodeKind::End{"paid", false}}));
}

TEST(FlowInspector, ListsTheConnectionsOfANode) {
    Editor editor;
    editor.workspace().connectFlowNodes(editor.nodeNamed("Triage"), "refund",
                                        editor.nodeNamed("Desk"), editor.flowID);
    editor.settle();
    editor.clickAt(editor.centre("Triage"));
    ASSERT_TRUE(editor.soonShows("connection.0.port"));
    EXPECT_TRUE(editor.soonSays("connection.0.port", "refund"));
    EXPECT_TRUE(editor.soonSays("connection.0.target", "Desk"));
}

TEST(FlowInspector, RemovesAConnection) {
    Editor editor;
    editor.workspace().connectFlowNodes(editor.nodeNamed("Triage"), "refund",
                                        editor.nodeNamed("Desk"), editor.flowID);
    editor.workspace().canvasSelection =
        CanvasSelection{CanvasSelection::Edge{editor.flow().edges[0].id}};
    editor.settle();
    ASSERT_TRUE(editor.soonShows("inspector.edge"));
    EXPECT_TRUE(editor.soonSays("fact.from", "Triage"));
    EXPECT_TRUE(editor.soonSays("fact.port", "refund"));
    EXPECT_TRUE(editor.soonSays("fact.to", "Desk"));
    click(editor.window, "inspector.edge.remove");
    editor.settle();
    EXPECT_TRUE(editor.flow().edges.empty());
    EXPECT_TRUE(editor.soonShows("inspector.flow"));
}

TEST(FlowInspector, SaysWhatStartIsAndThatItStays) {
    Editor editor;
    editor.clickAt(editor.centre("Start"));
    ASSERT_TRUE(editor.soonShows("inspector.node"));
    EXPECT_TRUE(editor.soonSays("inspector.node.note",
                                "Defines the flow's input — edit its fields from the flow-level "
                                "inspector (deselect this node)."));
    EXPECT_EQ(editor.heading("inspector.node.title"), "START");
    EXPECT_FALSE(isShown(editor.window, "inspector.node.delete"));
    EXPECT_FALSE(isShown(editor.window, "inspector.node.edit"));
}

TEST(FlowInspector, SaysWhatAToolDoesAndOpensItOrThatItWasDeleted) {
    Drawing drawing;
    drawing.tool("bookings");
    drawing.flow.nodes.back().position = {400, 200};
    Editor editor(drawing);
    editor.clickAt(editor.centre("bookings"));
    EXPECT_TRUE(editor.soonSays("inspector.node.name", "bookings"));
    EXPECT_TRUE(editor.soonSays("inspector.node.note",
                                "Runs deterministically — mock data in Studio runs."));
    EXPECT_TRUE(editor.soonSays("inspector.node.edit", "Edit Tool…"));
    const Uuid tool = editor.workspace().tools->front().id;
    const auto selection = *editor.workspace().canvasSelection;
    editor.workspace().tools = std::vector<ToolDefinition>();
    EXPECT_TRUE(editor.soonSays("inspector.node.note", "This tool was deleted."));
    EXPECT_FALSE(isShown(editor.window, "inspector.node.edit"));
    EXPECT_EQ(*editor.workspace().canvasSelection, selection);
    editor.workspace().tools = drawing.tools;
    EXPECT_TRUE(editor.soonShows("inspector.node.edit"));
    click(editor.window, "inspector.node.edit");
    EXPECT_EQ(editor.workspace().selectedNavigatorItem(),
              NavigatorSelection{NavigatorSelection::Tool{tool}});
}

TEST(FlowInspector, CountsTheIssuesOfTheFlow) {
    Editor editor;
    const auto issues = flowIssues(editor.workspace(), editor.flowID);
    ASSERT_TRUE(editor.soonShows("inspector.flow.issues"));
    EXPECT_EQ(editor.heading("inspector.flow.issues.title"),
              "ISSUES (" + std::to_string(issues.size()) + ")");
    EXPECT_TRUE(editor.soonSays("issue.0", issues[0].message));
}

TEST(FlowInspector, TellsOfTheMessagesOfAConversation) {
    Editor editor;
    Flow flow = editor.flow();
    flow.kind = FlowKind::conversational;
    editor.workspace().updateFlow(flow);
    EXPECT_TRUE(editor.soonShows("inspector.flow.conversationNote"));
    EXPECT_EQ(textOf(editor.window, "inspector.flow.conversationNote"),
              "send() takes a plain message — there's no typed Start input for a conversational "
              "flow. Any agent can read the trimmed transcript via a \"history\" Flow Context "
              "field.");
    EXPECT_FALSE(isShown(editor.window, "inspector.flow.startInput"));
}

TEST(FlowInspector, TypingInAFieldIsOneUndoStepAndShowsOnTheCardAtOnce) {
    Editor editor;
    const Uuid id = editor.nodeNamed("Branch");
    editor.clickAt(editor.centre("Branch"));
    ASSERT_TRUE(editor.soonShows("inspector.branch.field"));
    const std::size_t steps = editor.undoSteps();
    test::type(editor.window, "inspector.branch.field", QStringLiteral("quantity"));
    EXPECT_TRUE(editor.studio.until([&] {
        return editor.canvas().scene().card(id)->subtitle == QStringLiteral("quantity > 12");
    }));
    EXPECT_EQ(editor.undoSteps(), steps + 1);
    editor.workspace().undoManager->undo();
    EXPECT_TRUE(editor.soonSays("inspector.branch.field", "age"));
}

TEST(FlowInspector, OpensTheAgentOfANode) {
    Editor editor;
    editor.clickAt(editor.centre("Desk"));
    click(editor.window, "inspector.node.edit");
    EXPECT_EQ(editor.workspace().selectedNavigatorItem(),
              NavigatorSelection{NavigatorSelection::Agent{editor.workspace().agents->at(1).id}});
}

} // namespace
} // namespace ombrel

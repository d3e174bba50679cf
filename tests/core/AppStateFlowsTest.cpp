#include "core/AppState.h"
#include "core/FlowPalette.h"

#include "tests/core/Workspace.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace ombrel {
namespace {

using namespace test;

const FlowNodeKind toolKind = {FlowNodeKind::Tool{}};

// A workspace with one flow.
struct FlowWorkspace : Workspace {
    Uuid id = state->addFlow().id;
    const Flow& flow() const { return *state->flow(id); }
    Uuid addNode(const FlowNodeKind& kind) const {
        state->addFlowNode(kind, id, 0, 0);
        return flow().nodes.back().id;
    }
    Uuid connect(Uuid from, std::optional<std::string> port, Uuid to) const {
        state->connectFlowNodes(from, std::move(port), to, id);
        return flow().edges.back().id;
    }
};

TEST(AddFlow, AppendsShowsAndSchedules) {
    const Workspace workspace;
    EXPECT_TRUE(workspace.schedules([&] { workspace->addFlow(); }));
    const Flow& flow = workspace->flows->front();
    EXPECT_EQ(flow.name, "New Flow 1");
    EXPECT_EQ(workspace->selectedNavigatorItem(), showsFlow(flow.id));
    EXPECT_EQ(workspace->addFlow().name, "New Flow 2");
    workspace->deleteFlow(workspace->flows->front().id);
    EXPECT_EQ(workspace->addFlow().name, "New Flow 2");
}

TEST(DuplicateFlow, KeepsTheIDsOfNodesAndEdges) {
    const FlowWorkspace workspace;
    const Uuid end = workspace.addNode(paletteEnd());
    workspace.connect(workspace.flow().nodes[0].id, std::nullopt, end);
    const Flow original = workspace.flow();
    const Flow* copy = nullptr;
    EXPECT_TRUE(workspace.schedules([&] { copy = workspace->duplicateFlow(original.id); }));
    ASSERT_NE(copy, nullptr);
    EXPECT_NE(copy->id, original.id);
    EXPECT_EQ(workspace->selectedNavigatorItem(), showsFlow(copy->id));
    Flow expected = original;
    expected.id = copy->id;
    expected.name = "New Flow 1 copy";
    EXPECT_EQ(*copy, expected);
    EXPECT_EQ(workspace->duplicateFlow(Uuid::random()), nullptr);
    EXPECT_EQ(workspace->flows->size(), 2u);
}

TEST(DeleteFlow, RemovesItAndShowsTheSelectedIndex) {
    const FlowWorkspace workspace;
    const Uuid other = workspace->addFlow().id;
    EXPECT_TRUE(workspace.schedules([&] { workspace->deleteFlow(workspace.id); }));
    EXPECT_EQ(workspace->selectedNavigatorItem(), showsFlow(other));
    workspace->deleteFlow(other);
    EXPECT_EQ(workspace->selectedNavigatorItem(), showsIndex(*workspace->selectedRAGIndexID));
    EXPECT_TRUE(workspace->flows->empty());
}

TEST(UpdateFlow, ReplacesItOrWritesNowhere) {
    const FlowWorkspace workspace;
    Flow changed = workspace.flow();
    changed.maxHops = 12;
    EXPECT_TRUE(workspace.schedules([&] { workspace->updateFlow(changed); }));
    EXPECT_EQ(workspace.flow(), changed);
    EXPECT_FALSE(workspace.schedules([&] { workspace->updateFlow(Flow("gone")); }));
    EXPECT_EQ(workspace->flows->size(), 1u);
}

TEST(AddFlowNode, AppendsWithoutAnyCheck) {
    const FlowWorkspace workspace;
    EXPECT_TRUE(workspace.schedules(
        [&] { workspace->addFlowNode({FlowNodeKind::Start{}}, workspace.id, 3, 4); }));
    ASSERT_EQ(workspace.flow().nodes.size(), 2u);
    const FlowNode& node = workspace.flow().nodes[1];
    EXPECT_NE(node.id, workspace.flow().nodes[0].id);
    EXPECT_EQ(node.kind, FlowNodeKind{FlowNodeKind::Start{}});
    EXPECT_EQ(node.position, (CanvasPoint{3, 4}));
}

TEST(MoveFlowNode, SetsThePosition) {
    const FlowWorkspace workspace;
    const Uuid start = workspace.flow().nodes[0].id;
    EXPECT_TRUE(
        workspace.schedules([&] { workspace->moveFlowNode(start, workspace.id, -5, 7.5); }));
    EXPECT_EQ(workspace.flow().nodes[0].position, (CanvasPoint{-5, 7.5}));
}

TEST(MoveFlowNode, MarksTheProjectEditedEvenWithoutTheNode) {
    const FlowWorkspace workspace;
    const Flow before = workspace.flow();
    EXPECT_TRUE(workspace.schedules(
        [&] { workspace->moveFlowNode(Uuid::random(), workspace.id, -5, 7.5); }));
    EXPECT_EQ(workspace.flow(), before);
}

TEST(ConnectFlowNodes, LeavesOneNewEdgeAtTheEndForAPortThatHadOne) {
    const FlowWorkspace workspace;
    const Uuid branch = workspace.addNode(paletteBranch());
    const Uuid a = workspace.addNode(paletteEnd());
    const Uuid b = workspace.addNode(paletteEnd());
    const Uuid first = workspace.connect(branch, "true", a);
    const Uuid second = workspace.connect(branch, "false", b);
    EXPECT_TRUE(workspace.schedules([&] { workspace.connect(branch, "true", b); }));
    const auto& edges = workspace.flow().edges;
    ASSERT_EQ(edges.size(), 2u);
    EXPECT_EQ(edges[0].id, second);
    EXPECT_NE(edges[1].id, first);
    EXPECT_EQ(edges[1], (FlowEdge{edges[1].id, branch, "true", b}));
}

TEST(ConnectFlowNodes, ReplacesTheOneConnectionOfATool) {
    const FlowWorkspace workspace;
    const Uuid tool = workspace.addNode(toolKind);
    const Uuid a = workspace.addNode(paletteEnd());
    const Uuid b = workspace.addNode(paletteEnd());
    workspace.connect(tool, std::nullopt, a);
    workspace.connect(tool, std::nullopt, b);
    ASSERT_EQ(workspace.flow().edges.size(), 1u);
    EXPECT_EQ(workspace.flow().edges[0].toNodeID, b);
}

TEST(ConnectFlowNodes, TellsTheUnnamedPortFromAnEmptyName) {
    const FlowWorkspace workspace;
    const Uuid tool = workspace.addNode(toolKind);
    workspace.connect(tool, std::nullopt, tool);
    workspace.connect(tool, "", tool);
    EXPECT_EQ(workspace.flow().edges.size(), 2u);
}

TEST(ConnectFlowNodes, StoresConnectionsToItselfToAStartAndToNothing) {
    const FlowWorkspace workspace;
    const Uuid tool = workspace.addNode(toolKind);
    const Uuid start = workspace.flow().nodes[0].id;
    workspace.connect(tool, std::nullopt, tool);
    workspace.connect(start, std::nullopt, start);
    const Uuid nothing = Uuid::random();
    workspace.connect(nothing, "x", Uuid::random());
    EXPECT_EQ(workspace.flow().edges.size(), 3u);
    EXPECT_EQ(workspace.flow().edges[2].fromNodeID, nothing);
}

TEST(DeleteFlowNode, TakesItsEdgesWithItAndLeavesAnotherSelection) {
    const FlowWorkspace workspace;
    const Uuid start = workspace.flow().nodes[0].id;
    const Uuid branch = workspace.addNode(paletteBranch());
    const Uuid end = workspace.addNode(paletteEnd());
    workspace.connect(start, std::nullopt, branch);
    workspace.connect(branch, "true", end);
    workspace.connect(branch, "false", end);
    const Uuid kept = workspace.connect(end, std::nullopt, start);
    workspace->canvasSelection = CanvasSelection{CanvasSelection::Node{end}};
    EXPECT_TRUE(workspace.schedules([&] { workspace->deleteFlowNode(branch, workspace.id); }));
    EXPECT_EQ(workspace.flow().nodes.size(), 2u);
    ASSERT_EQ(workspace.flow().edges.size(), 1u);
    EXPECT_EQ(workspace.flow().edges[0].id, kept);
    EXPECT_EQ(*workspace->canvasSelection, (CanvasSelection{CanvasSelection::Node{end}}));
}

TEST(DeleteFlowNode, ClearsItsSelectionEvenWithoutTheFlow) {
    const FlowWorkspace workspace;
    const Uuid start = workspace.flow().nodes[0].id;
    workspace->canvasSelection = CanvasSelection{CanvasSelection::Node{start}};
    EXPECT_FALSE(workspace.schedules([&] { workspace->deleteFlowNode(start, Uuid::random()); }));
    EXPECT_EQ(workspace.flow().nodes.size(), 1u);
    EXPECT_FALSE(workspace->canvasSelection->has_value());
}

TEST(DeleteFlowNode, DoesNotRefuseTheStart) {
    const FlowWorkspace workspace;
    workspace->deleteFlowNode(workspace.flow().nodes[0].id, workspace.id);
    EXPECT_TRUE(workspace.flow().nodes.empty());
}

TEST(DeleteFlowNode, KeepsAnEdgeSelectionOfTheSameID) {
    const FlowWorkspace workspace;
    const Uuid start = workspace.flow().nodes[0].id;
    workspace->canvasSelection = CanvasSelection{CanvasSelection::Edge{start}};
    workspace->deleteFlowNode(start, workspace.id);
    EXPECT_TRUE(workspace->canvasSelection->has_value());
}

TEST(DeleteFlowEdge, RemovesEveryEdgeWithTheIDAndClearsItsSelection) {
    const FlowWorkspace workspace;
    const Uuid tool = workspace.addNode(toolKind);
    const Uuid edge = workspace.connect(tool, std::nullopt, tool);
    const Uuid kept = workspace.connect(tool, "x", tool);
    workspace->flows.edit()->front().edges.push_back(workspace.flow().edges[0]);
    workspace->canvasSelection = CanvasSelection{CanvasSelection::Edge{edge}};
    EXPECT_TRUE(workspace.schedules([&] { workspace->deleteFlowEdge(edge, workspace.id); }));
    ASSERT_EQ(workspace.flow().edges.size(), 1u);
    EXPECT_EQ(workspace.flow().edges[0].id, kept);
    EXPECT_FALSE(workspace->canvasSelection->has_value());
}

TEST(DeleteFlowEdge, MarksNothingEditedWithoutTheEdge) {
    const FlowWorkspace workspace;
    EXPECT_FALSE(
        workspace.schedules([&] { workspace->deleteFlowEdge(Uuid::random(), workspace.id); }));
}

TEST(FlowEditing, DoesNothingWithoutTheFlow) {
    const FlowWorkspace workspace;
    const Uuid start = workspace.flow().nodes[0].id;
    const Uuid edge = workspace.connect(start, std::nullopt, start);
    workspace->canvasSelection = CanvasSelection{CanvasSelection::Edge{edge}};
    const auto before = *workspace->flows;
    const Uuid nowhere = Uuid::random();
    EXPECT_FALSE(workspace.schedules([&] {
        workspace->addFlowNode(toolKind, nowhere, 0, 0);
        workspace->moveFlowNode(start, nowhere, 0, 0);
        workspace->connectFlowNodes(start, std::nullopt, start, nowhere);
        workspace->deleteFlowEdge(edge, nowhere);
    }));
    EXPECT_EQ(*workspace->flows, before);
    EXPECT_TRUE(workspace->canvasSelection->has_value());
}

TEST(FlowNamesUsingAgent, AreInFlowOrderEachOnce) {
    const FlowWorkspace workspace;
    const Uuid agent = Uuid::random();
    EXPECT_TRUE(workspace->flowNamesUsingAgent(agent).empty());
    workspace->addFlow();
    const Uuid third = workspace->addFlow().id;
    for (const Uuid flow : {third, workspace.id, third}) {
        workspace->addFlowNode({FlowNodeKind::Agent{agent}}, flow, 0, 0);
    }
    workspace->addFlowNode({FlowNodeKind::Tool{agent}}, workspace->flows->at(1).id, 0, 0);
    workspace->addFlowNode({FlowNodeKind::Agent{Uuid::random()}}, workspace->flows->at(1).id, 0, 0);
    EXPECT_EQ(workspace->flowNamesUsingAgent(agent),
              (std::vector<std::string>{"New Flow 1", "New Flow 3"}));
}

TEST(FlowSampleInput, KeepsTheValueOfAFieldThatWasRemoved) {
    const FlowWorkspace workspace;
    workspace->flowSampleInputValues.edit()->emplace("request", "Hello");
    Flow flow = workspace.flow();
    flow.startInput.clear();
    workspace->updateFlow(flow);
    workspace->duplicateFlow(flow.id);
    EXPECT_EQ(workspace->flowSampleInputValues->at("request"), "Hello");
}

} // namespace
} // namespace ombrel

#include "core/Flow.h"
#include "core/FlowPalette.h"
#include "core/FlowPorts.h"

#include <gtest/gtest.h>

namespace ombrel {
namespace {

FlowNode node(FlowNodeKind kind) {
    return {Uuid::random(), std::move(kind), {}};
}

Agent agentWith(AgentOutputKind output) {
    Agent agent = newAgent("Router");
    agent.output = std::move(output);
    return agent;
}

using Ports = std::vector<FlowPort>;

TEST(NewFlow, HasOneStartAndTheRequestAsInput) {
    const Flow flow("New Flow 1");
    EXPECT_NE(flow.id, Uuid());
    EXPECT_EQ(flow.name, "New Flow 1");
    EXPECT_EQ(flow.kind, FlowKind::singleShot);
    EXPECT_EQ(flow.maxHops, 6);
    EXPECT_EQ(flow.maxHistoryTokens, 2000);
    EXPECT_TRUE(flow.contextFields.empty());
    EXPECT_TRUE(flow.edges.empty());
    ASSERT_EQ(flow.nodes.size(), 1u);
    EXPECT_NE(flow.nodes[0].id, Uuid());
    EXPECT_EQ(flow.nodes[0].kind, FlowNodeKind{FlowNodeKind::Start{}});
    EXPECT_EQ(flow.nodes[0].position, (CanvasPoint{80, 160}));
    ASSERT_EQ(flow.startInput.size(), 1u);
    EXPECT_NE(flow.startInput[0].id, Uuid());
    EXPECT_EQ(flow.startInput[0].name, "request");
    EXPECT_EQ(flow.startInput[0].kind, PropertyKind{PropertyKind::String{}});
    EXPECT_EQ(flow.startInput[0].description, "The flow's input");
    EXPECT_FALSE(flow.startInput[0].isOptional);
}

TEST(Flow, FindsTheFirstNodeWithTheID) {
    Flow flow("f");
    FlowNode twin = flow.nodes[0];
    twin.position = {1, 1};
    flow.nodes.push_back(twin);
    EXPECT_EQ(flow.node(twin.id), &flow.nodes[0]);
    EXPECT_EQ(flow.node(Uuid::random()), nullptr);
    EXPECT_EQ(flow.node(std::nullopt), nullptr);
}

TEST(Flow, GivesTheOutgoingEdgesInTheirOrder) {
    Flow flow("f");
    const Uuid from = flow.nodes[0].id;
    const Uuid other = Uuid::random();
    flow.edges = {{Uuid::random(), from, "b", other},
                  {Uuid::random(), other, std::nullopt, from},
                  {Uuid::random(), from, "a", other}};
    const auto edges = flow.outgoingEdges(from);
    ASSERT_EQ(edges.size(), 2u);
    EXPECT_EQ(edges[0], flow.edges[0]);
    EXPECT_EQ(edges[1], flow.edges[2]);
    EXPECT_TRUE(flow.outgoingEdges(Uuid::random()).empty());
}

TEST(Flow, HasTheFirstStartInTheOrderOfNodes) {
    Flow flow("f");
    flow.nodes.insert(flow.nodes.begin(), node(paletteEnd()));
    flow.nodes.push_back(node({FlowNodeKind::Start{}}));
    EXPECT_EQ(flow.startNode(), &flow.nodes[1]);
    flow.nodes.clear();
    EXPECT_EQ(flow.startNode(), nullptr);
}

TEST(OutputPorts, AreOneUnnamedPortForAStartAndATool) {
    EXPECT_EQ(outputPorts(node({FlowNodeKind::Start{}}), {}), Ports{std::nullopt});
    EXPECT_EQ(outputPorts(node({FlowNodeKind::Tool{Uuid::random()}}), {}), Ports{std::nullopt});
}

TEST(OutputPorts, AreOneUnnamedPortForAnAgentThatGivesTextOrAnObject) {
    const Agent text = agentWith({AgentOutputKind::Text{}});
    const Agent object = agentWith({AgentOutputKind::Object{}});
    EXPECT_EQ(outputPorts(node({FlowNodeKind::Agent{text.id}}), {text, object}),
              Ports{std::nullopt});
    EXPECT_EQ(outputPorts(node({FlowNodeKind::Agent{object.id}}), {text, object}),
              Ports{std::nullopt});
}

TEST(OutputPorts, AreTheCasesOfAnAgentThatGivesAnEnumerationInOrder) {
    const Agent agent =
        agentWith({AgentOutputKind::Enumeration{{{Uuid::random(), "yes", "It is so"},
                                                 {Uuid::random(), "no", {}},
                                                 {Uuid::random(), "", {}}}}});
    EXPECT_EQ(outputPorts(node({FlowNodeKind::Agent{agent.id}}), {agent}),
              (Ports{"yes", "no", ""}));
}

TEST(OutputPorts, AreNoneForADeletedAgentAndForOneWithoutCases) {
    const Agent agent = agentWith({AgentOutputKind::Enumeration{}});
    EXPECT_EQ(outputPorts(node({FlowNodeKind::Agent{agent.id}}), {agent}), Ports{});
    EXPECT_EQ(outputPorts(node({FlowNodeKind::Agent{Uuid::random()}}), {agent}), Ports{});
}

TEST(OutputPorts, AreTrueAndFalseForABranch) {
    EXPECT_EQ(outputPorts(node(paletteBranch()), {}), (Ports{"true", "false"}));
}

TEST(OutputPorts, AreNoneForAnEnd) {
    EXPECT_EQ(outputPorts(node(paletteEnd()), {}), Ports{});
}

TEST(FlowPalette, FillsFourColumnsAndWrapsDown) {
    EXPECT_EQ(palettePosition(0), (CanvasPoint{140, 140}));
    EXPECT_EQ(palettePosition(1), (CanvasPoint{360, 140}));
    EXPECT_EQ(palettePosition(3), (CanvasPoint{800, 140}));
    EXPECT_EQ(palettePosition(4), (CanvasPoint{140, 290}));
    EXPECT_EQ(palettePosition(10), (CanvasPoint{580, 440}));
}

TEST(FlowPalette, AddsAnEmptyBranchAndAnEndThatCarriesItsOutput) {
    EXPECT_EQ(paletteBranch(),
              (FlowNodeKind{FlowNodeKind::Branch{"", WireBranchOperator::equals, ""}}));
    EXPECT_EQ(paletteEnd(), (FlowNodeKind{FlowNodeKind::End{"result", true}}));
}

} // namespace
} // namespace ombrel

#include "flows/FlowFragment.h"
#include "core/JsonDecoder.h"
#include "core/JsonEncoder.h"
#include "tests/flows/FlowSamples.h"

#include <gtest/gtest.h>

namespace ombrel {
namespace {

using test::Drawing;

struct Sample : Drawing {
    Uuid triage = agent("Triage", test::enumeration({"a", "b"}));
    Uuid desk = agent("Desk");
    Uuid done = end("done");
    Uuid toTriage = connect(start(), triage);
    Uuid toDesk = connect(triage, desk, "a");
    Uuid toDone = connect(desk, done);
};

TEST(FlowFragment, HoldsTheNodesAndTheConnectionsAmongThem) {
    const Sample sample;
    const auto fragment = FlowFragment::of(sample.flow, {sample.triage, sample.desk});
    ASSERT_EQ(fragment.nodes.size(), 2U);
    ASSERT_EQ(fragment.edges.size(), 1U);
    EXPECT_EQ(fragment.edges[0].id, sample.toDesk);
    EXPECT_EQ(decodeJson<FlowFragment>(encodeJson(fragment)).value(), fragment);
}

TEST(FlowFragment, LeavesStartOut) {
    const Sample sample;
    const auto fragment = FlowFragment::of(sample.flow, {sample.start(), sample.triage});
    ASSERT_EQ(fragment.nodes.size(), 1U);
    EXPECT_TRUE(fragment.edges.empty());
    Flow flow;
    const FlowFragment onlyStart{{*sample.flow.startNode()}, {}};
    EXPECT_TRUE(onlyStart.addTo(flow, 0, 0).empty());
    EXPECT_TRUE(flow.nodes.empty());
}

TEST(FlowFragment, IsAddedWithIdsOfItsOwn) {
    Sample sample;
    const auto fragment = FlowFragment::of(sample.flow, {sample.triage, sample.desk});
    const Flow before = sample.flow;
    const auto added = fragment.addTo(sample.flow, 28, 30);
    ASSERT_EQ(added.size(), 2U);
    ASSERT_EQ(sample.flow.nodes.size(), before.nodes.size() + 2);
    ASSERT_EQ(sample.flow.edges.size(), before.edges.size() + 1);
    for (const Uuid id : added) {
        EXPECT_EQ(before.node(id), nullptr);
    }
    const FlowNode& copy = *sample.flow.node(added[0]);
    EXPECT_EQ(copy.kind, before.node(sample.triage)->kind);
    EXPECT_EQ(copy.position, (CanvasPoint{28, 30}));
    const FlowEdge& edge = sample.flow.edges.back();
    EXPECT_EQ(edge.fromNodeID, added[0]);
    EXPECT_EQ(edge.toNodeID, added[1]);
    EXPECT_EQ(edge.fromPort, "a");
    EXPECT_NE(edge.id, sample.toDesk);
}

TEST(FlowFragment, DropsConnectionsToNodesThatItDoesNotHold) {
    const Sample sample;
    FlowFragment fragment = FlowFragment::of(sample.flow, {sample.triage});
    fragment.edges = sample.flow.edges;
    Flow flow;
    EXPECT_EQ(fragment.addTo(flow, 0, 0).size(), 1U);
    EXPECT_TRUE(flow.edges.empty());
}

} // namespace
} // namespace ombrel

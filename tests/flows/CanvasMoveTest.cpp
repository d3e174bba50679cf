#include "flows/CanvasMove.h"

#include <gtest/gtest.h>

#include <vector>

namespace ombrel {
namespace {

FlowNode nodeAt(double x, double y) {
    return {Uuid::random(), {FlowNodeKind::Start{}}, {x, y}};
}

TEST(ConnectionTarget, ADropExactly95ToTheSideConnects) {
    const std::vector<FlowNode> nodes{nodeAt(0, 0), nodeAt(400, 200)};
    const auto target = [&](double x, double y) {
        return connectionTarget(nodes, nodes[0].id, {x, y});
    };
    EXPECT_EQ(target(400 - 95, 200), nodes[1].id);
    EXPECT_EQ(target(400 + 95, 200), nodes[1].id);
    EXPECT_EQ(target(400, 200 - 50), nodes[1].id);
    EXPECT_EQ(target(400 + 95, 200 + 50), nodes[1].id);
}

TEST(ConnectionTarget, ADropBeyond95ToTheSideConnectsNothing) {
    const std::vector<FlowNode> nodes{nodeAt(0, 0), nodeAt(400, 200)};
    const auto target = [&](double x, double y) {
        return connectionTarget(nodes, nodes[0].id, {x, y});
    };
    EXPECT_EQ(target(400 - 95.5, 200), std::nullopt);
    EXPECT_EQ(target(400 + 95.5, 200), std::nullopt);
    EXPECT_EQ(target(400, 200 + 50.5), std::nullopt);
}

TEST(ConnectionTarget, ADropOnTheSourceMayHitANodeBeneath) {
    const std::vector<FlowNode> nodes{nodeAt(0, 0), nodeAt(20, 10)};
    EXPECT_EQ(connectionTarget(nodes, nodes[1].id, {20, 10}), nodes[0].id);
    EXPECT_EQ(connectionTarget(std::vector{nodes[1]}, nodes[1].id, {20, 10}), std::nullopt);
}

TEST(ConnectionTarget, TheFirstNodeInTheirOrderWins) {
    const std::vector<FlowNode> nodes{nodeAt(500, 0), nodeAt(0, 0), nodeAt(10, 0)};
    EXPECT_EQ(connectionTarget(nodes, nodes[0].id, {10, 0}), nodes[1].id);
}

TEST(ConnectionTarget, ANodeThatIsBeingMovedCountsWhereItIsSeen) {
    const std::vector<FlowNode> nodes{nodeAt(0, 0), nodeAt(400, 0)};
    const CanvasMove move{{nodes[1].id}, {300, 40}};
    EXPECT_EQ(connectionTarget(nodes, nodes[0].id, {400, 0}, move), std::nullopt);
    EXPECT_EQ(connectionTarget(nodes, nodes[0].id, {700, 40}, move), nodes[1].id);
}

TEST(AlignedMove, LeavesAMoveAloneWhereNothingIsNear) {
    const std::vector<FlowNode> nodes{nodeAt(0, 0), nodeAt(400, 300)};
    const CanvasMove move{{nodes[0].id}, {37.25, 21.5}};
    EXPECT_EQ(alignedMove(nodes, nodes[0].id, move, 5),
              (AlignmentGuides{{37.25, 21.5}, std::nullopt, std::nullopt}));
}

TEST(AlignedMove, DrawsToTheNearestLineOfANodeThatStays) {
    const std::vector<FlowNode> nodes{nodeAt(0, 0), nodeAt(400, 300), nodeAt(402, 500)};
    const CanvasMove move{{nodes[0].id}, {403, 100}};
    EXPECT_EQ(alignedMove(nodes, nodes[0].id, move, 5),
              (AlignmentGuides{{402, 100}, 402, std::nullopt}));
    const CanvasMove both{{nodes[0].id}, {398, 296}};
    EXPECT_EQ(alignedMove(nodes, nodes[0].id, both, 5), (AlignmentGuides{{400, 300}, 400, 300}));
}

TEST(AlignedMove, DoesNotAlignWithNodesThatMoveAlong) {
    const std::vector<FlowNode> nodes{nodeAt(0, 0), nodeAt(2, 300)};
    const CanvasMove move{{nodes[0].id, nodes[1].id}, {50, 50}};
    EXPECT_EQ(alignedMove(nodes, nodes[0].id, move, 5).translation, (CanvasSize{50, 50}));
}

TEST(AlignedMove, LeavesAMoveOfAnUnknownNodeAlone) {
    const std::vector<FlowNode> nodes{nodeAt(0, 0)};
    EXPECT_EQ(alignedMove(nodes, Uuid::random(), {{}, {1, 2}}, 5).translation, (CanvasSize{1, 2}));
}

} // namespace
} // namespace ombrel

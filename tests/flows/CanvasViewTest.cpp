#include "flows/CanvasView.h"

#include <gtest/gtest.h>

#include <vector>

namespace ombrel {
namespace {

TEST(CanvasView, StartsAtFullSizeWithoutAnOffset) {
    EXPECT_EQ(CanvasView(), (CanvasView{1, {0, 0}}));
    EXPECT_EQ(CanvasView().readout(), "100%");
}

TEST(CanvasView, ZoomingInAtTheLargestScaleStaysThere) {
    EXPECT_EQ((CanvasView{3.0, {5, 6}}.zoomedIn()), (CanvasView{3.0, {5, 6}}));
    EXPECT_EQ((CanvasView{2.95, {}}.zoomedIn().zoomScale), 3.0);
}

TEST(CanvasView, ZoomingOutFromThirtyPercentGivesTheSmallestScale) {
    EXPECT_EQ((CanvasView{0.3, {}}.zoomedOut().zoomScale), 0.25);
    EXPECT_EQ((CanvasView{0.25, {}}.zoomedOut().zoomScale), 0.25);
}

TEST(CanvasView, ButtonsChangeTheScaleByATenthAndLeaveTheOffset) {
    EXPECT_EQ((CanvasView{1, {7, 8}}.zoomedIn()), (CanvasView{1.1, {7, 8}}));
    EXPECT_EQ((CanvasView{1, {7, 8}}.zoomedOut()), (CanvasView{0.9, {7, 8}}));
}

TEST(CanvasView, APinchKeepsWhatIsUnderThePointer) {
    const CanvasView before{1.5, {30, -20}};
    const CanvasPoint pointer{210, 95};
    const CanvasPoint under = before.onCanvas(pointer);
    const CanvasView after = before.pinched(1.25, pointer);
    EXPECT_DOUBLE_EQ(after.zoomScale, 1.875);
    EXPECT_DOUBLE_EQ(after.panOffset.width, 1.25 * 30 + (1 - 1.25) * 210);
    EXPECT_DOUBLE_EQ(after.panOffset.height, 1.25 * -20 + (1 - 1.25) * 95);
    EXPECT_NEAR(after.seen(under).x, pointer.x, 1e-9);
    EXPECT_NEAR(after.seen(under).y, pointer.y, 1e-9);
}

TEST(CanvasView, TheOffsetFollowsTheWholePinchWhereTheScaleStops) {
    const CanvasView after = CanvasView{3, {10, 0}}.pinched(2, {100, 0});
    EXPECT_EQ(after, (CanvasView{3, {2 * 10 - 100, 0}}));
}

TEST(CanvasView, TheWheelKeepsWhatIsUnderThePointerAlsoWhereTheScaleStops) {
    const CanvasPoint pointer{100, 40};
    for (const double factor : {1.3, 8.0, 0.01}) {
        const CanvasView before{1.2, {10, 15}};
        const CanvasPoint under = before.onCanvas(pointer);
        const CanvasView after = before.zoomedAt(factor, pointer);
        EXPECT_NEAR(after.seen(under).x, pointer.x, 1e-9);
        EXPECT_NEAR(after.seen(under).y, pointer.y, 1e-9);
    }
    EXPECT_EQ(CanvasView().zoomedAt(100, pointer).zoomScale, 3.0);
    EXPECT_EQ(CanvasView().zoomedAt(0.001, pointer).zoomScale, 0.25);
}

TEST(CanvasView, ReadsOutAWholePercentage) {
    EXPECT_EQ((CanvasView{0.25, {}}.readout()), "25%");
    EXPECT_EQ((CanvasView{1.0 / 3, {}}.readout()), "33%");
    EXPECT_EQ((CanvasView{1.1 + 0.1 + 0.1, {}}.readout()), "130%");
}

TEST(CanvasView, FitsAllPointsInTheMiddleAtMostAtFullSize) {
    const std::vector<CanvasPoint> few{{0, 0}, {100, 50}};
    const CanvasView small = CanvasView::fitting(few, {50, 50}, {1000, 600});
    EXPECT_EQ(small.zoomScale, 1.0);
    EXPECT_EQ(small.seen({50, 25}), (CanvasPoint{500, 300}));

    const std::vector<CanvasPoint> wide{{0, 0}, {1900, 0}};
    const CanvasView large = CanvasView::fitting(wide, {50, 50}, {1000, 600});
    EXPECT_DOUBLE_EQ(large.zoomScale, 0.5);
    EXPECT_DOUBLE_EQ(large.seen({0, 0}).x, 25);
    EXPECT_DOUBLE_EQ(large.seen({1900, 0}).x, 975);

    EXPECT_EQ(CanvasView::fitting({}, {50, 50}, {1000, 600}), CanvasView());
}

TEST(CanvasView, RevealsABoxWithTheLeastPan) {
    const CanvasView view;
    EXPECT_EQ(view.revealing({100, 100}, {50, 50}, {400, 300}), view);
    EXPECT_EQ(view.revealing({390, 100}, {50, 50}, {400, 300}), (CanvasView{1, {-40, 0}}));
    EXPECT_EQ(view.revealing({20, 290}, {50, 50}, {400, 300}), (CanvasView{1, {30, -40}}));
    // One that is larger than the view shows its beginning.
    EXPECT_EQ(view.revealing({300, 100}, {250, 50}, {400, 300}), (CanvasView{1, {-50, 0}}));
}

} // namespace
} // namespace ombrel

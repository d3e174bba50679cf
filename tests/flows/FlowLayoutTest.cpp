#include "flows/FlowLayout.h"
#include "tests/flows/FlowSamples.h"

#include <gtest/gtest.h>

namespace ombrel {
namespace {

using test::Drawing;
using Points = std::vector<CanvasPoint>;

TEST(FlowLayout, KeepsTheFirstStartInItsPlace) {
    EXPECT_EQ(flowLayout(Drawing().flow), (Points{{80, 160}}));
    EXPECT_EQ(flowLayout(Flow()), Points{});
}

TEST(FlowLayout, GivesEachFurtherSuccessorARowOfItsOwn) {
    Drawing drawing;
    const Uuid triage = drawing.agent("Triage", test::enumeration({"a", "b"}));
    const Uuid second = drawing.end("second");
    const Uuid desk = drawing.agent("Desk");
    const Uuid first = drawing.end("first");
    drawing.connect(drawing.start(), triage);
    drawing.connect(triage, desk, "a");
    drawing.connect(triage, second, "b");
    drawing.connect(desk, first);
    EXPECT_EQ(flowLayout(drawing.flow),
              (Points{{80, 160}, {340, 160}, {600, 310}, {600, 160}, {860, 160}}));
}

TEST(FlowLayout, PutsWhatStartDoesNotLeadToBelow) {
    Drawing drawing;
    const Uuid stray = drawing.tool("stray");
    const Uuid end = drawing.end();
    drawing.connect(stray, drawing.end("other"));
    drawing.connect(drawing.start(), end);
    EXPECT_EQ(flowLayout(drawing.flow), (Points{{80, 160}, {80, 310}, {340, 160}, {340, 310}}));
}

TEST(FlowLayout, EndsInALoop) {
    Drawing drawing;
    const Uuid tool = drawing.tool("a");
    drawing.connect(drawing.start(), tool);
    drawing.connect(tool, drawing.start());
    drawing.connect(tool, Uuid::random());
    EXPECT_EQ(flowLayout(drawing.flow), (Points{{80, 160}, {340, 160}}));
}

} // namespace
} // namespace ombrel

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

TEST(FlowEditor, SaysTheKindTheHopsAndTheIssues) {
    Editor editor;
    EXPECT_TRUE(editor.soonSays("flow.name", "Support"));
    EXPECT_TRUE(editor.soonSays("flow.kind", "Single-shot"));
    EXPECT_TRUE(editor.soonSays("flow.maxHops", "Max hops 6"));
    const auto issues = flowIssues(editor.workspace(), editor.flowID).size();
    EXPECT_TRUE(editor.soonSays("flow.readiness", std::to_string(issues) + " issues"));
    editor.workspace().connectFlowNodes(editor.nodeNamed("Start"), std::nullopt,
                                        editor.nodeNamed(".done"), editor.flowID);
    for (const char* name : {"Triage", "Desk", "Branch", ".failed"}) {
        editor.workspace().deleteFlowNode(editor.nodeNamed(name), editor.flowID);
    }
    editor.settle();
    EXPECT_TRUE(editor.soonSays("flow.readiness", "Ready to run"));
}

TEST(FlowEditor, ShowsEachFlowInAnEditorOfItsOwn) {
    Editor editor;
    editor.canvas().zoomIn();
    const Uuid other = editor.workspace().addFlow().id;
    ASSERT_TRUE(editor.studio.until([&] {
        const auto* shown = editor.window.findChild<FlowEditor*>(QStringLiteral("flow"));
        return shown && shown->flowID() == other;
    }));
    EXPECT_EQ(editor.canvas().canvasView(), CanvasView());
    editor.workspace().deleteFlow(other);
    editor.workspace().setSelectedNavigatorItem({NavigatorSelection::Flow{other}});
    EXPECT_TRUE(editor.studio.until([&] { return isShown(editor.window, "notFound"); }));
    EXPECT_EQ(editor.window.content()->findChild<EmptyState*>(QStringLiteral("notFound"))->title(),
              QStringLiteral("Flow Not Found"));
}

} // namespace
} // namespace ombrel

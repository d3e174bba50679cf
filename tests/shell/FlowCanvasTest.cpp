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

TEST(FlowCanvas, ADragMovesANodeByItsWholeLengthAsOneUndoStep) {
    Editor editor;
    const std::size_t steps = editor.undoSteps();
    const QPointF from = editor.centre("Desk") + QPointF(-20, 10);
    editor.drag(from, from + QPointF(73.0, 96.0));
    EXPECT_EQ(editor.position("Desk"), (CanvasPoint{673, 206}));
    EXPECT_EQ(editor.undoSteps(), steps + 1);
    editor.workspace().undoManager->undo();
    editor.settle();
    EXPECT_EQ(editor.position("Desk"), (CanvasPoint{600, 110}));
}

TEST(FlowCanvas, ADragCountsInUnitsOfTheCanvas) {
    Editor editor;
    editor.canvas().setCanvasView({0.5, {40, 20}});
    const QPointF from = editor.centre("Desk");
    editor.drag(from, from + QPointF(36.5, 33));
    EXPECT_EQ(editor.position("Desk"), (CanvasPoint{673, 176}));
}

TEST(FlowCanvas, ANodeIsDrawnToAGuideOnlyWhenItIsNear) {
    Editor editor;
    const QPointF from = editor.centre("Desk");
    // The Branch stands at 340, 330; the End at 600, 330.
    editor.drag(from, from + QPointF(-150, 217));
    EXPECT_EQ(editor.position("Desk"), (CanvasPoint{450, 330}));
    editor.drag(editor.centre("Desk"), editor.centre("Desk") + QPointF(30, 57));
    EXPECT_EQ(editor.position("Desk"), (CanvasPoint{480, 387}));
    editor.drag(editor.centre("Desk"), editor.centre("Desk") + QPointF(30, -54), Qt::AltModifier);
    EXPECT_EQ(editor.position("Desk"), (CanvasPoint{510, 333}));
}

TEST(FlowCanvas, AClickThatTremblesMovesNothing) {
    Editor editor;
    const QPointF at = editor.centre("Desk");
    const std::size_t steps = editor.undoSteps();
    editor.press(at);
    editor.moveTo(at + QPointF(1, 1));
    editor.release(at + QPointF(1, 1));
    EXPECT_EQ(editor.position("Desk"), (CanvasPoint{600, 110}));
    EXPECT_EQ(editor.undoSteps(), steps);
    EXPECT_EQ(*editor.workspace().canvasSelection,
              CanvasSelection{CanvasSelection::Node{editor.nodeNamed("Desk")}});
}

TEST(FlowCanvas, EscapeEndsADragAndLeavesTheNodeWhereItWas) {
    Editor editor;
    const QPointF at = editor.centre("Desk");
    editor.press(at);
    editor.moveTo(at + QPointF(80, 80));
    editor.key(Qt::Key_Escape);
    editor.release(at + QPointF(80, 80));
    EXPECT_EQ(editor.position("Desk"), (CanvasPoint{600, 110}));
}

TEST(FlowCanvas, ANodeThatGoesWhileItIsDraggedEndsTheDrag) {
    Editor editor;
    const QPointF at = editor.centre("Desk");
    editor.press(at);
    editor.moveTo(at + QPointF(80, 80));
    editor.workspace().deleteFlowNode(editor.nodeNamed("Desk"), editor.flowID);
    editor.settle();
    editor.release(at + QPointF(80, 80));
    EXPECT_EQ(editor.flow().nodes.size(), 5U);
}

TEST(FlowCanvas, AWireDroppedExactly95ToTheSideConnects) {
    Editor editor;
    const QPointF target = editor.centre("Triage");
    editor.drag(editor.handle("Start"), target + QPointF(95, 50));
    ASSERT_EQ(editor.flow().edges.size(), 1U);
    EXPECT_EQ(editor.flow().edges[0].fromNodeID, editor.nodeNamed("Start"));
    EXPECT_EQ(editor.flow().edges[0].fromPort, std::nullopt);
    EXPECT_EQ(editor.flow().edges[0].toNodeID, editor.nodeNamed("Triage"));
}

TEST(FlowCanvas, AWireDroppedFurtherThan95ToTheSideConnectsNothing) {
    Editor editor;
    const QPointF target = editor.centre("Triage");
    editor.drag(editor.handle("Start"), target + QPointF(95.5, 0));
    editor.drag(editor.handle("Start"), target + QPointF(0, 50.5));
    EXPECT_TRUE(editor.flow().edges.empty());
}

TEST(FlowCanvas, AWireDroppedOnItsSourceMayHitANodeBeneath) {
    Editor editor;
    const Uuid start = editor.nodeNamed("Start");
    editor.drag(editor.handle("Start"), editor.centre("Start"));
    EXPECT_TRUE(editor.flow().edges.empty());
    editor.workspace().moveFlowNode(editor.nodeNamed("Desk"), editor.flowID, 90, 170);
    editor.workspace().moveFlowNode(start, editor.flowID, 90, 100);
    editor.settle();
    editor.drag(editor.handle("Start"), editor.centre("Start") + QPointF(0, 25));
    ASSERT_EQ(editor.flow().edges.size(), 1U);
    EXPECT_EQ(editor.flow().edges[0].toNodeID, editor.nodeNamed("Desk"));
}

TEST(FlowCanvas, AWireFromAnEndDoesNothing) {
    Editor editor;
    editor.drag(editor.handle(".failed"), editor.centre("Branch"));
    EXPECT_TRUE(editor.flow().edges.empty());
    EXPECT_EQ(editor.window.findChild<QDialog*>(QStringLiteral("portChoice")), nullptr);
    EXPECT_EQ(editor.position(".failed"), (CanvasPoint{130, 330}));
}

TEST(FlowCanvas, AWireFromADeletedAgentDoesNothing) {
    Editor editor;
    const Uuid triage = editor.nodeNamed("Triage");
    editor.workspace().agents = std::vector<Agent>();
    editor.settle();
    EXPECT_EQ(fromQt(editor.canvas().scene().card(triage)->title), "Deleted Agent");
    const CanvasPoint at = editor.flow().node(triage)->position;
    editor.drag(editor.canvas().toWidget(canvas::outputHandle({at.x, at.y})),
                editor.centre("Branch"));
    EXPECT_TRUE(editor.flow().edges.empty());
}

TEST(FlowCanvas, AsksForThePortWhenThereAreSeveral) {
    Editor editor;
    editor.drag(editor.handle("Triage"), editor.centre(".done"));
    EXPECT_TRUE(editor.flow().edges.empty());
    EXPECT_EQ(textOf(editor.window, "portChoice.question"), "Connect Triage → .done as:");
    EXPECT_EQ(textOf(editor.window, "portChoice.port.0"), "refund");
    EXPECT_EQ(textOf(editor.window, "portChoice.port.1"), "other");
    ASSERT_TRUE(editor.canvas().pendingPortChoice());
    click(editor.window, "portChoice.port.1");
    editor.settle();
    ASSERT_EQ(editor.flow().edges.size(), 1U);
    EXPECT_EQ(editor.flow().edges[0].fromPort, "other");
    EXPECT_FALSE(editor.canvas().pendingPortChoice());
    EXPECT_EQ(editor.window.findChild<QDialog*>(QStringLiteral("portChoice")), nullptr);
}

TEST(FlowCanvas, CancellingTheChoiceOfThePortConnectsNothing) {
    Editor editor;
    editor.drag(editor.handle("Branch"), editor.centre(".done"));
    EXPECT_EQ(textOf(editor.window, "portChoice.port.0"), "true");
    click(editor.window, "portChoice.cancel");
    editor.settle();
    EXPECT_TRUE(editor.flow().edges.empty());
    EXPECT_FALSE(editor.canvas().pendingPortChoice());
    editor.drag(editor.handle("Branch"), editor.centre(".done"));
    pressKey(find<QDialog>(editor.window, "portChoice"), Qt::Key_Escape);
    editor.settle();
    EXPECT_TRUE(editor.flow().edges.empty());
    EXPECT_FALSE(editor.canvas().pendingPortChoice());
}

TEST(FlowCanvas, ZoomingInAtTheLargestScaleStaysThere) {
    Editor editor;
    editor.canvas().setCanvasView({3.0, {}});
    click(editor.window, "canvas.zoomIn");
    EXPECT_EQ(editor.canvas().canvasView().zoomScale, 3.0);
    EXPECT_TRUE(editor.soonSays("canvas.readout", "300%"));
}

TEST(FlowCanvas, ZoomingOutFromThirtyPercentGivesTheSmallestScale) {
    Editor editor;
    editor.canvas().setCanvasView({0.3, {}});
    click(editor.window, "canvas.zoomOut");
    EXPECT_EQ(editor.canvas().canvasView().zoomScale, 0.25);
    EXPECT_TRUE(editor.soonSays("canvas.readout", "25%"));
}

TEST(FlowCanvas, ResetsZoomAndPan) {
    Editor editor;
    editor.canvas().setCanvasView({2, {30, 40}});
    click(editor.window, "canvas.reset");
    EXPECT_EQ(editor.canvas().canvasView(), CanvasView());
}

TEST(FlowCanvas, FitsTheWholeFlow) {
    Editor editor;
    editor.workspace().moveFlowNode(editor.nodeNamed("Desk"), editor.flowID, 1800, 1200);
    editor.settle();
    click(editor.window, "canvas.fit");
    for (const CanvasCard& card : editor.canvas().scene().cards()) {
        EXPECT_TRUE(QRectF(editor.canvas().rect()).contains(editor.canvas().toWidget(card.centre)));
    }
}

TEST(FlowCanvas, FitsTheWholeFlowBetweenThePaletteAndTheControls) {
    Editor editor;
    editor.workspace().moveFlowNode(editor.nodeNamed("Desk"), editor.flowID, 120, 1600);
    editor.settle();
    click(editor.window, "canvas.fit");
    const FlowCanvas& canvas = editor.canvas();
    const QRect controls = find<QWidget>(editor.window, "canvas.fit").parentWidget()->geometry();
    for (const CanvasCard& card : canvas.scene().cards()) {
        const double halfCard = canvas::cardHeight / 2 * canvas.canvasView().zoomScale;
        const double middle = canvas.toWidget(card.centre).y();
        EXPECT_GT(middle - halfCard, canvas.findChild<FlowPalette*>()->geometry().bottom());
        EXPECT_LT(middle + halfCard, controls.top());
    }
}

TEST(FlowCanvas, StaysAliveWhereANodeIsOutOfAllMeasure) {
    Editor editor;
    editor.workspace().moveFlowNode(editor.nodeNamed("Desk"), editor.flowID, 1e308, -1e308);
    editor.settle();
    click(editor.window, "canvas.fit");
    editor.canvas().grab();
    click(editor.window, "canvas.reset");
    editor.canvas().grab();
    EXPECT_EQ(editor.canvas().canvasView(), CanvasView());
}

TEST(FlowCanvas, ThePinchKeepsWhatIsUnderThePointer) {
    Editor editor;
    const QPointF at = editor.centre("Desk");
    const QPointF under = editor.canvas().toCanvas(at);
    QNativeGestureEvent pinch(Qt::ZoomNativeGesture, QPointingDevice::primaryPointingDevice(), 2,
                              at, at, editor.canvas().mapToGlobal(at), 0.25, {});
    QCoreApplication::sendEvent(&editor.canvas(), &pinch);
    EXPECT_DOUBLE_EQ(editor.canvas().canvasView().zoomScale, 1.25);
    EXPECT_NEAR(editor.canvas().toWidget(under).x(), at.x(), 1e-6);
    EXPECT_NEAR(editor.canvas().toWidget(under).y(), at.y(), 1e-6);
}

void turnWheel(FlowCanvas& canvas, QPointF at, QPoint angle, Qt::KeyboardModifiers modifiers = {}) {
    QWheelEvent wheel(at, canvas.mapToGlobal(at), {}, angle, Qt::NoButton, modifiers,
                      Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(&canvas, &wheel);
}

TEST(FlowCanvas, ScrollingPansAndWithControlZoomsAtThePointer) {
    Editor editor;
    turnWheel(editor.canvas(), {200, 200}, {0, -120});
    EXPECT_LT(editor.canvas().canvasView().panOffset.height, 0);
    EXPECT_EQ(editor.canvas().canvasView().zoomScale, 1);
    const QPointF under = editor.canvas().toCanvas({200, 200});
    turnWheel(editor.canvas(), {200, 200}, {0, 240}, Qt::ControlModifier);
    EXPECT_GT(editor.canvas().canvasView().zoomScale, 1.1);
    EXPECT_NEAR(editor.canvas().toWidget(under).x(), 200, 1e-6);
}

TEST(FlowCanvas, ANodeThatIsDraggedStaysUnderThePointerWhenTheCanvasScrolls) {
    Editor editor;
    const QPointF at = editor.centre("Desk");
    editor.press(at);
    editor.moveTo(at + QPointF(33, 97));
    turnWheel(editor.canvas(), at + QPointF(33, 97), {0, -240});
    const CanvasSize pan = editor.canvas().canvasView().panOffset;
    EXPECT_LT(pan.height, 0);
    const CanvasCard* desk = editor.canvas().scene().card(editor.nodeNamed("Desk"));
    EXPECT_EQ(editor.canvas().toWidget(editor.canvas().scene().centre(*desk)),
              at + QPointF(33, 97));
    editor.release(at + QPointF(33, 97));
    EXPECT_EQ(editor.position("Desk"), (CanvasPoint{633, 207 - pan.height}));
}

TEST(FlowCanvas, DraggingTheEmptyCanvasPans) {
    Editor editor;
    const QPointF empty = editor.canvas().toWidget({480, 240});
    editor.drag(empty, empty + QPointF(-31, 44));
    EXPECT_EQ(editor.canvas().canvasView(), (CanvasView{1, {-31, 44}}));
    EXPECT_EQ(editor.flow().node(editor.nodeNamed("Desk"))->position, (CanvasPoint{600, 110}));
}

TEST(FlowCanvas, ThePaletteAddsNodesInItsColumns) {
    Editor editor;
    const auto add = [&](const char* button) {
        const CanvasPoint expected = palettePosition(editor.flow().nodes.size());
        click(editor.window, button);
        editor.settle();
        EXPECT_EQ(editor.flow().nodes.back().position, expected);
        EXPECT_EQ(*editor.workspace().canvasSelection,
                  CanvasSelection{CanvasSelection::Node{editor.flow().nodes.back().id}});
        return editor.flow().nodes.back().kind;
    };
    EXPECT_EQ(add("canvas.add.branch"), paletteBranch());
    EXPECT_EQ(add("canvas.add.end"), paletteEnd());
    QMenu& agents = find<QMenu>(editor.window, "canvas.add.agent.menu");
    ASSERT_EQ(agents.actions().size(), 2);
    EXPECT_EQ(agents.actions()[1]->text(), QStringLiteral("Desk"));
    agents.actions()[1]->trigger();
    editor.settle();
    EXPECT_EQ(editor.flow().nodes.back().kind.value.index(), 1U);
    const QMenu& tools = find<QMenu>(editor.window, "canvas.add.tool.menu");
    ASSERT_EQ(tools.actions().size(), 1);
    EXPECT_EQ(tools.actions()[0]->text(), QStringLiteral("No tools yet"));
    EXPECT_FALSE(tools.actions()[0]->isEnabled());
}

TEST(FlowCanvas, TabGoesFromNodeToNodeAndThenOut) {
    Editor editor;
    editor.canvas().setFocus();
    const auto count = editor.flow().nodes.size();
    for (std::size_t i = 0; i < count; ++i) {
        editor.key(Qt::Key_Tab);
        EXPECT_EQ(*editor.workspace().canvasSelection,
                  CanvasSelection{CanvasSelection::Node{editor.flow().nodes[i].id}});
    }
    editor.key(Qt::Key_Backtab, Qt::ShiftModifier);
    EXPECT_EQ(*editor.workspace().canvasSelection,
              CanvasSelection{CanvasSelection::Node{editor.flow().nodes[count - 2].id}});
    editor.key(Qt::Key_Tab);
    editor.key(Qt::Key_Tab);
    EXPECT_FALSE(editor.canvas().hasFocus()); // after the last node, it goes on
}

TEST(FlowCanvas, ArrowsMoveTheSelectionByAStepOfTheGrid) {
    Editor editor;
    editor.clickAt(editor.centre("Desk"));
    editor.key(Qt::Key_Right);
    editor.key(Qt::Key_Down);
    editor.key(Qt::Key_Down);
    EXPECT_EQ(editor.position("Desk"), (CanvasPoint{620, 150}));
    editor.key(Qt::Key_Left, Qt::ShiftModifier);
    EXPECT_EQ(editor.position("Desk"), (CanvasPoint{619, 150}));
}

TEST(FlowCanvas, DeleteTakesTheSelectedNodesButNotStart) {
    Editor editor;
    editor.clickAt(editor.centre("Desk"));
    editor.key(Qt::Key_Delete);
    EXPECT_EQ(editor.flow().nodes.size(), 5U);
    EXPECT_FALSE(*editor.workspace().canvasSelection);
    editor.key(Qt::Key_A, Qt::ControlModifier);
    editor.key(Qt::Key_Backspace);
    ASSERT_EQ(editor.flow().nodes.size(), 1U);
    EXPECT_EQ(editor.flow().nodes[0].kind, FlowNodeKind{FlowNodeKind::Start{}});
}

TEST(FlowCanvas, AClickSelectsAWireAndDeleteTakesIt) {
    Editor editor;
    editor.drag(editor.handle("Start"), editor.centre("Triage"));
    const auto& wires = editor.canvas().scene().wires();
    ASSERT_EQ(wires.size(), 1U);
    editor.clickAt(editor.canvas().toWidget(editor.canvas().scene().curve(wires[0]).at(0.5)));
    EXPECT_EQ(*editor.workspace().canvasSelection,
              CanvasSelection{CanvasSelection::Edge{editor.flow().edges[0].id}});
    EXPECT_TRUE(editor.soonShows("inspector.edge"));
    editor.key(Qt::Key_Delete);
    EXPECT_TRUE(editor.flow().edges.empty());
    EXPECT_TRUE(editor.soonShows("inspector.flow"));
}

TEST(FlowCanvas, ARubberBandSelectsAndTheSelectionMovesAsOneUndoStep) {
    Editor editor;
    editor.drag(editor.canvas().toWidget({240, 260}), editor.canvas().toWidget({720, 400}),
                Qt::ShiftModifier);
    EXPECT_EQ(editor.canvas().selectedNodes(),
              (std::set<Uuid>{editor.nodeNamed("Branch"), editor.nodeNamed(".done")}));
    EXPECT_FALSE(*editor.workspace().canvasSelection);
    const std::size_t steps = editor.undoSteps();
    editor.drag(editor.centre("Branch"), editor.centre("Branch") + QPointF(33, 60));
    EXPECT_EQ(editor.position("Branch"), (CanvasPoint{373, 390}));
    EXPECT_EQ(editor.position(".done"), (CanvasPoint{633, 390}));
    EXPECT_EQ(editor.undoSteps(), steps + 1);
}

TEST(FlowCanvas, ControlClickAddsToTheSelectionAndTakesFromIt) {
    Editor editor;
    editor.clickAt(editor.centre("Desk"));
    editor.clickAt(editor.centre("Branch"), Qt::ControlModifier);
    EXPECT_EQ(editor.canvas().selectedNodes().size(), 2U);
    editor.clickAt(editor.centre("Desk"), Qt::ControlModifier);
    EXPECT_EQ(*editor.workspace().canvasSelection,
              CanvasSelection{CanvasSelection::Node{editor.nodeNamed("Branch")}});
    editor.clickAt(editor.canvas().toWidget({480, 240}));
    EXPECT_TRUE(editor.canvas().selectedNodes().empty());
}

TEST(FlowCanvas, CopiesAndPastesNodesWithTheConnectionsAmongThem) {
    Editor editor;
    editor.drag(editor.handle("Desk"), editor.centre(".done"));
    editor.clickAt(editor.centre("Desk"));
    editor.clickAt(editor.centre(".done"), Qt::ControlModifier);
    test::trigger(editor.window, "command.copy");
    const std::size_t steps = editor.undoSteps();
    editor.canvas().setFocus();
    editor.key(Qt::Key_C, Qt::ControlModifier);
    editor.key(Qt::Key_V, Qt::ControlModifier);
    ASSERT_EQ(editor.flow().nodes.size(), 8U);
    ASSERT_EQ(editor.flow().edges.size(), 2U);
    EXPECT_EQ(editor.flow().edges[1].fromNodeID, editor.flow().nodes[6].id);
    EXPECT_EQ(editor.flow().edges[1].toNodeID, editor.flow().nodes[7].id);
    EXPECT_EQ(editor.canvas().selectedNodes(),
              (std::set<Uuid>{editor.flow().nodes[6].id, editor.flow().nodes[7].id}));
    EXPECT_EQ(editor.undoSteps(), steps + 1);
}

TEST(FlowCanvas, PastesNothingOfWhatIsNotItsOwn) {
    Editor editor;
    auto* data = new QMimeData;
    data->setData(QStringLiteral("application/x-ombrel-flow-nodes"), "{\"nodes\":[{}]");
    QApplication::clipboard()->setMimeData(data);
    editor.key(Qt::Key_V, Qt::ControlModifier);
    QApplication::clipboard()->setText(QStringLiteral("some text"));
    editor.key(Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(editor.flow().nodes.size(), 6U);
}

TEST(FlowCanvas, TidyingUpLaysTheNodesOutAsOneUndoStep) {
    Editor editor;
    editor.drag(editor.handle("Start"), editor.centre("Desk"));
    const std::size_t steps = editor.undoSteps();
    click(editor.window, "canvas.tidy");
    editor.settle();
    const auto layout = flowLayout(editor.flow());
    for (std::size_t i = 0; i < layout.size(); ++i) {
        EXPECT_EQ(editor.flow().nodes[i].position, layout[i]);
    }
    EXPECT_EQ(editor.undoSteps(), steps + 1);
}

TEST(FlowCanvas, TheMenuOfANodeDeletesItExceptForStart) {
    Editor editor;
    QMenu& start = editor.menuAt(editor.centre("Start"));
    EXPECT_EQ(start.findChild<QAction*>(QStringLiteral("canvas.menu.delete")), nullptr);
    start.close();
    editor.studio.settle();
    QMenu& desk = editor.menuAt(editor.centre("Desk"));
    auto* remove = desk.findChild<QAction*>(QStringLiteral("canvas.menu.delete"));
    ASSERT_NE(remove, nullptr);
    EXPECT_EQ(remove->text(), QStringLiteral("Delete Node"));
    remove->trigger();
    desk.close();
    editor.settle();
    EXPECT_EQ(editor.flow().nodes.size(), 5U);
}

TEST(FlowCanvas, ReturnEditsABranchInTheInspectorAndOpensAnAgent) {
    Editor editor;
    editor.clickAt(editor.centre("Branch"));
    ASSERT_TRUE(editor.soonShows("inspector.branch.field"));
    editor.key(Qt::Key_Return);
    EXPECT_TRUE(find<QWidget>(editor.window, "inspector.branch.field").hasFocus());
    editor.clickAt(editor.centre("Desk"));
    editor.canvas().setFocus();
    pressKey(editor.canvas(), Qt::Key_Return);
    EXPECT_EQ(editor.workspace().selectedNavigatorItem(),
              NavigatorSelection{NavigatorSelection::Agent{editor.workspace().agents->at(1).id}});
}

TEST(FlowCanvas, TheMenuOfANodeConnectsItAndRemovesItsConnections) {
    Editor editor;
    editor.menuAt(editor.centre("Desk"));
    auto& targets = find<QMenu>(editor.canvas(), "canvas.menu.connect");
    Q_EMIT targets.aboutToShow();
    QStringList offered;
    for (const QAction* action : targets.actions()) {
        offered += action->text();
    }
    EXPECT_EQ(offered, (QStringList{QStringLiteral("Triage"), QStringLiteral("Branch"),
                                    QStringLiteral(".done"), QStringLiteral(".failed")}));
    targets.actions()[2]->trigger();
    find<QMenu>(editor.canvas(), "canvas.menu").close();
    editor.settle();
    ASSERT_EQ(editor.flow().edges.size(), 1U);
    EXPECT_EQ(editor.flow().edges[0].toNodeID, editor.nodeNamed(".done"));
    editor.menuAt(editor.centre("Desk"));
    auto& doomed = find<QMenu>(editor.canvas(), "canvas.menu.disconnect");
    ASSERT_EQ(doomed.actions().size(), 1);
    EXPECT_EQ(doomed.actions()[0]->text(), QStringLiteral(".done"));
    doomed.actions()[0]->trigger();
    find<QMenu>(editor.canvas(), "canvas.menu").close();
    editor.settle();
    EXPECT_TRUE(editor.flow().edges.empty());
}

TEST(FlowCanvas, AnEndOffersNoConnectionInItsMenu) {
    Editor editor;
    const QMenu& menu = editor.menuAt(editor.centre(".done"));
    EXPECT_EQ(menu.findChild<QMenu*>(QStringLiteral("canvas.menu.connect")), nullptr);
    EXPECT_EQ(menu.findChild<QMenu*>(QStringLiteral("canvas.menu.disconnect")), nullptr);
}

TEST(FlowCanvas, TheMenuOfAWireRemovesIt) {
    Editor editor;
    editor.drag(editor.handle("Start"), editor.centre("Triage"));
    const auto& wires = editor.canvas().scene().wires();
    ASSERT_EQ(wires.size(), 1U);
    QMenu& menu =
        editor.menuAt(editor.canvas().toWidget(editor.canvas().scene().curve(wires[0]).at(0.5)));
    auto& remove = find<QAction>(menu, "canvas.menu.remove");
    EXPECT_EQ(remove.text(), QStringLiteral("Remove Connection"));
    remove.trigger();
    menu.close();
    editor.settle();
    EXPECT_TRUE(editor.flow().edges.empty());
}

TEST(FlowCanvas, SeveralNodesAreDeletedAsOneUndoStepAndStartIsNotCounted) {
    Editor editor;
    editor.key(Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(editor.canvas().selectedNodes().size(), 6U);
    const std::size_t steps = editor.undoSteps();
    QMenu& menu = editor.menuAt(editor.centre("Desk"));
    auto& remove = find<QAction>(menu, "canvas.menu.delete");
    EXPECT_EQ(remove.text(), QStringLiteral("Delete 5 Nodes"));
    remove.trigger();
    menu.close();
    editor.settle();
    EXPECT_EQ(editor.flow().nodes.size(), 1U);
    EXPECT_EQ(editor.undoSteps(), steps + 1);
    editor.workspace().undoManager->undo();
    editor.settle();
    EXPECT_EQ(editor.flow().nodes.size(), 6U);
}

TEST(FlowCanvas, DuplicatesTheSelection) {
    Editor editor;
    editor.clickAt(editor.centre("Desk"));
    editor.key(Qt::Key_D, Qt::ControlModifier);
    ASSERT_EQ(editor.flow().nodes.size(), 7U);
    EXPECT_EQ(editor.flow().nodes[6].kind, editor.flow().node(editor.nodeNamed("Desk"))->kind);
    EXPECT_EQ(editor.canvas().selectedNodes(), std::set<Uuid>{editor.flow().nodes[6].id});
}

TEST(FlowCanvas, ATurnOfTheWheelAtTheLargestScaleMovesNothing) {
    Editor editor;
    editor.canvas().setCanvasView({3.0, {10, 20}});
    turnWheel(editor.canvas(), {200, 200}, {0, 240}, Qt::ControlModifier);
    EXPECT_EQ(editor.canvas().canvasView(), (CanvasView{3.0, {10, 20}}));
}

TEST(FlowCanvas, SelectsAndRevealsTheNodeOfAnIssue) {
    Editor editor;
    const Uuid desk = editor.nodeNamed("Desk");
    editor.workspace().moveFlowNode(desk, editor.flowID, 3000, 2500);
    editor.workspace().canvasSelection = CanvasSelection{CanvasSelection::Node{desk}};
    editor.settle();
    EXPECT_EQ(editor.canvas().selectedNodes(), std::set<Uuid>{desk});
    EXPECT_TRUE(QRectF(editor.canvas().rect()).contains(editor.centre("Desk")));
}

} // namespace
} // namespace ombrel

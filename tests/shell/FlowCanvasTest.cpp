#include "shell/flow/FlowCanvas.h"
#include "core/FlowPalette.h"
#include "core/UndoManager.h"
#include "flows/FlowLayout.h"
#include "flows/FlowValidator.h"
#include "flows/RunHighlight.h"
#include "shell/design/EmptyState.h"
#include "shell/design/Theme.h"
#include "shell/flow/CanvasMetrics.h"
#include "shell/flow/FlowEditor.h"
#include "shell/flow/FlowMinimap.h"
#include "shell/flow/FlowPalette.h"
#include "tests/flows/FlowSamples.h"
#include "tests/shell/Studio.h"

#include <QClipboard>
#include <QComboBox>
#include <QContextMenuEvent>
#include <QDialog>
#include <QHelpEvent>
#include <QImage>
#include <QMenu>
#include <QMimeData>
#include <QMouseEvent>
#include <QNativeGestureEvent>
#include <QPointingDevice>
#include <QScreen>
#include <QSpinBox>
#include <QToolButton>
#include <QToolTip>
#include <QWheelEvent>

namespace ombrel {
namespace {

using test::click;
using test::Drawing;
using test::find;
using test::isShown;
using test::pressKey;
using test::Studio;
using test::textOf;

// A window with a flow: Start, then Triage with the ports "refund" and "other", a Desk, a Branch
// and two Ends.
struct Editor {
    Editor() : Editor(Sample()) {}
    explicit Editor(const Drawing& drawing) : window(studio.newDocument()) {
        window.resize(1400, 900);
        workspace().agents = drawing.agents;
        workspace().tools = drawing.tools;
        workspace().flows = std::vector{drawing.flow};
        workspace().checkpoint();
        flowID = drawing.flow.id;
        workspace().setSelectedNavigatorItem({NavigatorSelection::Flow{flowID}});
        settle();
    }

    struct Sample : Drawing {
        Sample() {
            const auto place = [&](Uuid id, double x, double y) {
                for (FlowNode& node : flow.nodes) {
                    node.position = node.id == id ? CanvasPoint{x, y} : node.position;
                }
                return id;
            };
            triage = place(agent("Triage", test::enumeration({"refund", "other"})), 340, 160);
            desk = place(agent("Desk", test::object({test::property("age", PropertyKind::Int{})})),
                         600, 110);
            check = place(branch("age", WireBranchOperator::greaterThan, "12"), 340, 330);
            done = place(end("done"), 600, 330);
            failed = place(end("failed", false), 130, 330);
        }
        Uuid triage, desk, check, done, failed;
    };

    AppState& workspace() { return *window.document().state(); }
    const Flow& flow() { return *workspace().flow(flowID); }
    FlowCanvas& canvas() { return find<FlowCanvas>(window, "canvas"); }
    Uuid nodeNamed(const std::string& title) {
        for (const CanvasCard& card : canvas().scene().cards()) {
            if (fromQt(card.title) == title) {
                return card.id;
            }
        }
        throw std::runtime_error("no node " + title);
    }
    CanvasPoint position(const std::string& title) {
        return flow().node(nodeNamed(title))->position;
    }
    QPointF centre(const std::string& title) {
        const CanvasPoint at = position(title);
        return canvas().toWidget({at.x, at.y});
    }
    QPointF handle(const std::string& title) {
        const CanvasPoint at = position(title);
        return canvas().toWidget(canvas::outputHandle({at.x, at.y}));
    }

    // Whether the canvas shows what the workspace holds; views refresh at a pace of their own.
    bool isUpToDate() {
        const CanvasScene& scene = canvas().scene();
        const auto& selection = *workspace().canvasSelection;
        const bool selectsNode =
            selection && std::holds_alternative<CanvasSelection::Node>(selection->value);
        const auto& highlight = *workspace().flowRunHighlight;
        bool isSame = scene.cards().size() == flow().nodes.size() &&
                      scene.wires().size() == flow().edges.size() &&
                      scene.hasRun() == (highlight && highlight->flowID == flowID) &&
                      (!selectsNode || canvas().selectedNodes().size() == 1);
        for (std::size_t i = 0; isSame && i < flow().nodes.size(); ++i) {
            const CanvasPoint at = flow().nodes[i].position;
            isSame = scene.cards()[i].centre == QPointF(at.x, at.y);
        }
        return isSame;
    }
    bool soonShows(const char* name) {
        return studio.until([&] { return isShown(window, name); });
    }
    bool soonSays(const char* name, const std::string& text) {
        return studio.until([&] { return textOf(window, name) == text; });
    }

    void settle() {
        studio.settle();
        EXPECT_TRUE(studio.until([&] {
            return window.findChild<FlowCanvas*>(QStringLiteral("canvas")) && isUpToDate();
        }));
    }

    void mouse(QEvent::Type type, QPointF at, Qt::MouseButton button = Qt::LeftButton,
               Qt::KeyboardModifiers modifiers = {}) {
        const bool isHeld = type != QEvent::MouseButtonRelease;
        QMouseEvent event(type, at, canvas().mapToGlobal(at),
                          type == QEvent::MouseMove ? Qt::NoButton : button,
                          isHeld ? Qt::MouseButtons(button) : Qt::NoButton, modifiers);
        QCoreApplication::sendEvent(&canvas(), &event);
    }
    void press(QPointF at, Qt::KeyboardModifiers modifiers = {}) {
        mouse(QEvent::MouseButtonPress, at, Qt::LeftButton, modifiers);
    }
    void moveTo(QPointF at, Qt::KeyboardModifiers modifiers = {}) {
        mouse(QEvent::MouseMove, at, Qt::LeftButton, modifiers);
    }
    void release(QPointF at, Qt::KeyboardModifiers modifiers = {}) {
        mouse(QEvent::MouseButtonRelease, at, Qt::LeftButton, modifiers);
        settle();
    }
    void drag(QPointF from, QPointF to, Qt::KeyboardModifiers modifiers = {}) {
        press(from, modifiers);
        moveTo(from + (to - from) / 2, modifiers);
        moveTo(to, modifiers);
        release(to, modifiers);
    }
    void clickAt(QPointF at, Qt::KeyboardModifiers modifiers = {}) {
        press(at, modifiers);
        release(at, modifiers);
    }
    void key(int key, Qt::KeyboardModifiers modifiers = {}) {
        canvas().setFocus();
        pressKey(canvas(), key, modifiers);
        settle();
    }
    QMenu& menuAt(QPointF at) {
        QContextMenuEvent event(QContextMenuEvent::Mouse, at.toPoint(),
                                canvas().mapToGlobal(at.toPoint()));
        QCoreApplication::sendEvent(&canvas(), &event);
        studio.settle();
        return find<QMenu>(canvas(), "canvas.menu");
    }
    // What the title of a section says.
    std::string heading(const char* name) {
        return fromQt(find<QWidget>(window, name).findChild<QLabel*>()->text());
    }
    // What pointing at the place tells.
    QString tipAt(QPointF at) {
        QHelpEvent help(QEvent::ToolTip, at.toPoint(), {});
        QCoreApplication::sendEvent(&canvas(), &help);
        return QToolTip::text();
    }
    // Whether what is on the screen, drawn piece by piece, is what a whole drawing gives.
    bool looksAsDrawnAnew() {
        QCoreApplication::processEvents();
        const QPoint at = canvas().mapTo(&window, QPoint());
        const QImage pieces =
            window.screen()
                ->grabWindow(window.winId(), at.x(), at.y(), canvas().width(), canvas().height())
                .toImage();
        Q_EMIT Theme::current().changed();
        const QImage anew = canvas().grab().toImage();
        return pieces.convertToFormat(anew.format()) == anew;
    }
    // Replays what a run reports.
    void run(const std::vector<FlowTraceEvent>& events, std::optional<bool> succeeded) {
        FlowRunHighlight highlight(flow(), *workspace().agents, *workspace().tools);
        for (const FlowTraceEvent& event : events) {
            apply(highlight, event);
        }
        if (succeeded) {
            finish(highlight, *succeeded);
        }
        workspace().flowRunHighlight = highlight;
        settle();
    }
    std::size_t undoSteps() {
        studio.advance(std::chrono::milliseconds(500));
        return workspace().undoManager->count();
    }

    Studio studio;
    DocumentWindow& window;
    Uuid flowID;
};

FlowTraceEvent traced(const char* kind, const char* detail, std::optional<std::string> node = {}) {
    FlowTraceEvent event;
    event.kind = kind;
    event.detail = detail;
    event.node = std::move(node);
    return event;
}

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

TEST(FlowCanvas, AMapIsShownFromThirtyNodesOn) {
    Drawing drawing;
    for (int i = 0; i < 28; ++i) {
        drawing.end("e" + std::to_string(i));
        drawing.flow.nodes.back().position = palettePosition(static_cast<std::size_t>(i) + 1);
    }
    Editor editor(drawing);
    EXPECT_FALSE(isShown(editor.window, "canvas.minimap"));
    editor.canvas().addNode(paletteEnd());
    editor.settle();
    EXPECT_TRUE(editor.soonShows("canvas.minimap"));
    auto& map = find<FlowMinimap>(editor.window, "canvas.minimap");
    const QPointF at(map.width() / 2.0, map.height() - 14.0);
    QMouseEvent press(QEvent::MouseButtonPress, at, map.mapToGlobal(at), Qt::LeftButton,
                      Qt::LeftButton, {});
    QCoreApplication::sendEvent(&map, &press);
    EXPECT_LT(editor.canvas().canvasView().panOffset.height, 0);
}

TEST(FlowCanvas, ShowsThePathOfARunAndWhatEachNodeSaw) {
    Editor editor;
    editor.drag(editor.handle("Start"), editor.centre("Triage"));
    editor.drag(editor.handle("Triage"), editor.centre("Desk"));
    click(editor.window, "portChoice.port.0");
    editor.settle();
    std::vector events{traced("flowStarted", "hello"),
                       traced("nodeEntered", "input: hello", "Triage")};
    editor.run(events, std::nullopt);
    using State = FlowRunHighlight::NodeState;
    const auto state = [&](const char* title) {
        return editor.canvas().scene().card(editor.nodeNamed(title))->runState;
    };
    EXPECT_TRUE(editor.soonSays("canvas.banner.text", "Running · step 2"));
    EXPECT_EQ(state("Start"), State::visited);
    EXPECT_EQ(state("Triage"), State::active);
    EXPECT_EQ(state("Desk"), State::notReached);
    EXPECT_TRUE(editor.canvas().scene().wires()[0].isTaken);
    EXPECT_FALSE(editor.canvas().scene().wires()[1].isTaken);

    events.push_back(traced("outputReceived", "refund"));
    editor.run(events, true);
    EXPECT_TRUE(editor.soonSays("canvas.banner.text", "Run path · 2 steps"));
    EXPECT_EQ(state("Triage"), State::visited);
    const CanvasPoint triage = editor.position("Triage");
    editor.clickAt(editor.canvas().toWidget(canvas::bubbleRect({triage.x, triage.y}).topLeft() +
                                            QPointF(12, 10)));
    auto& popover = find<QWidget>(editor.canvas(), "runDetail");
    EXPECT_EQ(textOf(popover, "runDetail.title"), "Step 2");
    EXPECT_EQ(textOf(popover, "runDetail.label.0"), "Input");
    EXPECT_EQ(find<QPlainTextEdit>(popover, "runDetail.value.0").toPlainText(),
              QStringLiteral("hello"));
    EXPECT_EQ(textOf(popover, "runDetail.label.1"), "Output");
    popover.close();

    click(editor.window, "canvas.banner.clear");
    editor.settle();
    EXPECT_FALSE(*editor.workspace().flowRunHighlight);
    EXPECT_FALSE(isShown(editor.window, "canvas.banner"));
}

TEST(FlowCanvas, EscapeClearsThePathOfARun) {
    Editor editor;
    editor.run({traced("flowStarted", "hello")}, false);
    EXPECT_TRUE(editor.soonSays("canvas.banner.text", "Run failed at step 1"));
    editor.key(Qt::Key_Escape);
    EXPECT_FALSE(*editor.workspace().flowRunHighlight);
}

TEST(FlowCanvas, ARunOfAnotherFlowIsNotShown) {
    Editor editor;
    Flow other = editor.flow();
    other.id = Uuid::random();
    FlowRunHighlight highlight(other, {}, {});
    apply(highlight, traced("flowStarted", "hello"));
    editor.workspace().flowRunHighlight = highlight;
    editor.settle();
    EXPECT_FALSE(isShown(editor.window, "canvas.banner"));
    EXPECT_FALSE(editor.canvas().scene().hasRun());
}

TEST(FlowCanvas, ATraceThatNamesNothingInTheFlowShowsNothing) {
    Editor editor;
    editor.run({traced("nodeEntered", "x", "Nobody"), traced("toolCalled", "x", "nothing"),
                traced("unheardOf", "x")},
               false);
    EXPECT_TRUE(editor.soonSays("canvas.banner.text", "Run failed before the flow started"));
    editor.canvas().grab();
}

TEST(FlowCanvas, MarksTheNodesThatHaveIssuesByTheMostSevere) {
    Editor editor;
    const CanvasCard* desk = editor.canvas().scene().card(editor.nodeNamed("Desk"));
    ASSERT_TRUE(desk->mark);
    EXPECT_EQ(*desk->mark, FlowIssue::Severity::error);
    EXPECT_TRUE(desk->issues.contains(QStringLiteral("\"Desk\" isn't reachable from Start.")));
    EXPECT_TRUE(
        desk->issues.contains(QStringLiteral("\"Desk\" needs a connection to continue the flow.")));
    const CanvasCard* done = editor.canvas().scene().card(editor.nodeNamed(".done"));
    ASSERT_TRUE(done->mark);
    EXPECT_EQ(*done->mark, FlowIssue::Severity::warning);
    EXPECT_EQ(editor.tipAt(editor.canvas().toWidget(canvas::markRect(desk->centre).center())),
              desk->issues);
}

TEST(FlowCanvas, MarksTheAgentsThatDrawOnKnowledge) {
    Editor editor;
    auto agents = *editor.workspace().agents;
    agents[1].ragAttachments.push_back({});
    editor.workspace().agents = agents;
    editor.settle();
    const CanvasCard* desk = editor.canvas().scene().card(editor.nodeNamed("Desk"));
    ASSERT_TRUE(editor.studio.until([&] {
        desk = editor.canvas().scene().card(editor.nodeNamed("Desk"));
        return desk->drawsOnKnowledge;
    }));
    EXPECT_FALSE(editor.canvas().scene().card(editor.nodeNamed("Triage"))->drawsOnKnowledge);
    const QPointF mark = editor.canvas().toWidget(canvas::knowledgeRect(desk->centre).center());
    EXPECT_EQ(fromQt(editor.tipAt(mark)),
              "This agent draws on a RAG index — retrieved context is added to its prompt at run "
              "time.");
}

TEST(FlowCanvas, TellsNamesAsTheyAreAndNotAsHtml) {
    Editor editor;
    auto agents = *editor.workspace().agents;
    agents[1].name = "<b>Desk</b> & more";
    editor.workspace().agents = agents;
    ASSERT_TRUE(editor.studio.until([&] {
        return editor.canvas().scene().cards()[2].title == QStringLiteral("<b>Desk</b> & more");
    }));
    const QPointF at = editor.canvas().toWidget(editor.canvas().scene().cards()[2].centre);
    EXPECT_TRUE(editor.tipAt(at).contains(QStringLiteral("&lt;b&gt;Desk&lt;/b&gt; &amp; more")));
    const QMenu& menu = find<QMenu>(editor.window, "canvas.add.agent.menu");
    EXPECT_EQ(menu.actions()[1]->text(), QStringLiteral("<b>Desk</b> && more"));
}

TEST(FlowCanvas, ANameWithoutEndKeepsItsPlace) {
    Editor editor;
    auto agents = *editor.workspace().agents;
    agents[0].name = std::string(20'000, 'x');
    agents[0].output = test::enumeration({std::string(5'000, 'p'), "other"});
    editor.workspace().agents = agents;
    editor.settle();
    ASSERT_TRUE(editor.studio.until(
        [&] { return editor.canvas().scene().cards()[1].title.size() == 20'000; }));
    editor.canvas().grab();
    const QPointF at = editor.canvas().toWidget(editor.canvas().scene().cards()[1].centre);
    EXPECT_LT(editor.tipAt(at).size(), 3000);
    editor.clickAt(at);
    ASSERT_TRUE(editor.soonShows("inspector.node.name"));
    EXPECT_LE(find<QWidget>(editor.window, "inspector.node").minimumSizeHint().width(), 320);
    editor.drag(
        editor.canvas().toWidget(canvas::outputHandle(editor.canvas().scene().cards()[1].centre)),
        editor.centre(".done"));
    auto& dialog = find<QDialog>(editor.window, "portChoice");
    EXPECT_LE(dialog.minimumSizeHint().width(), 800);
    click(editor.window, "portChoice.port.0");
    editor.settle();
    ASSERT_EQ(editor.flow().edges.size(), 1U);
    EXPECT_EQ(editor.flow().edges[0].fromPort, std::string(5'000, 'p'));
    ASSERT_TRUE(editor.soonShows("connection.0.port"));
    EXPECT_LE(find<QWidget>(editor.window, "inspector.node").minimumSizeHint().width(), 320);
    editor.canvas().grab();
}

TEST(FlowCanvas, WhatIsDrawnPieceByPieceIsTheWholeDrawing) {
    Editor editor;
    editor.drag(editor.handle("Start"), editor.centre("Triage"));
    editor.drag(editor.handle("Triage"), editor.centre("Desk"));
    click(editor.window, "portChoice.port.0");
    editor.settle();
    EXPECT_TRUE(editor.looksAsDrawnAnew()) << "connected";
    FlowCanvas& canvas = editor.canvas();
    for (const auto& [dx, dy] : {std::pair(13, 7), std::pair(-40, 3), std::pair(5, -60)}) {
        canvas.setCanvasView(canvas.canvasView().panned(dx, dy));
        canvas.grab();
    }
    EXPECT_TRUE(editor.looksAsDrawnAnew()) << "panned";
    editor.moveTo(editor.centre("Desk"));
    editor.mouse(QEvent::MouseMove, editor.centre(".done"), Qt::NoButton);
    canvas.grab();
    EXPECT_TRUE(editor.looksAsDrawnAnew()) << "hovered";
    editor.clickAt(editor.centre("Branch"));
    EXPECT_TRUE(editor.looksAsDrawnAnew()) << "selected";
    editor.clickAt(canvas.toWidget(canvas.scene().curve(canvas.scene().wires()[1]).at(0.5)));
    EXPECT_TRUE(editor.looksAsDrawnAnew()) << "a wire selected";
    const QPointF desk = editor.centre("Desk");
    editor.press(desk);
    for (const QPointF by : {QPointF(20, 9), QPointF(70, 120), QPointF(-120, 219)}) {
        editor.moveTo(desk + by);
        canvas.grab();
        EXPECT_TRUE(editor.looksAsDrawnAnew()) << "moved";
    }
    editor.key(Qt::Key_Escape);
    EXPECT_TRUE(editor.looksAsDrawnAnew()) << "put back";
    editor.release(desk);
    const QPointF handle = editor.handle("Branch");
    editor.press(handle);
    editor.moveTo(handle + QPointF(60, -40));
    canvas.grab();
    editor.moveTo(editor.centre(".done"));
    EXPECT_TRUE(editor.looksAsDrawnAnew()) << "over a target";
    editor.moveTo(handle + QPointF(20, 60));
    EXPECT_TRUE(editor.looksAsDrawnAnew()) << "beside it";
    editor.release(handle + QPointF(20, 60));
    EXPECT_TRUE(editor.looksAsDrawnAnew()) << "let go";
}

TEST(FlowCanvas, APanMovesThePictureByWholePixelsOfAnyDisplay) {
    Editor editor;
    editor.drag(editor.handle("Start"), editor.centre("Triage"));
    const CanvasScene& scene = editor.canvas().scene();
    CanvasPainter painter;
    const auto picture = [&](CanvasLayer& layer, const CanvasView& view, double ratio) {
        const CanvasPlace place = CanvasPlace::of(view, ratio);
        const auto draw = [&](QPainter& on, const QRect& part) {
            painter.draw(on, scene, place, {}, part);
        };
        return layer.picture({700, 500}, place, draw).toImage();
    };
    for (const double ratio : {1.0, 1.25, 1.5, 2.0}) {
        CanvasLayer layer;
        for (const CanvasView& view :
             {CanvasView{0.75, {}}, CanvasView{0.75, {-33, 11}}, CanvasView{0.75, {-33.3, 40.7}},
              CanvasView{0.75, {900, 40.7}}, CanvasView{1.25, {5, 5}}, CanvasView{1.25, {4, -7}}}) {
            CanvasLayer anew;
            EXPECT_EQ(picture(layer, view, ratio), picture(anew, view, ratio)) << ratio;
        }
    }
}

TEST(FlowCanvas, ShowsThatTheKeyboardIsThereWhereNothingIsSelected) {
    Editor editor;
    const QImage without = editor.canvas().grab().toImage();
    editor.canvas().setFocus(Qt::TabFocusReason);
    EXPECT_NE(editor.canvas().grab().toImage(), without);
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

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

FlowTraceEvent traced(const char* kind, const char* detail, std::optional<std::string> node = {}) {
    FlowTraceEvent event;
    event.kind = kind;
    event.detail = detail;
    event.node = std::move(node);
    return event;
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

} // namespace
} // namespace ombrel

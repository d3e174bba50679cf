// Frames a second while a flow of 1,000 nodes and 1,200 connections is panned and zoomed in a
// window of 1280 by 800, drawn by the processor.
//
//   CanvasBench ours|peer WORK FRAMES
//
// The works: "pan", "panfar" (at a quarter of the size), "zoom" (to and fro between a quarter and
// full size), "move" (dragging a node), "moveall" (dragging all of them). The peer is a
// QGraphicsView whose scene holds Qt's own items for the same drawing: a rounded rectangle and two
// texts a node, a curve a connection.
// Prints the median and the 99th percentile of the time of a frame in ms, as JSON, and the same of
// the processor's time, which other programs don't lengthen.
#include "core/AppState.h"
#include "shell/flow/CanvasMetrics.h"
#include "shell/flow/FlowCanvas.h"
#include "shell/flow/WireCurve.h"
#include "tests/support/TestPlatform.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QGraphicsPathItem>
#include <QGraphicsScene>
#include <QGraphicsView>
#include <QMouseEvent>
#include <QScrollBar>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace ombrel {
namespace {

constexpr int nodeCount = 1000;
constexpr int edgeCount = 1200;
constexpr int columns = 40;
const QSize windowSize(1280, 800);

// Agents, branches and ends in rows, each connected to a neighbour further on.
std::shared_ptr<AppState> drawing(const Platform& platform) {
    auto state = AppState::make(platform);
    std::vector<Agent> agents;
    for (int i = 0; i < 20; ++i) {
        agents.push_back(newAgent("Support agent " + std::to_string(i)));
    }
    Flow flow("Large");
    for (int i = 1; i < nodeCount; ++i) {
        FlowNodeKind kind{FlowNodeKind::Agent{agents[static_cast<std::size_t>(i % 20)].id}};
        if (i % 4 == 1) {
            kind = {FlowNodeKind::Branch{"field" + std::to_string(i), WireBranchOperator::equals,
                                         std::to_string(i)}};
        } else if (i % 9 == 2) {
            kind = {FlowNodeKind::End{"case" + std::to_string(i), true}};
        }
        flow.nodes.push_back(
            {Uuid::random(), kind, {80.0 + i % columns * 220, 160.0 + i / columns * 150.0}});
    }
    for (int i = 0; i < edgeCount; ++i) {
        const auto from = static_cast<std::size_t>(i % (nodeCount - 1));
        const std::size_t to =
            std::min<std::size_t>(nodeCount - 1, i < nodeCount ? from + 1 : from + columns + 1);
        const bool isBranch = flow.nodes[from].kind.value.index() == 2;
        flow.edges.push_back(
            {Uuid::random(), flow.nodes[from].id,
             isBranch ? std::optional<std::string>(i < nodeCount ? "true" : "false") : std::nullopt,
             flow.nodes[to].id});
    }
    state->agents = std::move(agents);
    state->flows = std::vector{std::move(flow)};
    return state;
}

// Draws now all that has changed.
void frame() {
    QCoreApplication::sendPostedEvents();
    QCoreApplication::processEvents(QEventLoop::AllEvents);
}

void report(const char* prefix, std::vector<double> times) {
    std::ranges::sort(times);
    std::printf("\"%smedian\": %.4f, \"%sp99\": %.4f", prefix, times[times.size() / 2], prefix,
                times[times.size() * 99 / 100]);
}

double processorTime() { // of this program, in ms
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

void measure(int frames, const std::function<void(int)>& step) {
    std::vector<double> times;
    std::vector<double> processorTimes;
    for (int i = 0; i < frames; ++i) {
        QElapsedTimer watch;
        watch.start();
        const double before = processorTime();
        step(i);
        frame();
        processorTimes.push_back(processorTime() - before);
        times.push_back(static_cast<double>(watch.nsecsElapsed()) / 1e6);
    }
    std::printf("{");
    report("", std::move(times));
    std::printf(", ");
    report("cpu_", std::move(processorTimes));
    std::printf("}\n");
}

double zoomOf(int i) {
    return 0.625 + 0.375 * std::cos(i * 0.05);
}

void measureOurs(std::string_view work, int frames, const std::shared_ptr<AppState>& state) {
    FlowCanvas canvas(state, state->flows->front().id);
    canvas.resize(windowSize);
    canvas.show();
    while (canvas.scene().cards().empty()) {
        frame();
    }
    if (work == "zoom") {
        measure(frames, [&](int i) {
            const double factor = zoomOf(i) / canvas.canvasView().zoomScale;
            canvas.setCanvasView(canvas.canvasView().zoomedAt(factor, {640, 400}));
        });
        return;
    }
    if (work == "move" || work == "moveall") {
        if (work == "moveall") {
            canvas.selectAll();
            frame();
        }
        const QPointF at = canvas.toWidget({80 + 2 * 220.0, 160 + 150.0 * 2});
        const auto send = [&](QEvent::Type type, QPointF to) {
            QMouseEvent event(type, to, canvas.mapToGlobal(to), Qt::LeftButton, Qt::LeftButton, {});
            QCoreApplication::sendEvent(&canvas, &event);
        };
        send(QEvent::MouseButtonPress, at);
        measure(frames,
                [&](int i) { send(QEvent::MouseMove, at + QPointF(20 + i % 200, 20 + i % 150)); });
        return;
    }
    const double scale = work == "panfar" ? 0.25 : 1;
    canvas.setCanvasView({scale, {-400, -600 * scale}});
    measure(frames, [&](int i) {
        canvas.setCanvasView(canvas.canvasView().panned(i / 100 % 2 == 0 ? -7 : 7, -3 + i % 2 * 5));
    });
}

// Qt's own items for the same drawing.
void fillPeer(QGraphicsScene& scene, const Flow& flow, std::vector<QGraphicsRectItem*>& cards) {
    std::map<Uuid, QPointF> centres;
    for (const FlowNode& node : flow.nodes) {
        centres[node.id] = {node.position.x, node.position.y};
    }
    for (const FlowEdge& edge : flow.edges) {
        scene.addPath(WireCurve(canvas::outputHandle(centres[edge.fromNodeID]),
                                canvas::inputHandle(centres[edge.toNodeID]))
                          .path(),
                      QPen(Qt::gray, 2));
    }
    for (const FlowNode& node : flow.nodes) {
        auto* card = scene.addRect(canvas::cardRect({}), QPen(Qt::gray, 1), QBrush(Qt::white));
        card->setPos(node.position.x, node.position.y);
        auto* title = new QGraphicsSimpleTextItem(QStringLiteral("Support agent"), card);
        title->setPos(-28, -20);
        auto* subtitle = new QGraphicsSimpleTextItem(QStringLiteral("field = value"), card);
        subtitle->setPos(-28, 2);
        cards.push_back(card);
    }
}

void measurePeer(std::string_view work, int frames, const std::shared_ptr<AppState>& state) {
    QGraphicsScene scene;
    std::vector<QGraphicsRectItem*> cards;
    fillPeer(scene, state->flows->front(), cards);
    QGraphicsView view(&scene);
    view.setRenderHint(QPainter::Antialiasing);
    view.setTransformationAnchor(QGraphicsView::NoAnchor);
    view.resize(windowSize);
    view.show();
    for (int i = 0; i < 20; ++i) {
        frame();
    }
    if (work == "zoom") {
        measure(frames, [&](int i) {
            view.setTransform(QTransform::fromScale(zoomOf(i), zoomOf(i)));
            view.centerOn(2500, 1500);
        });
        return;
    }
    if (work == "move" || work == "moveall") {
        view.centerOn(cards[82]->pos());
        const std::vector moved =
            work == "move" ? std::vector<QGraphicsRectItem*>{cards[82]} : cards;
        std::vector<QPointF> from;
        for (const QGraphicsRectItem* card : moved) {
            from.push_back(card->pos());
        }
        measure(frames, [&](int i) {
            for (std::size_t card = 0; card < moved.size(); ++card) {
                moved[card]->setPos(from[card] + QPointF(20 + i % 200, 20 + i % 150));
            }
        });
        return;
    }
    const double scale = work == "panfar" ? 0.25 : 1;
    view.setTransform(QTransform::fromScale(scale, scale));
    view.centerOn(1800, 1200);
    measure(frames, [&](int i) {
        QScrollBar* across = view.horizontalScrollBar();
        QScrollBar* down = view.verticalScrollBar();
        across->setValue(across->value() + (i / 100 % 2 == 0 ? 7 : -7));
        down->setValue(down->value() + 3 - i % 2 * 5);
    });
}

int run(int argc, char** argv) {
    if (argc != 4) {
        std::fprintf(stderr, "usage: CanvasBench ours|peer WORK FRAMES\n");
        return 2;
    }
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    const test::TestPlatform platform = test::makeTestPlatform();
    const auto state = drawing(platform.platform);
    const int frames = std::stoi(argv[3]);
    if (std::string_view(argv[1]) == "ours") {
        measureOurs(argv[2], frames, state);
    } else {
        measurePeer(argv[2], frames, state);
    }
    return 0;
}

} // namespace
} // namespace ombrel

int main(int argc, char** argv) {
    return ombrel::run(argc, argv);
}

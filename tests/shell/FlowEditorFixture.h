#pragma once

#include "core/FlowPalette.h"
#include "core/UndoManager.h"
#include "flows/FlowLayout.h"
#include "flows/FlowValidator.h"
#include "flows/RunHighlight.h"
#include "shell/design/EmptyState.h"
#include "shell/design/Theme.h"
#include "shell/flow/CanvasMetrics.h"
#include "shell/flow/FlowCanvas.h"
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

namespace ombrel::test {

// A window with a flow: Start, then Triage with the ports "refund" and "other", a Desk, a Branch
// and two Ends.
struct FlowEditorFixture {
    FlowEditorFixture() : FlowEditorFixture(Sample()) {}
    explicit FlowEditorFixture(const Drawing& drawing) : window(studio.newDocument()) {
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
            triage = place(agent("Triage", enumeration({"refund", "other"})), 340, 160);
            desk = place(agent("Desk", object({property("age", PropertyKind::Int{})})), 600, 110);
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

} // namespace ombrel::test

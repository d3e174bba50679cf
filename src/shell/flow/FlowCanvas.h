#pragma once

#include "core/CanvasSelection.h"
#include "flows/CanvasMove.h"
#include "flows/CanvasView.h"
#include "shell/StateView.h"
#include "shell/flow/CanvasHoverTracker.h"
#include "shell/flow/CanvasLayer.h"
#include "shell/flow/CanvasPainter.h"
#include "shell/flow/CanvasScene.h"
#include "shell/flow/ConnectionDrag.h"
#include "shell/flow/PendingPortChoice.h"

#include <QTimer>

#include <memory>
#include <optional>
#include <set>
#include <vector>

class QHelpEvent;
class QMenu;

namespace ombrel {

class CanvasControls;
class FlowMinimap;
class FlowPalette;
class RunBanner;
struct FlowFragment;

// The drawing of a flow: its nodes are placed, moved and wired here, and it shows the path of a
// run. A selection of one node or wire is the workspace's; one of several nodes is the canvas's
// own, and then the workspace has none.
class FlowCanvas final : public StateView {
    Q_OBJECT

  public:
    FlowCanvas(std::shared_ptr<AppState> state, Uuid flowID, QWidget* parent = nullptr);
    ~FlowCanvas() override;

    const CanvasScene& scene() const { return m_scene; }
    const CanvasView& canvasView() const { return m_view; }
    void setCanvasView(const CanvasView& view);
    const std::set<Uuid>& selectedNodes() const { return m_selectedNodes; }
    const std::optional<PendingPortChoice>& pendingPortChoice() const { return m_portChoice; }

    // Between the widget's coordinates and the canvas's.
    QPointF toWidget(QPointF onCanvas) const;
    QPointF toCanvas(QPointF inWidget) const;

    void zoomIn();
    void zoomOut();
    void resetView();
    void fitView();
    void tidyUp();
    void addNode(const FlowNodeKind& kind);
    // What happens when a wire from one node is dropped on another.
    void connectNodes(Uuid fromNodeID, Uuid toNodeID);
    void showRunDetail(Uuid nodeID);
    void deleteSelection();
    void duplicateSelection();

  public Q_SLOTS:
    // The commands of the Edit menu.
    void cut();
    void copy();
    void paste();
    void selectAll();

  Q_SIGNALS:
    // The user wants to see the agent or tool of a node.
    void shown(const ombrel::FlowNodeKind& kind);
    // The user wants to edit what is selected.
    void inspected();

  protected:
    void refresh() override;
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    bool focusNextPrevChild(bool next) override;
    QSize minimumSizeHint() const override { return {280, 200}; }
    QSize sizeHint() const override { return {900, 560}; }

  private:
    enum class Gesture { none, press, pan, move, connect, rubberBand };
    struct Hit {
        const CanvasCard* handle = nullptr; // the card whose output handle is there
        const CanvasCard* bubble = nullptr;
        const CanvasCard* card = nullptr;
        const CanvasWire* wire = nullptr;
    };

    const Flow* flow() const { return state().flow(m_flowID); }
    const FlowNode* node(Uuid id) const;
    Hit hitAt(QPointF inWidget) const;
    QRect widgetRect(const QRectF& onCanvas) const;
    CanvasSize room() const;

    void select(std::set<Uuid> nodes);
    void selectWire(Uuid edgeID);
    void followSelection();
    void reveal(Uuid nodeID);
    void selectAndReveal(const std::vector<Uuid>& nodeIDs);
    void choosePort(const PendingPortChoice& choice);

    void followPointer(QPointF at, Qt::KeyboardModifiers modifiers);
    void beginMove();
    void dragMove(QPointF at, bool mayAlign);
    void endMove();
    bool canLeave(Uuid nodeID) const; // it has an output
    void dragConnection(QPointF at);
    void endConnection();
    void cancelGesture();
    void updateHover(QPointF inWidget);
    void showTip(const QHelpEvent& event);
    bool handlePinch(QEvent* event);
    void moveSelection(double dx, double dy);
    bool pressArrow(int key, Qt::KeyboardModifiers modifiers);
    void activate(const CanvasCard& card);
    void escape();
    void fillNodeMenu(QMenu& menu, const CanvasCard& card);
    void fillCanvasMenu(QMenu& menu);
    void insert(const FlowFragment& fragment, double offset);

    // The drawing has changed: all of it, a part, or a card or wire.
    void redraw();
    void redraw(const QRectF& onCanvas);
    void redrawCard(const std::optional<Uuid>& nodeID);
    void redrawWire(const std::optional<Uuid>& edgeID);
    void redrawSelection();
    // Only what lies above the drawing has changed, all of it or a part.
    void updateOverlay();
    void updateOverlay(const QRectF& onCanvas);
    // Redraws the nodes that are being moved, and their wires.
    void redrawMoved();
    void placeOverlays();
    void updatePulse();

    Uuid m_flowID;
    CanvasScene m_scene;
    CanvasPainter m_painter;
    CanvasLayer m_layer;
    CanvasPainter::Marks m_marks;
    CanvasPainter::Overlay m_overlay;
    CanvasView m_view;
    std::shared_ptr<CanvasHoverTracker> m_hover = std::make_shared<CanvasHoverTracker>();

    bool m_showsFocus = false; // it came by the keyboard
    std::set<Uuid> m_selectedNodes;
    std::optional<CanvasSelection> m_followedSelection; // of the workspace, when last looked at

    Gesture m_gesture = Gesture::none;
    QPointF m_pressedAt; // in the widget, where it is seen now
    QPointF m_lastAt;
    std::optional<Uuid> m_pressedBubble;
    bool m_pressedEmpty = false;
    std::optional<Uuid> m_draggingNodeID; // the one under the pointer
    CanvasMove m_dragging;
    std::vector<FlowNode> m_alignTo;
    std::optional<ConnectionDrag> m_connection;
    std::optional<PendingPortChoice> m_portChoice;
    std::set<Uuid> m_selectedBefore; // when a rubber band began
    int m_pasteCount = 0;

    FlowPalette* m_palette;
    CanvasControls* m_controls;
    RunBanner* m_banner;
    FlowMinimap* m_minimap;
    QWidget* m_hint;
    QTimer m_pulse;
};

} // namespace ombrel

#include "shell/flow/FlowCanvas.h"

#include "core/FlowPorts.h"
#include "flows/FlowEditorTexts.h"
#include "flows/RunHighlight.h"
#include "shell/QtText.h"
#include "shell/design/LongText.h"
#include "shell/flow/CanvasMetrics.h"
#include "shell/flow/PortChoiceDialog.h"
#include "shell/flow/RunDetailPopover.h"

#include <QGestureEvent>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QNativeGestureEvent>
#include <QPinchGesture>
#include <QToolTip>

#include <algorithm>
#include <cmath>
#include <utility>

namespace ombrel {

namespace {

constexpr double dragDistance = 3; // of the pointer, before a press becomes a drag
constexpr double wireReach = 7;    // of a click beside a wire
constexpr double guideReach = 5;   // of a node beside a guide
constexpr double wheelStep = 48;   // of a notch of the wheel

CanvasPoint canvasPoint(QPointF point) {
    return {point.x(), point.y()};
}

} // namespace

FlowCanvas::Hit FlowCanvas::hitAt(QPointF inWidget) const {
    Hit hit;
    const QPointF at = toCanvas(inWidget);
    const double scale = m_view.zoomScale;
    // Handles stay large enough to be caught where everything is small.
    const double handleReach = std::max(canvas::handleRadius + 4, std::min(9 / scale, 22.0));
    const auto& cards = m_scene.cards();
    for (auto card = cards.rbegin(); card != cards.rend(); ++card) {
        const QPointF centre = m_scene.centre(*card);
        if (QLineF(at, canvas::outputHandle(centre)).length() <= handleReach) {
            hit.handle = &*card;
            hit.card = &*card;
            return hit;
        }
        if (canvas::cardRect(centre).contains(at)) {
            hit.card = &*card;
            return hit;
        }
    }
    for (auto card = cards.rbegin(); card != cards.rend(); ++card) {
        if (card->step > 0 && canvas::bubbleRect(m_scene.centre(*card)).contains(at)) {
            hit.bubble = &*card;
            return hit;
        }
    }
    hit.wire = m_scene.wireAt(at, wireReach / scale);
    return hit;
}

void FlowCanvas::mousePressEvent(QMouseEvent* event) {
    cancelGesture();
    if (std::exchange(m_showsFocus, false)) {
        updateOverlay();
    }
    m_pressedAt = event->position();
    m_lastAt = m_pressedAt;
    m_pressedEmpty = false;
    m_pressedBubble.reset();
    if (event->button() == Qt::MiddleButton) {
        m_gesture = Gesture::pan;
        setCursor(Qt::ClosedHandCursor);
        return;
    }
    if (event->button() != Qt::LeftButton) {
        return;
    }
    const Hit hit = hitAt(m_pressedAt);
    const bool adds = event->modifiers().testFlag(Qt::ControlModifier);
    if (hit.handle && !adds) {
        m_gesture = Gesture::connect;
        const QPointF start = canvas::outputHandle(m_scene.centre(*hit.handle));
        m_connection = ConnectionDrag{hit.handle->id, start, start};
        return;
    }
    m_gesture = Gesture::press;
    if (hit.card) {
        if (adds) {
            auto nodes = m_selectedNodes;
            if (!nodes.erase(hit.card->id)) {
                nodes.insert(hit.card->id);
            }
            select(std::move(nodes));
        } else if (!m_selectedNodes.contains(hit.card->id)) {
            select({hit.card->id});
        }
        if (m_selectedNodes.contains(hit.card->id)) {
            m_draggingNodeID = hit.card->id;
        }
    } else if (hit.bubble) {
        m_pressedBubble = hit.bubble->id;
    } else if (hit.wire) {
        selectWire(hit.wire->id);
    } else if (event->modifiers().testFlag(Qt::ShiftModifier) || adds) {
        m_gesture = Gesture::rubberBand;
        m_selectedBefore = m_selectedNodes;
    } else {
        m_pressedEmpty = true;
    }
}

void FlowCanvas::mouseMoveEvent(QMouseEvent* event) {
    const QPointF at = event->position();
    m_hover->location = at;
    if (m_gesture == Gesture::none) {
        updateHover(at);
        return;
    }
    if (m_gesture == Gesture::press && QLineF(at, m_pressedAt).length() >= dragDistance) {
        if (m_draggingNodeID) {
            beginMove();
        } else {
            m_gesture = Gesture::pan;
            setCursor(Qt::ClosedHandCursor);
        }
    }
    if (m_gesture == Gesture::pan) {
        setCanvasView(m_view.panned(at.x() - m_lastAt.x(), at.y() - m_lastAt.y()));
    } else {
        followPointer(at, event->modifiers());
    }
    m_lastAt = at;
}

void FlowCanvas::followPointer(QPointF at, Qt::KeyboardModifiers modifiers) {
    switch (m_gesture) {
    case Gesture::move:
        dragMove(at, !modifiers.testFlag(Qt::AltModifier));
        break;
    case Gesture::connect:
        dragConnection(at);
        break;
    case Gesture::rubberBand: {
        const QRectF before = m_overlay.rubberBand.value_or(QRectF());
        m_overlay.rubberBand = QRectF(toCanvas(m_pressedAt), toCanvas(at)).normalized();
        updateOverlay(before | *m_overlay.rubberBand);
        std::set<Uuid> nodes = m_selectedBefore;
        for (const CanvasCard& card : m_scene.cards()) {
            if (m_overlay.rubberBand->intersects(canvas::cardRect(card.centre))) {
                nodes.insert(card.id);
            }
        }
        select(std::move(nodes));
        break;
    }
    case Gesture::press:
    case Gesture::pan:
    case Gesture::none:
        break;
    }
}

void FlowCanvas::mouseReleaseEvent(QMouseEvent* event) {
    const Gesture gesture = std::exchange(m_gesture, Gesture::none);
    const QPointF at = event->position();
    switch (gesture) {
    case Gesture::move:
        endMove();
        break;
    case Gesture::connect:
        dragConnection(at);
        endConnection();
        break;
    case Gesture::press:
        if (m_pressedBubble) {
            showRunDetail(*m_pressedBubble);
        } else if (m_pressedEmpty) {
            select({});
        } else if (m_draggingNodeID && m_selectedNodes.size() > 1 &&
                   !event->modifiers().testFlag(Qt::ControlModifier)) {
            select({*m_draggingNodeID});
        }
        break;
    case Gesture::rubberBand:
        if (QLineF(at, m_pressedAt).length() < dragDistance) {
            select(m_selectedBefore);
        }
        break;
    case Gesture::pan:
    case Gesture::none:
        break;
    }
    cancelGesture();
    updateHover(at);
}

void FlowCanvas::cancelGesture() {
    m_gesture = Gesture::none;
    m_draggingNodeID.reset();
    redrawMoved();
    m_dragging.translation = {};
    m_scene.setMove({});
    redrawMoved(); // where they are put back
    m_dragging = {};
    m_alignTo.clear();
    m_connection.reset();
    redrawCard(std::exchange(m_marks.targetNode, std::nullopt));
    m_overlay.pulledWire.reset();
    m_overlay.rubberBand.reset();
    m_overlay.guideX.reset();
    m_overlay.guideY.reset();
    unsetCursor();
    updateOverlay();
}

void FlowCanvas::beginMove() {
    m_gesture = Gesture::move;
    m_dragging = {m_selectedNodes, {}};
    m_alignTo.clear();
    if (const Flow* shownFlow = flow()) {
        const QRectF seen(toCanvas({}), toCanvas({width() * 1.0, height() * 1.0}));
        for (const FlowNode& candidate : shownFlow->nodes) {
            if (candidate.id == m_draggingNodeID ||
                seen.contains(candidate.position.x, candidate.position.y)) {
                m_alignTo.push_back(candidate);
            }
        }
    }
}

void FlowCanvas::dragMove(QPointF at, bool mayAlign) {
    const QPointF moved = (at - m_pressedAt) / m_view.zoomScale;
    redrawMoved();
    m_dragging.translation = {moved.x(), moved.y()};
    const auto guidesBefore = std::pair(m_overlay.guideX, m_overlay.guideY);
    m_overlay.guideX.reset();
    m_overlay.guideY.reset();
    if (mayAlign && m_draggingNodeID) {
        const AlignmentGuides guides =
            alignedMove(m_alignTo, *m_draggingNodeID, m_dragging, guideReach / m_view.zoomScale);
        m_dragging.translation = guides.translation;
        m_overlay.guideX = guides.x;
        m_overlay.guideY = guides.y;
    }
    m_scene.setMove(m_dragging);
    redrawMoved();
    if (guidesBefore != std::pair(m_overlay.guideX, m_overlay.guideY)) {
        updateOverlay();
    }
}

void FlowCanvas::redrawMoved() {
    constexpr std::size_t many = 32; // rather all at once than so many pieces
    if (m_dragging.nodes.size() > many) {
        redraw();
        return;
    }
    for (const Uuid id : m_dragging.nodes) {
        redrawCard(id);
    }
    const auto isMoved = [&](std::size_t place) {
        return m_dragging.nodes.contains(m_scene.cards()[place].id);
    };
    for (const CanvasWire& wire : m_scene.wires()) {
        if (isMoved(wire.from) || isMoved(wire.to)) {
            redraw(m_scene.reach(wire));
        }
    }
}

void FlowCanvas::endMove() {
    const CanvasMove move = std::exchange(m_dragging, {});
    if (move.translation == CanvasSize{}) {
        return;
    }
    for (const Uuid id : move.nodes) {
        if (const FlowNode* moved = node(id)) {
            const CanvasPoint to = move.livePosition(*moved);
            state().moveFlowNode(id, m_flowID, to.x, to.y);
        }
    }
    refresh();
}

bool FlowCanvas::canLeave(Uuid nodeID) const {
    const FlowNode* from = node(nodeID);
    return from && !outputPorts(*from, *state().agents).empty();
}

void FlowCanvas::dragConnection(QPointF at) {
    const Flow* shownFlow = flow();
    if (!m_connection || !shownFlow) {
        return;
    }
    m_connection->current = toCanvas(at);
    const bool canConnect = canLeave(m_connection->fromNodeID);
    const std::optional<Uuid> target =
        canConnect ? connectionTarget(shownFlow->nodes, m_connection->fromNodeID,
                                      canvasPoint(m_connection->current), m_dragging)
                   : std::nullopt;
    if (target != m_marks.targetNode) {
        redrawCard(std::exchange(m_marks.targetNode, target));
        redrawCard(target);
    }
    const auto reach = [this] {
        constexpr double margin = 10;
        const auto& pulled = m_overlay.pulledWire;
        return pulled ? WireCurve(pulled->from, pulled->to)
                            .bounds()
                            .adjusted(-margin, -margin, margin, margin)
                      : QRectF();
    };
    updateOverlay(reach());
    m_overlay.pulledWire =
        CanvasPainter::Overlay::Pulled{m_connection->start, m_connection->current, canConnect};
    updateOverlay(reach());
    setCursor(canConnect ? Qt::CrossCursor : Qt::ForbiddenCursor);
}

void FlowCanvas::endConnection() {
    const Flow* shownFlow = flow();
    const auto connection = std::exchange(m_connection, std::nullopt);
    if (!connection || !shownFlow) {
        return;
    }
    const auto target = connectionTarget(shownFlow->nodes, connection->fromNodeID,
                                         canvasPoint(connection->current), m_dragging);
    if (target) {
        connectNodes(connection->fromNodeID, *target);
    }
}

void FlowCanvas::connectNodes(Uuid fromNodeID, Uuid toNodeID) {
    const FlowNode* from = node(fromNodeID);
    if (!from) {
        return;
    }
    const std::vector<FlowPort> ports = outputPorts(*from, *state().agents);
    if (ports.size() == 1) {
        state().connectFlowNodes(fromNodeID, ports.front(), toNodeID, m_flowID);
    } else if (!ports.empty()) {
        choosePort({Uuid::random(), fromNodeID, toNodeID, ports});
    }
}

void FlowCanvas::choosePort(const PendingPortChoice& choice) {
    const Flow* shownFlow = flow();
    if (!shownFlow) {
        return;
    }
    m_portChoice = choice;
    auto* dialog =
        new PortChoiceDialog(toQt(portQuestion(*shownFlow, choice.fromNodeID, choice.toNodeID,
                                               *state().agents, *state().tools)),
                             choice, this);
    connect(dialog, &PortChoiceDialog::chosen, this, [this](const FlowPort& port) {
        if (const auto chosen = std::exchange(m_portChoice, std::nullopt)) {
            state().connectFlowNodes(chosen->fromNodeID, port, chosen->toNodeID, m_flowID);
        }
    });
    connect(dialog, &QDialog::finished, this, [this] { m_portChoice.reset(); });
    dialog->open();
}

void FlowCanvas::mouseDoubleClickEvent(QMouseEvent* event) {
    const Hit hit = hitAt(event->position());
    if (event->button() == Qt::LeftButton && hit.card && !hit.handle) {
        activate(*hit.card);
    } else {
        mousePressEvent(event);
    }
}

void FlowCanvas::activate(const CanvasCard& card) {
    const FlowNode* chosen = node(card.id);
    if (!chosen) {
        return;
    }
    const FlowNodeKind kind = chosen->kind;
    if (std::holds_alternative<FlowNodeKind::Agent>(kind.value) ||
        std::holds_alternative<FlowNodeKind::Tool>(kind.value)) {
        Q_EMIT shown(kind);
    } else {
        Q_EMIT inspected();
    }
}

void FlowCanvas::updateHover(QPointF inWidget) {
    m_hover->location = inWidget;
    const Hit hit = hitAt(inWidget);
    const auto hoveredNode = hit.card ? std::optional(hit.card->id) : std::nullopt;
    const auto hoveredWire = hit.wire ? std::optional(hit.wire->id) : std::nullopt;
    const bool isOutput = hit.handle && canLeave(hit.handle->id);
    setCursor(isOutput ? Qt::CrossCursor : hit.bubble ? Qt::PointingHandCursor : Qt::ArrowCursor);
    if (hoveredNode != m_marks.hoveredNode) {
        redrawCard(std::exchange(m_marks.hoveredNode, hoveredNode));
        redrawCard(hoveredNode);
    }
    if (hoveredWire != m_marks.hoveredWire) {
        redrawWire(std::exchange(m_marks.hoveredWire, hoveredWire));
        redrawWire(hoveredWire);
    }
}

void FlowCanvas::leaveEvent(QEvent* event) {
    m_hover->location.reset();
    redrawCard(std::exchange(m_marks.hoveredNode, std::nullopt));
    redrawWire(std::exchange(m_marks.hoveredWire, std::nullopt));
    StateView::leaveEvent(event);
}

void FlowCanvas::wheelEvent(QWheelEvent* event) {
    QPointF moved = event->pixelDelta();
    if (moved.isNull()) {
        moved = QPointF(event->angleDelta()) / 120.0 * wheelStep;
    }
    if (event->modifiers().testFlag(Qt::ControlModifier)) {
        constexpr double factorOfNotch = 1.12;
        const double factor = std::pow(factorOfNotch, moved.y() / wheelStep);
        setCanvasView(m_view.zoomedAt(factor, canvasPoint(event->position() - canvas::origin)));
    } else {
        if (event->modifiers().testFlag(Qt::ShiftModifier) && moved.x() == 0) {
            moved = {moved.y(), 0};
        }
        setCanvasView(m_view.panned(moved.x(), moved.y()));
    }
    followPointer(event->position(), event->modifiers());
    event->accept();
}

bool FlowCanvas::handlePinch(QEvent* event) {
    if (event->type() == QEvent::NativeGesture) {
        const auto* native = static_cast<QNativeGestureEvent*>(event);
        if (native->gestureType() == Qt::ZoomNativeGesture) {
            setCanvasView(m_view.pinched(1 + native->value(),
                                         canvasPoint(native->position() - canvas::origin)));
            return true;
        }
        return false;
    }
    auto* gesture = static_cast<QGestureEvent*>(event)->gesture(Qt::PinchGesture);
    if (const auto* pinch = static_cast<QPinchGesture*>(gesture)) {
        const QPointF at = mapFromGlobal(pinch->centerPoint());
        setCanvasView(m_view.pinched(pinch->scaleFactor(), canvasPoint(at - canvas::origin)));
        return true;
    }
    return false;
}

bool FlowCanvas::event(QEvent* event) {
    switch (event->type()) {
    case QEvent::NativeGesture:
    case QEvent::Gesture:
        if (handlePinch(event)) {
            return true;
        }
        break;
    case QEvent::ToolTip:
        showTip(static_cast<const QHelpEvent&>(*event));
        return true;
    case QEvent::ShortcutOverride:
        // Escape ends what the pointer does, before it is anybody else's key.
        if (m_gesture != Gesture::none && static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape) {
            event->accept();
            return true;
        }
        break;
    default:
        break;
    }
    return StateView::event(event);
}

void FlowCanvas::showTip(const QHelpEvent& event) {
    const QPointF at = toCanvas(event.pos());
    QString text;
    const Hit hit = hitAt(event.pos());
    const CanvasCard* marked = nullptr;
    for (const CanvasCard& card : m_scene.cards()) {
        if (card.mark && canvas::markRect(m_scene.centre(card)).contains(at)) {
            marked = &card;
        }
    }
    if (marked) {
        text = marked->issues;
    } else if (hit.handle && canLeave(hit.handle->id)) {
        text = tr("Drag to the node that comes next");
    } else if (hit.bubble) {
        text = toQt(runValueHelp);
    } else if (hit.card) {
        const bool onMark =
            hit.card->drawsOnKnowledge &&
            canvas::knowledgeRect(m_scene.centre(*hit.card)).adjusted(-3, -3, 3, 3).contains(at);
        text = onMark ? toQt(knowledgeMarkHelp)
                      : hit.card->title + (hit.card->subtitle.isEmpty()
                                               ? QString()
                                               : QLatin1Char('\n') + hit.card->subtitle);
        if (!onMark && !hit.card->issues.isEmpty()) {
            text += QStringLiteral("\n\n") + hit.card->issues;
        }
    }
    if (text.isEmpty()) {
        QToolTip::hideText();
    } else {
        QToolTip::showText(event.globalPos(), toolTipText(text), this);
    }
}

void FlowCanvas::showRunDetail(Uuid nodeID) {
    const auto& highlight = *state().flowRunHighlight;
    const CanvasCard* card = m_scene.card(nodeID);
    if (!card || !highlight || highlight->flowID != m_flowID) {
        return;
    }
    if (const auto bubble = runBubble(*highlight, nodeID)) {
        auto* popover = new RunDetailPopover(*bubble, card->title, this);
        const QRect beside = widgetRect(canvas::bubbleRect(m_scene.centre(*card)));
        popover->openBeside({mapToGlobal(beside.topLeft()), beside.size()});
    }
}

} // namespace ombrel

#include "shell/flow/FlowCanvas.h"

#include "core/FindByID.h"
#include "core/FlowPalette.h"
#include "core/FlowPorts.h"
#include "core/JsonDecoder.h"
#include "core/JsonEncoder.h"
#include "flows/FlowEditorTexts.h"
#include "flows/FlowFragment.h"
#include "flows/FlowLayout.h"
#include "flows/RunHighlight.h"
#include "shell/QtText.h"
#include "shell/design/Icon.h"
#include "shell/design/Named.h"
#include "shell/design/Spacing.h"
#include "shell/design/TextLabel.h"
#include "shell/design/Theme.h"
#include "shell/flow/CanvasControls.h"
#include "shell/flow/CanvasMetrics.h"
#include "shell/flow/FlowMinimap.h"
#include "shell/flow/FlowPalette.h"
#include "shell/flow/PortChoiceDialog.h"
#include "shell/flow/RunBanner.h"
#include "shell/flow/RunDetailPopover.h"

#include <QApplication>
#include <QClipboard>
#include <QGestureEvent>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QMimeData>
#include <QNativeGestureEvent>
#include <QPainter>
#include <QPinchGesture>
#include <QToolTip>

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace ombrel {

namespace {

constexpr double dragDistance = 3;  // of the pointer, before a press becomes a drag
constexpr double wireReach = 7;     // of a click beside a wire
constexpr double guideReach = 5;    // of a node beside a guide
constexpr double wheelStep = 48;    // of a notch of the wheel
constexpr double revealMargin = 24; // around a node that is brought into view
constexpr double pasteStep = 28;
constexpr auto fragmentFormat = "application/x-ombrel-flow-nodes";

CanvasPoint canvasPoint(QPointF point) {
    return {point.x(), point.y()};
}

CanvasSelection nodeSelection(Uuid id) {
    return {CanvasSelection::Node{id}};
}

bool isEnd(const FlowNode& node) {
    return std::holds_alternative<FlowNodeKind::End>(node.kind.value);
}

QString menuText(QString title) {
    return title.replace(QLatin1Char('&'), QLatin1String("&&"));
}

} // namespace

FlowCanvas::FlowCanvas(std::shared_ptr<AppState> shownState, Uuid flowID, QWidget* parent)
    : StateView(std::move(shownState), parent), m_flowID(flowID), m_palette(new FlowPalette(this)),
      m_controls(new CanvasControls(this)), m_banner(new RunBanner(this)),
      m_minimap(new FlowMinimap(m_scene, this)),
      m_hint((new TextLabel(tr("Add agents, tools and ends from the palette, then drag from the "
                               "dot at a node's right to the node that comes next."),
                            TextRole::body, TextLabel::Ink::secondary, this))
                 ->wrapping()) {
    named(this, QStringLiteral("canvas"), tr("Flow canvas"));
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    setAttribute(Qt::WA_OpaquePaintEvent);
    grabGesture(Qt::PinchGesture);
    m_hint->setObjectName(QStringLiteral("canvas.hint"));
    m_hint->setAttribute(Qt::WA_TransparentForMouseEvents);
    static_cast<TextLabel*>(m_hint)->setAlignment(Qt::AlignCenter);
    m_pulse.setInterval(33);
    connect(&m_pulse, &QTimer::timeout, this, &FlowCanvas::updatePulse);
    connect(m_palette, &FlowPalette::asked, this, &FlowCanvas::addNode);
    connect(m_controls, &CanvasControls::zoomInAsked, this, &FlowCanvas::zoomIn);
    connect(m_controls, &CanvasControls::zoomOutAsked, this, &FlowCanvas::zoomOut);
    connect(m_controls, &CanvasControls::fitAsked, this, &FlowCanvas::fitView);
    connect(m_controls, &CanvasControls::resetAsked, this, &FlowCanvas::resetView);
    connect(m_controls, &CanvasControls::tidyAsked, this, &FlowCanvas::tidyUp);
    connect(m_banner, &RunBanner::clearAsked, this, [this] { state().clearRunHighlight(); });
    connect(m_minimap, &FlowMinimap::asked, this, [this](QPointF centre) {
        const QPointF to = rect().center() - toWidget(centre);
        setCanvasView(m_view.panned(to.x(), to.y()));
    });
    connect(&Theme::current(), &Theme::changed, this, [this] {
        m_painter.themeChanged();
        update();
    });
    watch(state().flows);
    watch(state().agents);
    watch(state().tools);
    watch(state().canvasSelection);
    watch(state().flowRunHighlight);
    setCanvasView({});
}

FlowCanvas::~FlowCanvas() = default;

const FlowNode* FlowCanvas::node(Uuid id) const {
    const Flow* shownFlow = flow();
    return shownFlow ? shownFlow->node(id) : nullptr;
}

// What the state says.

void FlowCanvas::refresh() {
    m_scene = CanvasScene(state(), m_flowID);
    std::erase_if(m_selectedNodes, [&](Uuid id) { return !m_scene.card(id); });
    const auto isGone = [&](Uuid id) { return !m_scene.card(id); };
    if (std::ranges::any_of(m_dragging.nodes, isGone) ||
        (m_connection && isGone(m_connection->fromNodeID))) {
        cancelGesture();
    }
    m_scene.setMove(m_dragging);
    if (m_marks.hoveredNode && isGone(*m_marks.hoveredNode)) {
        m_marks.hoveredNode.reset();
    }
    followSelection();
    m_palette->showOffers(*state().agents, *state().tools);
    if (m_scene.hasRun()) {
        m_banner->showHighlight(**state().flowRunHighlight);
    }
    m_banner->setVisible(m_scene.hasRun());
    m_minimap->setVisible(m_scene.cards().size() >= FlowMinimap::fewestNodes);
    m_minimap->sceneChanged();
    m_hint->setVisible(m_scene.cards().size() <= 1);
    if (m_scene.isLive() && !m_pulse.isActive()) {
        m_pulse.start();
    } else if (!m_scene.isLive()) {
        m_pulse.stop();
    }
    placeOverlays();
    update();
}

void FlowCanvas::followSelection() {
    const std::optional<CanvasSelection> selection = *state().canvasSelection;
    m_marks.selectedWire.reset();
    const auto* wire = selection ? std::get_if<CanvasSelection::Edge>(&selection->value) : nullptr;
    if (wire) {
        m_marks.selectedWire = wire->id;
    }
    if (selection != m_followedSelection) {
        m_followedSelection = selection;
        m_selectedNodes.clear();
        const auto* chosen =
            selection ? std::get_if<CanvasSelection::Node>(&selection->value) : nullptr;
        if (chosen && m_scene.card(chosen->id)) {
            m_selectedNodes = {chosen->id};
            reveal(chosen->id);
        }
    }
    m_marks.selectedNodes = m_selectedNodes;
    QString told;
    for (const Uuid id : m_selectedNodes) {
        const CanvasCard* card = m_scene.card(id);
        told += (told.isEmpty() ? QString() : QStringLiteral("; ")) + card->title +
                (card->subtitle.isEmpty() ? QString() : QStringLiteral(", ") + card->subtitle);
    }
    setAccessibleDescription(told);
}

void FlowCanvas::select(std::set<Uuid> nodes) {
    m_selectedNodes = std::move(nodes);
    m_marks.selectedNodes = m_selectedNodes;
    m_marks.selectedWire.reset();
    m_followedSelection = m_selectedNodes.size() == 1
                              ? std::optional(nodeSelection(*m_selectedNodes.begin()))
                              : std::nullopt;
    state().canvasSelection.setIfChanged(m_followedSelection);
    update();
}

void FlowCanvas::selectWire(Uuid edgeID) {
    m_selectedNodes.clear();
    m_followedSelection = CanvasSelection{CanvasSelection::Edge{edgeID}};
    state().canvasSelection.setIfChanged(m_followedSelection);
    followSelection();
    update();
}

// What is seen where.

QPointF FlowCanvas::toWidget(QPointF onCanvas) const {
    const CanvasPoint seen = m_view.seen(canvasPoint(onCanvas));
    return QPointF(seen.x, seen.y) + canvas::origin;
}

QPointF FlowCanvas::toCanvas(QPointF inWidget) const {
    const CanvasPoint point = m_view.onCanvas(canvasPoint(inWidget - canvas::origin));
    return {point.x, point.y};
}

QRect FlowCanvas::widgetRect(const QRectF& onCanvas) const {
    return QRectF(toWidget(onCanvas.topLeft()), toWidget(onCanvas.bottomRight())).toAlignedRect();
}

CanvasSize FlowCanvas::room() const {
    return {static_cast<double>(width()) - 2 * canvas::origin.x(),
            static_cast<double>(height()) - 2 * canvas::origin.y()};
}

void FlowCanvas::setCanvasView(const CanvasView& view) {
    m_view = view;
    m_controls->setReadout(toQt(m_view.readout()));
    m_minimap->setSeen(QRectF(toCanvas({}), toCanvas({width() * 1.0, height() * 1.0})));
    update();
}

void FlowCanvas::zoomIn() {
    setCanvasView(m_view.zoomedIn());
}

void FlowCanvas::zoomOut() {
    setCanvasView(m_view.zoomedOut());
}

void FlowCanvas::resetView() {
    setCanvasView({});
}

void FlowCanvas::fitView() {
    std::vector<CanvasPoint> centres;
    for (const CanvasCard& card : m_scene.cards()) {
        centres.push_back(canvasPoint(card.centre));
    }
    setCanvasView(CanvasView::fitting(
        centres, {canvas::cardWidth / 2 + 40, canvas::cardHeight / 2 + 60}, room()));
}

void FlowCanvas::reveal(Uuid nodeID) {
    if (const FlowNode* shownNode = node(nodeID); shownNode && m_gesture == Gesture::none) {
        setCanvasView(m_view.revealing(
            shownNode->position,
            {canvas::cardWidth / 2 + revealMargin, canvas::cardHeight / 2 + revealMargin}, room()));
    }
}

void FlowCanvas::selectAndReveal(const std::vector<Uuid>& nodeIDs) {
    select({nodeIDs.begin(), nodeIDs.end()});
    if (!nodeIDs.empty()) {
        reveal(nodeIDs.back());
        reveal(nodeIDs.front());
    }
}

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

void FlowCanvas::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    m_painter.draw(painter, m_scene, m_view, m_marks, event->rect());
}

void FlowCanvas::resizeEvent(QResizeEvent* event) {
    StateView::resizeEvent(event);
    setCanvasView(m_view);
    placeOverlays();
}

void FlowCanvas::placeOverlays() {
    const int gap = spacing::medium;
    for (QWidget* overlay : {static_cast<QWidget*>(m_palette), static_cast<QWidget*>(m_controls),
                             static_cast<QWidget*>(m_banner)}) {
        overlay->adjustSize();
    }
    m_palette->move(gap, gap);
    m_controls->move(gap, height() - gap - m_controls->height());
    m_minimap->move(width() - gap - m_minimap->width(), height() - gap - m_minimap->height());
    // In the middle, or below the palette where that is in the way.
    const int middle = (width() - m_banner->width()) / 2;
    const int besidePalette = m_palette->geometry().right() + gap;
    const int x = std::max(middle, besidePalette);
    if (x + m_banner->width() + gap <= width()) {
        m_banner->move(x, gap);
    } else {
        m_banner->move(gap, m_palette->geometry().bottom() + gap);
    }
    const int hintWidth = std::min(420, width() - 2 * spacing::page);
    const int hintHeight = m_hint->heightForWidth(hintWidth);
    m_hint->setGeometry((width() - hintWidth) / 2, (height() - hintHeight) / 2 + 40, hintWidth,
                        hintHeight);
}

void FlowCanvas::updatePulse() {
    constexpr double step = 0.033;
    m_marks.pulse += step;
    m_marks.pulse -= std::floor(m_marks.pulse);
    for (const CanvasCard& card : m_scene.cards()) {
        if (card.runState == FlowRunHighlight::NodeState::active) {
            update(widgetRect(canvas::cardRect(m_scene.centre(card)).adjusted(-16, -16, 16, 16)));
        }
    }
    for (const CanvasWire& wire : m_scene.wires()) {
        if (wire.isLast) {
            update(widgetRect(m_scene.curve(wire).bounds().adjusted(-12, -12, 12, 12)));
        }
    }
}

// The pointer.

void FlowCanvas::mousePressEvent(QMouseEvent* event) {
    cancelGesture();
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
    switch (m_gesture) {
    case Gesture::move:
        dragMove(at, !event->modifiers().testFlag(Qt::AltModifier));
        break;
    case Gesture::pan:
        setCanvasView(m_view.panned(at.x() - m_lastAt.x(), at.y() - m_lastAt.y()));
        break;
    case Gesture::connect:
        dragConnection(at);
        break;
    case Gesture::rubberBand: {
        m_marks.rubberBand = QRectF(toCanvas(m_pressedAt), toCanvas(at)).normalized();
        std::set<Uuid> nodes = m_selectedBefore;
        for (const CanvasCard& card : m_scene.cards()) {
            if (m_marks.rubberBand->intersects(canvas::cardRect(card.centre))) {
                nodes.insert(card.id);
            }
        }
        select(std::move(nodes));
        break;
    }
    case Gesture::press:
    case Gesture::none:
        break;
    }
    m_lastAt = at;
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
    m_dragging = {};
    m_scene.setMove({});
    m_alignTo.clear();
    m_connection.reset();
    m_marks.pulledWire.reset();
    m_marks.targetNode.reset();
    m_marks.rubberBand.reset();
    m_marks.guideX.reset();
    m_marks.guideY.reset();
    unsetCursor();
    update();
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
    m_dragging.translation = {moved.x(), moved.y()};
    m_marks.guideX.reset();
    m_marks.guideY.reset();
    if (mayAlign && m_draggingNodeID) {
        const AlignmentGuides guides =
            alignedMove(m_alignTo, *m_draggingNodeID, m_dragging, guideReach / m_view.zoomScale);
        m_dragging.translation = guides.translation;
        m_marks.guideX = guides.x;
        m_marks.guideY = guides.y;
    }
    m_scene.setMove(m_dragging);
    update();
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

void FlowCanvas::dragConnection(QPointF at) {
    const Flow* shownFlow = flow();
    if (!m_connection || !shownFlow) {
        return;
    }
    m_connection->current = toCanvas(at);
    const FlowNode* from = shownFlow->node(m_connection->fromNodeID);
    const bool canConnect = from && !outputPorts(*from, *state().agents).empty();
    m_marks.targetNode = canConnect
                             ? connectionTarget(shownFlow->nodes, m_connection->fromNodeID,
                                                canvasPoint(m_connection->current), m_dragging)
                             : std::nullopt;
    m_marks.pulledWire =
        CanvasPainter::Marks::Pulled{m_connection->start, m_connection->current, canConnect};
    setCursor(canConnect ? Qt::CrossCursor : Qt::ForbiddenCursor);
    update();
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
    if (const FlowNode* chosen = node(card.id)) {
        const FlowNodeKind kind = chosen->kind;
        Q_EMIT shown(kind);
    }
}

void FlowCanvas::updateHover(QPointF inWidget) {
    m_hover->location = inWidget;
    const Hit hit = hitAt(inWidget);
    const auto hoveredNode = hit.card ? std::optional(hit.card->id) : std::nullopt;
    const auto hoveredWire = hit.wire ? std::optional(hit.wire->id) : std::nullopt;
    setCursor(hit.handle ? Qt::CrossCursor : hit.bubble ? Qt::PointingHandCursor : Qt::ArrowCursor);
    if (hoveredNode == m_marks.hoveredNode && hoveredWire == m_marks.hoveredWire) {
        return;
    }
    const auto redraw = [this](const std::optional<Uuid>& id) {
        if (const CanvasCard* card = id ? m_scene.card(*id) : nullptr) {
            update(widgetRect(canvas::cardRect(m_scene.centre(*card)).adjusted(-20, -20, 20, 20)));
        }
    };
    redraw(m_marks.hoveredNode);
    redraw(hoveredNode);
    if (hoveredWire != m_marks.hoveredWire) {
        update();
    }
    m_marks.hoveredNode = hoveredNode;
    m_marks.hoveredWire = hoveredWire;
}

void FlowCanvas::leaveEvent(QEvent* event) {
    m_hover->location.reset();
    m_marks.hoveredNode.reset();
    m_marks.hoveredWire.reset();
    update();
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
    } else if (hit.handle) {
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
        QToolTip::showText(event.globalPos(), text, this);
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

// The keyboard.

void FlowCanvas::keyPressEvent(QKeyEvent* event) {
    const bool isPlain =
        (event->modifiers() & ~(Qt::ShiftModifier | Qt::KeypadModifier | Qt::ControlModifier)) ==
        Qt::NoModifier;
    const bool hasControl = event->modifiers().testFlag(Qt::ControlModifier);
    if (event->matches(QKeySequence::Copy)) {
        copy();
    } else if (event->matches(QKeySequence::Cut)) {
        cut();
    } else if (event->matches(QKeySequence::Paste)) {
        paste();
    } else if (event->matches(QKeySequence::SelectAll)) {
        selectAll();
    } else if (hasControl && event->key() == Qt::Key_D) {
        duplicateSelection();
    } else if (event->key() == Qt::Key_Escape) {
        escape();
    } else if (event->key() == Qt::Key_Delete || event->key() == Qt::Key_Backspace) {
        deleteSelection();
    } else if (isPlain && (event->key() == Qt::Key_Plus || event->key() == Qt::Key_Equal)) {
        zoomIn();
    } else if (isPlain && event->key() == Qt::Key_Minus) {
        zoomOut();
    } else if (isPlain && event->key() == Qt::Key_0) {
        resetView();
    } else if (!hasControl && event->key() == Qt::Key_F) {
        fitView();
    } else if ((event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter ||
                event->key() == Qt::Key_Space) &&
               m_selectedNodes.size() == 1) {
        const CanvasCard* card = m_scene.card(*m_selectedNodes.begin());
        if (card && card->step > 0) {
            showRunDetail(card->id);
        } else if (card && event->key() != Qt::Key_Space) {
            activate(*card);
        }
    } else if (!pressArrow(event->key(), event->modifiers())) {
        StateView::keyPressEvent(event);
    }
}

bool FlowCanvas::pressArrow(int key, Qt::KeyboardModifiers modifiers) {
    constexpr std::array<std::pair<int, QPointF>, 4> ways{{{Qt::Key_Left, {-1, 0}},
                                                           {Qt::Key_Right, {1, 0}},
                                                           {Qt::Key_Up, {0, -1}},
                                                           {Qt::Key_Down, {0, 1}}}};
    const auto way = std::ranges::find(ways, key, [](const auto& entry) { return entry.first; });
    if (way == ways.end()) {
        return false;
    }
    const QPointF direction = way->second;
    if (m_selectedNodes.empty()) {
        const QPointF pan = -2 * canvas::gridStep * direction;
        setCanvasView(m_view.panned(pan.x(), pan.y()));
    } else {
        const double step = modifiers.testFlag(Qt::ShiftModifier) ? 1 : canvas::gridStep;
        moveSelection(direction.x() * step, direction.y() * step);
    }
    return true;
}

void FlowCanvas::moveSelection(double dx, double dy) {
    const std::set<Uuid> moved = m_selectedNodes;
    for (const Uuid id : moved) {
        if (const FlowNode* chosen = node(id)) {
            state().moveFlowNode(id, m_flowID, chosen->position.x + dx, chosen->position.y + dy);
        }
    }
    if (moved.size() == 1) {
        reveal(*moved.begin());
    }
}

void FlowCanvas::escape() {
    if (m_gesture != Gesture::none) {
        cancelGesture();
    } else if (m_scene.hasRun()) {
        state().clearRunHighlight();
    } else {
        select({});
    }
}

bool FlowCanvas::focusNextPrevChild(bool next) {
    const auto& cards = m_scene.cards();
    if (!hasFocus() || cards.empty()) {
        return StateView::focusNextPrevChild(next);
    }
    // From the node that is selected to the one after it; after the last, out of the canvas.
    const auto selected = std::ranges::find_if(
        cards, [&](const CanvasCard& card) { return m_selectedNodes.contains(card.id); });
    const auto count = std::ssize(cards);
    std::ptrdiff_t place = selected == cards.end() ? (next ? -1 : count) : selected - cards.begin();
    place += next ? 1 : -1;
    if (place < 0 || place >= count) {
        return StateView::focusNextPrevChild(next);
    }
    selectAndReveal({cards[static_cast<std::size_t>(place)].id});
    return true;
}

void FlowCanvas::focusInEvent(QFocusEvent* event) {
    m_marks.hasFocus = true;
    update();
    StateView::focusInEvent(event);
}

void FlowCanvas::focusOutEvent(QFocusEvent* event) {
    m_marks.hasFocus = false;
    update();
    StateView::focusOutEvent(event);
}

// Edits.

void FlowCanvas::addNode(const FlowNodeKind& kind) {
    const Flow* before = flow();
    if (!before) {
        return;
    }
    const CanvasPoint at = palettePosition(before->nodes.size());
    state().addFlowNode(kind, m_flowID, at.x, at.y);
    const Uuid added = flow()->nodes.back().id;
    refresh();
    selectAndReveal({added});
}

void FlowCanvas::deleteSelection() {
    if (m_marks.selectedWire) {
        state().deleteFlowEdge(*m_marks.selectedWire, m_flowID);
        return;
    }
    const std::set<Uuid> chosen = m_selectedNodes;
    for (const Uuid id : chosen) {
        const FlowNode* doomed = node(id);
        if (doomed && !std::holds_alternative<FlowNodeKind::Start>(doomed->kind.value)) {
            state().deleteFlowNode(id, m_flowID);
        }
    }
    refresh();
}

void FlowCanvas::copy() {
    const Flow* shownFlow = flow();
    if (!shownFlow) {
        return;
    }
    const FlowFragment fragment = FlowFragment::of(*shownFlow, m_selectedNodes);
    if (fragment.nodes.empty()) {
        return;
    }
    auto* copied = new QMimeData;
    copied->setData(QLatin1String(fragmentFormat), QByteArray::fromStdString(encodeJson(fragment)));
    QApplication::clipboard()->setMimeData(copied);
    m_pasteCount = 0;
}

void FlowCanvas::cut() {
    copy();
    if (!m_selectedNodes.empty()) {
        deleteSelection();
    }
}

void FlowCanvas::paste() {
    const QMimeData* copied = QApplication::clipboard()->mimeData();
    if (!copied || !copied->hasFormat(QLatin1String(fragmentFormat))) {
        return;
    }
    const QByteArray bytes = copied->data(QLatin1String(fragmentFormat));
    if (const auto fragment = decodeJson<FlowFragment>(bytes.toStdString())) {
        insert(*fragment, pasteStep * ++m_pasteCount);
    }
}

void FlowCanvas::duplicateSelection() {
    if (const Flow* shownFlow = flow()) {
        insert(FlowFragment::of(*shownFlow, m_selectedNodes), pasteStep);
    }
}

void FlowCanvas::insert(const FlowFragment& fragment, double offset) {
    const Flow* shownFlow = flow();
    if (!shownFlow || fragment.nodes.empty()) {
        return;
    }
    Flow edited = *shownFlow;
    const std::vector<Uuid> added = fragment.addTo(edited, offset, offset);
    state().updateFlow(edited);
    refresh();
    selectAndReveal(added);
}

void FlowCanvas::selectAll() {
    std::set<Uuid> all;
    for (const CanvasCard& card : m_scene.cards()) {
        all.insert(card.id);
    }
    select(std::move(all));
}

void FlowCanvas::tidyUp() {
    const Flow* shownFlow = flow();
    if (!shownFlow) {
        return;
    }
    Flow tidied = *shownFlow;
    const std::vector<CanvasPoint> layout = flowLayout(tidied);
    for (std::size_t i = 0; i < layout.size(); ++i) {
        tidied.nodes[i].position = layout[i];
    }
    if (tidied != *shownFlow) {
        state().updateFlow(tidied);
    }
    refresh();
    fitView();
}

// Menus.

void FlowCanvas::contextMenuEvent(QContextMenuEvent* event) {
    cancelGesture();
    QPoint at = event->pos();
    const CanvasCard* card = nullptr;
    const CanvasWire* wire = nullptr;
    if (event->reason() == QContextMenuEvent::Keyboard) {
        card = m_selectedNodes.empty() ? nullptr : m_scene.card(*m_selectedNodes.begin());
        const auto isSelected = [this](const CanvasWire& w) {
            return m_marks.selectedWire == w.id;
        };
        const auto found = std::ranges::find_if(m_scene.wires(), isSelected);
        wire = found == m_scene.wires().end() ? nullptr : &*found;
        at = card ? toWidget(m_scene.centre(*card)).toPoint() : rect().center();
    } else {
        const Hit hit = hitAt(at);
        card = hit.card;
        wire = hit.wire;
    }
    auto* menu = new QMenu(this);
    menu->setObjectName(QStringLiteral("canvas.menu"));
    menu->setAttribute(Qt::WA_DeleteOnClose);
    if (card) {
        if (!m_selectedNodes.contains(card->id)) {
            select({card->id});
        }
        fillNodeMenu(*menu, *card);
    } else if (wire) {
        selectWire(wire->id);
        QAction* remove = menu->addAction(themeIcon(QStringLiteral("trash"), Tone::danger),
                                          tr("Remove Connection"));
        remove->setObjectName(QStringLiteral("canvas.menu.remove"));
        connect(remove, &QAction::triggered, this,
                [this, id = wire->id] { state().deleteFlowEdge(id, m_flowID); });
    } else {
        fillCanvasMenu(*menu);
    }
    menu->popup(mapToGlobal(at));
    event->accept();
}

void FlowCanvas::fillNodeMenu(QMenu& menu, const CanvasCard& card) {
    const FlowNode* chosen = node(card.id);
    if (!chosen) {
        return;
    }
    const Uuid id = card.id;
    const auto add = [&](const char* name, const QString& text, auto run) {
        QAction* action = menu.addAction(text);
        action->setObjectName(QStringLiteral("canvas.menu.") + QLatin1String(name));
        connect(action, &QAction::triggered, this, run);
        return action;
    };
    const FlowNodeKind kind = chosen->kind;
    if (const auto* agent = std::get_if<FlowNodeKind::Agent>(&kind.value);
        agent && state().agent(agent->agentID)) {
        add("edit", tr("Edit Agent\u2026"), [this, kind] { Q_EMIT shown(kind); });
    }
    if (const auto* tool = std::get_if<FlowNodeKind::Tool>(&kind.value);
        tool && state().tool(tool->toolID)) {
        add("edit", tr("Edit Tool\u2026"), [this, kind] { Q_EMIT shown(kind); });
    }
    if (card.step > 0) {
        add("detail", toQt(runValueHelp), [this, id] { showRunDetail(id); });
    }
    if (!isEnd(*chosen) && m_scene.cards().size() > 1) {
        QMenu* targets = menu.addMenu(tr("Connect To"));
        targets->setObjectName(QStringLiteral("canvas.menu.connect"));
        connect(targets, &QMenu::aboutToShow, this, [this, targets, id] {
            targets->clear();
            for (const CanvasCard& other : m_scene.cards()) {
                if (other.id != id && !other.isStart()) {
                    connect(targets->addAction(menuText(other.title)), &QAction::triggered, this,
                            [this, id, to = other.id] { connectNodes(id, to); });
                }
            }
        });
    }
    menu.addSeparator();
    if (!card.isStart() || m_selectedNodes.size() > 1) {
        add("copy", tr("Copy"), [this] { copy(); })->setShortcut(QKeySequence::Copy);
        add("duplicate", tr("Duplicate"), [this] {
            duplicateSelection();
        })->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_D));
        menu.addSeparator();
        const auto count = m_selectedNodes.size();
        QAction* remove =
            add("delete", count > 1 ? tr("Delete %1 Nodes").arg(count) : tr("Delete Node"),
                [this] { deleteSelection(); });
        remove->setIcon(themeIcon(QStringLiteral("trash"), Tone::danger));
        remove->setShortcut(QKeySequence::Delete);
    }
}

void FlowCanvas::fillCanvasMenu(QMenu& menu) {
    const auto add = [&](const char* name, const QString& text, auto run) {
        QAction* action = menu.addAction(text);
        action->setObjectName(QStringLiteral("canvas.menu.") + QLatin1String(name));
        connect(action, &QAction::triggered, this, run);
        return action;
    };
    const QMimeData* copied = QApplication::clipboard()->mimeData();
    add("paste", tr("Paste"), [this] {
        paste();
    })->setEnabled(copied && copied->hasFormat(QLatin1String(fragmentFormat)));
    add("selectAll", tr("Select All"), [this] { selectAll(); });
    menu.addSeparator();
    add("tidy", tr("Tidy Up"), [this] { tidyUp(); });
    add("fit", tr("Show the Whole Flow"), [this] { fitView(); });
    add("reset", tr("Reset Zoom and Pan"), [this] { resetView(); });
}

} // namespace ombrel

#include "shell/flow/FlowCanvas.h"

#include "shell/QtText.h"
#include "shell/design/Named.h"
#include "shell/design/Spacing.h"
#include "shell/design/TextLabel.h"
#include "shell/design/Theme.h"
#include "shell/flow/CanvasControls.h"
#include "shell/flow/CanvasMetrics.h"
#include "shell/flow/FlowMinimap.h"
#include "shell/flow/FlowPalette.h"
#include "shell/flow/RunBanner.h"

#include <QKeyEvent>
#include <QPainter>

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace ombrel {

namespace {

constexpr double revealMargin = 24; // around a node that is brought into view

CanvasPoint canvasPoint(QPointF point) {
    return {point.x(), point.y()};
}

CanvasSelection nodeSelection(Uuid id) {
    return {CanvasSelection::Node{id}};
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
        redraw();
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
    redraw();
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
    redrawSelection();
    m_selectedNodes = std::move(nodes);
    m_marks.selectedNodes = m_selectedNodes;
    m_marks.selectedWire.reset();
    redrawSelection();
    m_followedSelection = m_selectedNodes.size() == 1
                              ? std::optional(nodeSelection(*m_selectedNodes.begin()))
                              : std::nullopt;
    state().canvasSelection.setIfChanged(m_followedSelection);
}

void FlowCanvas::selectWire(Uuid edgeID) {
    redrawSelection();
    m_selectedNodes.clear();
    m_followedSelection = CanvasSelection{CanvasSelection::Edge{edgeID}};
    state().canvasSelection.setIfChanged(m_followedSelection);
    followSelection();
    redrawSelection();
}

void FlowCanvas::redrawSelection() {
    constexpr std::size_t many = 64;
    if (m_selectedNodes.size() > many) {
        redraw();
    } else {
        for (const Uuid id : m_selectedNodes) {
            redrawCard(id);
        }
    }
    redrawWire(m_marks.selectedWire);
    if (m_showsFocus) {
        updateOverlay();
    }
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
    // No more than what is seen: a drawing can be larger than the numbers of the screen.
    return QRectF(toWidget(onCanvas.topLeft()), toWidget(onCanvas.bottomRight()))
        .intersected(rect())
        .toAlignedRect();
}

CanvasSize FlowCanvas::room() const {
    return {static_cast<double>(width()) - 2 * canvas::origin.x(),
            static_cast<double>(height()) - 2 * canvas::origin.y()};
}

void FlowCanvas::setCanvasView(const CanvasView& view) {
    const QPointF pressed = toCanvas(m_pressedAt);
    m_view = view;
    m_pressedAt = toWidget(pressed); // what was taken hold of moves along
    m_controls->setReadout(toQt(m_view.readout()));
    m_minimap->setSeen(QRectF(toCanvas({}), toCanvas({width() * 1.0, height() * 1.0})));
    updateOverlay(); // the layer follows the view by itself
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
    // Between the palette above and the controls below, as far as there is room for that.
    const CanvasSize whole = room();
    const double bar = std::min(m_controls->height() + 2.0 * spacing::medium, whole.height / 4);
    setCanvasView(CanvasView::fitting(centres,
                                      {canvas::cardWidth / 2 + canvas::cardMargin,
                                       canvas::cardHeight / 2 + canvas::cardMargin},
                                      {whole.width, whole.height - 2 * bar})
                      .panned(0, bar));
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

// Painting.

void FlowCanvas::paintEvent(QPaintEvent* event) {
    const double ratio = devicePixelRatioF();
    const CanvasPlace place = CanvasPlace::of(m_view, ratio);
    const QSize pixels(static_cast<int>(std::ceil(width() * ratio)),
                       static_cast<int>(std::ceil(height() * ratio)));
    const QPixmap& drawing =
        m_layer.picture(pixels, place, [&](QPainter& painter, const QRect& part) {
            m_painter.draw(painter, m_scene, place, m_marks, part);
        });
    QPainter painter(this);
    // Pixel by pixel, and one rectangle after the other, which is quicker than by a ragged clip.
    painter.scale(1 / ratio, 1 / ratio);
    for (const QRect& part : event->region()) {
        const QRectF pixel(QPointF(part.topLeft()) * ratio, QSizeF(part.size()) * ratio);
        painter.setClipRect(pixel.toAlignedRect());
        painter.drawPixmap(0, 0, drawing);
    }
    painter.setClipping(false);
    painter.setTransform(place.transform(), true);
    m_painter.drawOverlay(painter, m_scene, m_overlay,
                          place.onCanvas(QRectF(QPointF(), QSizeF(pixels))));
    painter.resetTransform();
    if (m_showsFocus && m_selectedNodes.empty() && !m_marks.selectedWire) {
        painter.setPen(QPen(Theme::current().colors().focus, 2));
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(rect().adjusted(1, 1, -1, -1));
    }
    event->accept();
}

void FlowCanvas::redraw() {
    m_layer.spoilAll();
    updateOverlay();
}

void FlowCanvas::redraw(const QRectF& onCanvas) {
    m_layer.spoil(onCanvas);
    updateOverlay(onCanvas);
}

void FlowCanvas::redrawCard(const std::optional<Uuid>& nodeID) {
    if (const CanvasCard* card = nodeID ? m_scene.card(*nodeID) : nullptr) {
        redraw(canvas::cardReach(m_scene.centre(*card)));
    }
}

void FlowCanvas::redrawWire(const std::optional<Uuid>& edgeID) {
    const auto wire =
        std::ranges::find_if(m_scene.wires(), [&](const CanvasWire& w) { return w.id == edgeID; });
    if (wire != m_scene.wires().end()) {
        redraw(m_scene.reach(*wire));
    }
}

void FlowCanvas::updateOverlay(const QRectF& onCanvas) {
    if (const QRect seen = widgetRect(onCanvas); !seen.isEmpty()) {
        update(seen.adjusted(-1, -1, 1, 1));
    }
}

void FlowCanvas::updateOverlay() {
    QRegion region(rect());
    for (const QWidget* overlay :
         {static_cast<QWidget*>(m_palette), static_cast<QWidget*>(m_controls),
          static_cast<QWidget*>(m_banner), static_cast<QWidget*>(m_minimap)}) {
        if (overlay->isVisible()) {
            // The canvas is seen at its round corners.
            constexpr int corner = spacing::cardCorner;
            region -= overlay->geometry().adjusted(corner, 0, -corner, 0);
            region -= overlay->geometry().adjusted(0, corner, 0, -corner);
        }
    }
    update(region);
}

void FlowCanvas::resizeEvent(QResizeEvent* event) {
    StateView::resizeEvent(event);
    setCanvasView(m_view);
    placeOverlays();
}

void FlowCanvas::placeOverlays() {
    const int gap = spacing::medium;
    constexpr int roomForWords = 380;
    m_palette->setCompact(width() < roomForWords);
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
    m_overlay.pulse += step;
    m_overlay.pulse -= std::floor(m_overlay.pulse);
    for (const CanvasCard& card : m_scene.cards()) {
        if (card.runState == FlowRunHighlight::NodeState::active) {
            updateOverlay(canvas::cardReach(m_scene.centre(card)));
        }
    }
    for (const CanvasWire& wire : m_scene.wires()) {
        if (wire.isLast) {
            updateOverlay(m_scene.reach(wire));
        }
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
    } else if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter ||
               event->key() == Qt::Key_Space) {
        const CanvasCard* card =
            m_selectedNodes.size() == 1 ? m_scene.card(*m_selectedNodes.begin()) : nullptr;
        if (card && card->step > 0) {
            showRunDetail(card->id);
        } else if (card && event->key() != Qt::Key_Space) {
            activate(*card);
        } else if (m_marks.selectedWire) {
            Q_EMIT inspected();
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
    m_showsFocus = event->reason() == Qt::TabFocusReason ||
                   event->reason() == Qt::BacktabFocusReason ||
                   event->reason() == Qt::ShortcutFocusReason;
    redrawSelection();
    StateView::focusInEvent(event);
}

void FlowCanvas::focusOutEvent(QFocusEvent* event) {
    m_marks.hasFocus = false;
    redrawSelection();
    m_showsFocus = false;
    StateView::focusOutEvent(event);
}

} // namespace ombrel

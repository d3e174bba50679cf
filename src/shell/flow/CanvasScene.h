#pragma once

#include "core/AppState.h"
#include "flows/CanvasMove.h"
#include "shell/flow/CanvasCard.h"
#include "shell/flow/CanvasWire.h"
#include "shell/flow/WireCurve.h"

#include <QPointF>

#include <optional>
#include <unordered_map>
#include <vector>

namespace ombrel {

// What the canvas of a flow shows: its cards in the order of the nodes, which is also that of
// drawing, and its wires.
class CanvasScene {
  public:
    CanvasScene() = default;
    // Empty when there is no such flow.
    CanvasScene(const AppState& state, Uuid flowID);

    const std::vector<CanvasCard>& cards() const { return m_cards; }
    const std::vector<CanvasWire>& wires() const { return m_wires; }
    // The card of the first node with the id, or null.
    const CanvasCard* card(Uuid nodeID) const;
    bool hasRun() const { return m_hasRun; }
    bool isLive() const { return m_isLive; }

    // A move that goes on; what follows is seen with it.
    void setMove(const CanvasMove& move) { m_move = move; }
    QPointF centre(const CanvasCard& card) const;
    WireCurve curve(const CanvasWire& wire) const;
    // All that is drawn of a wire.
    QRectF reach(const CanvasWire& wire) const;

    // The wire within `reach` that is nearest, or null.
    const CanvasWire* wireAt(QPointF point, double reach) const;

  private:
    void addCards(const AppState& state, const Flow& flow);
    void addRun(const FlowRunHighlight& highlight);

    std::vector<CanvasCard> m_cards;
    std::vector<CanvasWire> m_wires;
    std::unordered_map<Uuid, std::size_t> m_places;
    CanvasMove m_move;
    bool m_hasRun = false;
    bool m_isLive = false;
};

} // namespace ombrel

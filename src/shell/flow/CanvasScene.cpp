#include "shell/flow/CanvasScene.h"

#include "flows/FlowEditorTexts.h"
#include "flows/FlowValidator.h"
#include "flows/RunHighlight.h"
#include "shell/QtText.h"
#include "shell/flow/CanvasMetrics.h"

#include <string>
#include <string_view>

namespace ombrel {

namespace {

// The beginning of a text as one short line.
QString oneLine(const std::string& text) {
    constexpr std::size_t most = 160; // bytes
    std::string_view beginning = text;
    if (beginning.size() > most) {
        beginning = beginning.substr(0, most);
        // Not in the middle of a character.
        while (!beginning.empty() &&
               (static_cast<unsigned char>(beginning.back()) & 0xC0) == 0x80) {
            beginning.remove_suffix(1);
        }
        beginning.remove_suffix(beginning.empty() ? 0 : 1);
    }
    return toQt(beginning).simplified();
}

QString shownValue(const FlowNodeRunValue& value) {
    for (const auto* text : {&value.error, &value.output, &value.input}) {
        if (*text) {
            return oneLine(**text);
        }
    }
    return {};
}

} // namespace

CanvasScene::CanvasScene(const AppState& state, Uuid flowID) {
    const Flow* flow = state.flow(flowID);
    if (!flow) {
        return;
    }
    addCards(state, *flow);
    for (const FlowEdge& edge : flow->edges) {
        const auto from = m_places.find(edge.fromNodeID);
        const auto to = m_places.find(edge.toNodeID);
        if (from != m_places.end() && to != m_places.end()) {
            m_wires.push_back({edge.id, from->second, to->second,
                               edge.fromPort ? toQt(*edge.fromPort) : QString(), false, false});
        }
    }
    const auto& highlight = *state.flowRunHighlight;
    if (highlight && highlight->flowID == flowID) {
        addRun(*highlight);
    }
}

void CanvasScene::addCards(const AppState& state, const Flow& flow) {
    m_cards.reserve(flow.nodes.size());
    for (const FlowNode& node : flow.nodes) {
        m_places.try_emplace(node.id, m_cards.size());
        CanvasCard card;
        card.id = node.id;
        card.kind = node.kind.value.index();
        card.title = toQt(nodeTitle(node, *state.agents, *state.tools)).simplified();
        card.subtitle = toQt(nodeSubtitle(node, flow, *state.agents)).simplified();
        card.centre = {node.position.x, node.position.y};
        card.drawsOnKnowledge = drawsOnKnowledge(node, *state.agents);
        m_cards.push_back(std::move(card));
    }
    for (const FlowIssue& issue : FlowValidator::validate(flow, *state.agents, *state.tools)) {
        const auto place = issue.nodeID ? m_places.find(*issue.nodeID) : m_places.end();
        if (place == m_places.end()) {
            continue;
        }
        CanvasCard& card = m_cards[place->second];
        if (!card.mark || issue.severity == FlowIssue::Severity::error) {
            card.mark = issue.severity;
        }
        card.issues +=
            (card.issues.isEmpty() ? QString() : QStringLiteral("\n")) + toQt(issue.message);
    }
}

void CanvasScene::addRun(const FlowRunHighlight& highlight) {
    m_hasRun = true;
    m_isLive = highlight.isLive;
    for (CanvasCard& card : m_cards) {
        card.runState = ombrel::state(highlight, card.id);
        if (const auto value = highlight.values.find(card.id); value != highlight.values.end()) {
            card.step = value->second.step;
            card.runValue = shownValue(value->second);
        }
    }
    for (CanvasWire& wire : m_wires) {
        wire.isTaken = highlight.visitedEdgeIDs.contains(wire.id);
        wire.isLast = highlight.isLive && highlight.lastEdgeID == wire.id;
    }
}

const CanvasCard* CanvasScene::card(Uuid nodeID) const {
    const auto place = m_places.find(nodeID);
    return place == m_places.end() ? nullptr : &m_cards[place->second];
}

QPointF CanvasScene::centre(const CanvasCard& card) const {
    return m_move.nodes.contains(card.id)
               ? card.centre + QPointF(m_move.translation.width, m_move.translation.height)
               : card.centre;
}

WireCurve CanvasScene::curve(const CanvasWire& wire) const {
    return {canvas::outputHandle(centre(m_cards[wire.from])),
            canvas::inputHandle(centre(m_cards[wire.to]))};
}

QRectF CanvasScene::reach(const CanvasWire& wire) const {
    constexpr double margin = 10;
    const WireCurve shape = curve(wire);
    const QRectF line = shape.bounds().adjusted(-margin, -margin, margin, margin);
    return wire.port.isEmpty() ? line : line | canvas::portReach(shape.at(0.5));
}

const CanvasWire* CanvasScene::wireAt(QPointF point, double reach) const {
    const CanvasWire* nearest = nullptr;
    for (const CanvasWire& wire : m_wires) {
        const WireCurve shape = curve(wire);
        if (!shape.bounds().adjusted(-reach, -reach, reach, reach).contains(point)) {
            continue;
        }
        if (const double distance = shape.distanceTo(point); distance <= reach) {
            reach = distance;
            nearest = &wire;
        }
    }
    return nearest;
}

} // namespace ombrel

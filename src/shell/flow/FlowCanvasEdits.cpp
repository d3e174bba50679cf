#include "shell/flow/FlowCanvas.h"

#include "core/FlowPalette.h"
#include "core/JsonDecoder.h"
#include "core/JsonEncoder.h"
#include "flows/FlowEditorTexts.h"
#include "flows/FlowFragment.h"
#include "flows/FlowLayout.h"
#include "shell/QtText.h"
#include "shell/design/Icon.h"
#include "shell/design/LongText.h"

#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QMenu>
#include <QMimeData>

#include <algorithm>
#include <utility>

namespace ombrel {

namespace {

constexpr double pasteStep = 28;
constexpr auto fragmentFormat = "application/x-ombrel-flow-nodes";

bool isEnd(const FlowNode& node) {
    return std::holds_alternative<FlowNodeKind::End>(node.kind.value);
}

} // namespace

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
                    connect(targets->addAction(actionText(other.title)), &QAction::triggered, this,
                            [this, id, to = other.id] { connectNodes(id, to); });
                }
            }
        });
    }
    const std::vector<FlowEdge> leaving = flow()->outgoingEdges(id);
    if (!leaving.empty()) {
        QMenu* doomed = menu.addMenu(tr("Remove Connection"));
        doomed->setObjectName(QStringLiteral("canvas.menu.disconnect"));
        for (const FlowEdge& edge : leaving) {
            const QString target =
                toQt(nodeTitle(*flow(), edge.toNodeID, *state().agents, *state().tools));
            const QString text =
                edge.fromPort ? toQt(*edge.fromPort) + QStringLiteral(" \u2192 ") + target : target;
            connect(doomed->addAction(actionText(text)), &QAction::triggered, this,
                    [this, edgeID = edge.id] { state().deleteFlowEdge(edgeID, m_flowID); });
        }
    }
    menu.addSeparator();
    // Start stays, and isn't copied.
    const auto count = std::ranges::count_if(m_selectedNodes, [this](Uuid chosenID) {
        const CanvasCard* other = m_scene.card(chosenID);
        return other && !other->isStart();
    });
    if (count > 0) {
        add("copy", tr("Copy"), [this] { copy(); })->setShortcut(QKeySequence::Copy);
        add("duplicate", tr("Duplicate"), [this] {
            duplicateSelection();
        })->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_D));
        menu.addSeparator();
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

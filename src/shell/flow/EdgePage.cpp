#include "shell/flow/EdgePage.h"

#include "flows/FlowEditorTexts.h"
#include "shell/QtText.h"
#include "shell/design/Button.h"
#include "shell/design/FactList.h"
#include "shell/design/Named.h"
#include "shell/design/SectionTitle.h"
#include "shell/design/TextLabel.h"
#include "shell/flow/FormField.h"

#include <QVBoxLayout>

#include <utility>

namespace ombrel {

EdgePage::EdgePage(std::shared_ptr<AppState> state, Uuid flowID, QWidget* parent)
    : QWidget(parent), m_state(std::move(state)), m_flowID(flowID), m_facts(new FactList) {
    setObjectName(QStringLiteral("inspector.edge"));
    QVBoxLayout* column = makeInspectorColumn(this);
    column->addWidget(new SectionTitle(tr("CONNECTION"), {}, TextRole::overline));
    column->addWidget(m_facts);
    auto* note =
        (new TextLabel(toQt(fieldMappingNote), TextRole::caption, TextLabel::Ink::secondary))
            ->wrapping();
    note->setObjectName(QStringLiteral("inspector.edge.note"));
    column->addWidget(note);
    auto* remove = named(makeButton(tr("Remove Connection"), ButtonKind::danger),
                         QStringLiteral("inspector.edge.remove"), tr("Remove Connection"));
    column->addWidget(remove, 0, Qt::AlignLeft);
    column->addStretch(1);
    connect(remove, &QPushButton::clicked, this, [this] {
        if (m_edgeID) {
            m_state->deleteFlowEdge(*m_edgeID, m_flowID);
        }
    });
}

void EdgePage::showEdge(const Flow& flow, const FlowEdge& edge) {
    m_edgeID = edge.id;
    const auto title = [&](Uuid id) {
        return toQt(nodeTitle(flow, id, *m_state->agents, *m_state->tools));
    };
    m_facts->setFact(QStringLiteral("from"), tr("From"), title(edge.fromNodeID));
    if (edge.fromPort) {
        m_facts->setFact(QStringLiteral("port"), tr("Port"), toQt(*edge.fromPort));
    } else {
        m_facts->setFact(QStringLiteral("port"), tr("Port"), tr("Output"));
    }
    m_facts->setFact(QStringLiteral("to"), tr("To"), title(edge.toNodeID));
}

} // namespace ombrel

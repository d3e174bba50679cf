#include "shell/agents/AgentKnowledgeEditor.h"

#include "agents/AgentTexts.h"
#include "shell/QtText.h"
#include "shell/agents/AttachmentRow.h"
#include "shell/design/Card.h"
#include "shell/design/SectionTitle.h"
#include "shell/design/Spacing.h"
#include "shell/design/TextLabel.h"

#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace ombrel {

AgentKnowledgeEditor::AgentKnowledgeEditor(std::shared_ptr<AppState> shownState, Uuid id,
                                           QWidget* parentWidget)
    : AgentPart(std::move(shownState), id, parentWidget), m_column(new QVBoxLayout),
      m_empty((new TextLabel(toQt(noRagIndexesText), TextRole::body, TextLabel::Ink::secondary))
                  ->wrapping()) {
    m_empty->setObjectName(QStringLiteral("agent.knowledge.empty"));
    auto* card = new Card;
    card->content()->addWidget(new SectionTitle(tr("KNOWLEDGE (RAG)"), {}, TextRole::overline));
    card->content()->addWidget(m_empty);
    m_column->setSpacing(spacing::tight);
    card->content()->addLayout(m_column);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(card);
    watch(state().ragIndexes);
}

Uuid AgentKnowledgeEditor::idOf(const AttachmentRow* row) const {
    const auto index = static_cast<std::size_t>(std::ranges::find(m_rows, row) - m_rows.begin());
    const auto& indexes = *state().ragIndexes;
    return index < indexes.size() ? indexes[index].id : Uuid();
}

void AgentKnowledgeEditor::addRow() {
    auto* row =
        new AttachmentRow(QStringLiteral("agent.knowledge.") + QString::number(m_rows.size()));
    m_rows.append(row);
    m_column->addWidget(row);
    connect(row, &AttachmentRow::attachedChanged, this,
            [this, row](bool attached) { state().setRAGAttached(agentID(), idOf(row), attached); });
    connect(row, &AttachmentRow::topKChanged, this,
            [this, row](int topK) { state().setRAGTopK(agentID(), idOf(row), topK); });
    connect(row, &AttachmentRow::thresholdChanged, this, [this, row](double threshold) {
        state().setRAGThreshold(agentID(), idOf(row), threshold);
    });
}

void AgentKnowledgeEditor::refresh() {
    const Agent* shown = agent();
    if (!shown) {
        return;
    }
    const auto& indexes = *state().ragIndexes;
    while (m_rows.size() < std::ssize(indexes)) {
        addRow();
    }
    while (m_rows.size() > std::ssize(indexes)) {
        delete m_rows.takeLast();
    }
    for (std::size_t i = 0; i < indexes.size(); ++i) {
        const auto found = std::ranges::find(shown->ragAttachments, indexes[i].id,
                                             &AgentRAGAttachment::ragIndexID);
        m_rows[static_cast<qsizetype>(i)]->showIndex(
            indexes[i], found == shown->ragAttachments.end() ? nullptr : &*found);
    }
    m_empty->setVisible(indexes.empty());
}

} // namespace ombrel

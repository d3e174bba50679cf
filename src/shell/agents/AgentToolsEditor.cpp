#include "shell/agents/AgentToolsEditor.h"

#include "agents/AgentTexts.h"
#include "shell/QtText.h"
#include "shell/design/Card.h"
#include "shell/design/ElidedCheckBox.h"
#include "shell/design/MessageText.h"
#include "shell/design/Named.h"
#include "shell/design/SectionTitle.h"
#include "shell/design/Spacing.h"
#include "shell/design/TextLabel.h"

#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace ombrel {

AgentToolsEditor::AgentToolsEditor(std::shared_ptr<AppState> shownState, Uuid id,
                                   QWidget* parentWidget)
    : AgentPart(std::move(shownState), id, parentWidget), m_column(new QVBoxLayout),
      m_empty((new TextLabel(toQt(noToolsText), TextRole::body, TextLabel::Ink::secondary))
                  ->wrapping()) {
    m_empty->setObjectName(QStringLiteral("agent.tools.empty"));
    auto* card = new Card;
    card->content()->addWidget(
        new SectionTitle(tr("TOOLS"), toQt(toolsSubtitle), TextRole::overline));
    card->content()->addWidget(m_empty);
    m_column->setSpacing(spacing::hair);
    card->content()->addLayout(m_column);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(card);
    watch(state().tools);
}

void AgentToolsEditor::addRow() {
    const auto index = static_cast<std::size_t>(m_rows.size());
    auto* box = new ElidedCheckBox;
    box->setObjectName(QStringLiteral("agent.tools.") + QString::number(index));
    auto* about = new MessageText(TextRole::caption, TextLabel::Ink::secondary);
    about->setContentsMargins(spacing::wide + spacing::tight, 0, 0, spacing::tight);
    m_column->addWidget(box);
    m_column->addWidget(about);
    m_rows.append({box, about});
    connect(box, &QCheckBox::clicked, this, [this, index](bool used) { setUsed(index, used); });
}

void AgentToolsEditor::setUsed(std::size_t index, bool used) {
    if (index >= state().tools->size()) {
        return;
    }
    const Uuid tool = (*state().tools)[index].id;
    edit([&](Agent& edited) {
        const bool isUsed = std::ranges::find(edited.toolIDs, tool) != edited.toolIDs.end();
        if (used && !isUsed) {
            edited.toolIDs.push_back(tool);
        } else if (!used) {
            std::erase(edited.toolIDs, tool);
        }
    });
}

void AgentToolsEditor::refresh() {
    const Agent* shown = agent();
    if (!shown) {
        return;
    }
    const auto& tools = *state().tools;
    const auto count = static_cast<qsizetype>(tools.size());
    while (m_rows.size() < count) {
        addRow();
    }
    while (m_rows.size() > count) {
        const Row row = m_rows.takeLast();
        delete row.box;
        delete row.about;
    }
    for (qsizetype i = 0; i < count; ++i) {
        const ToolDefinition& tool = tools[static_cast<std::size_t>(i)];
        const Row& row = m_rows[i];
        row.box->setName(tool.name.empty() ? tr("(unnamed)") : toQt(tool.name));
        row.box->setChecked(std::ranges::find(shown->toolIDs, tool.id) != shown->toolIDs.end());
        row.about->setText(toQt(tool.description));
        row.about->setVisible(!tool.description.empty());
    }
    m_empty->setVisible(count == 0);
}

} // namespace ombrel

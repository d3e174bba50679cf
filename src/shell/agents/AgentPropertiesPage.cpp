#include "shell/agents/AgentPropertiesPage.h"

#include "shell/agents/AgentKnowledgeEditor.h"
#include "shell/agents/AgentToolsEditor.h"
#include "shell/agents/ContextFieldsEditor.h"
#include "shell/agents/InstructionsEditor.h"
#include "shell/agents/OutputKindEditor.h"
#include "shell/agents/PropertyListEditor.h"
#include "shell/design/Card.h"
#include "shell/design/SectionTitle.h"
#include "shell/design/Spacing.h"

#include <QVBoxLayout>

#include <utility>

namespace ombrel {

AgentPropertiesPage::AgentPropertiesPage(std::shared_ptr<AppState> shownState, Uuid id,
                                         QWidget* parentWidget)
    : AgentPart(std::move(shownState), id, parentWidget),
      m_input(new PropertyListEditor(QStringLiteral("agent.input"), {}, true)),
      m_output(new OutputKindEditor(QStringLiteral("agent.output"), state().platform().executor)) {
    setObjectName(QStringLiteral("agent.properties"));
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(spacing::large);
    column->addWidget(new InstructionsEditor(sharedState(), id));
    column->addWidget(new ContextFieldsEditor(sharedState(), id));
    const auto addCard = [column](const QString& title, QWidget* inside) {
        auto* card = new Card;
        card->content()->addWidget(new SectionTitle(title, {}, TextRole::overline));
        card->content()->addWidget(inside);
        column->addWidget(card);
    };
    addCard(tr("INPUT"), m_input);
    addCard(tr("OUTPUT"), m_output);
    column->addWidget(new AgentToolsEditor(sharedState(), id));
    column->addWidget(new AgentKnowledgeEditor(sharedState(), id));
    connect(m_input, &PropertyListEditor::changed, this,
            [this] { edit([this](Agent& edited) { edited.input = m_input->properties(); }); });
    connect(m_output, &OutputKindEditor::edited, this, [this](const AgentOutputKind& output) {
        edit([&](Agent& edited) { edited.output = output; });
    });
}

void AgentPropertiesPage::refresh() {
    if (const Agent* shown = agent()) {
        m_input->setProperties(shown->input);
        m_output->showOutput(shown->output);
    }
}

} // namespace ombrel

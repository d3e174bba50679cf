#include "shell/SummaryPage.h"

#include "shell/QtText.h"
#include "shell/ThingTitle.h"
#include "shell/design/Card.h"
#include "shell/design/FactList.h"
#include "shell/design/IconView.h"
#include "shell/design/PageHeader.h"
#include "shell/design/SectionTitle.h"
#include "shell/design/Spacing.h"
#include "shell/design/TextLabel.h"

#include <QHBoxLayout>

#include <utility>

namespace ombrel {

SummaryPage::SummaryPage(std::shared_ptr<AppState> shownState, QWidget* parent)
    : StateView(std::move(shownState), parent), m_header(new PageHeader({}, {})),
      m_facts(new FactList),
      m_command((new TextLabel({}, TextRole::code, TextLabel::Ink::secondary))->selectable()) {
    setObjectName(QStringLiteral("summary"));
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(spacing::page, spacing::wide, spacing::page, spacing::page);
    column->setSpacing(spacing::wide);
    column->addWidget(m_header);
    auto* card = new Card;
    card->content()->addWidget(m_facts);
    column->addWidget(card);
    auto* hint = new Card;
    hint->content()->addWidget(
        new SectionTitle(tr("On the command line"),
                         tr("It is edited and run with this command; reopen the project to see "
                            "what it changed.")));
    auto* row = new QHBoxLayout;
    row->setSpacing(spacing::small);
    row->addWidget(new IconView(QStringLiteral("terminal"), Tone::neutral, spacing::icon));
    row->addWidget(m_command, 1);
    m_command->setObjectName(QStringLiteral("summary.command"));
    hint->content()->addLayout(row);
    column->addWidget(hint);
    column->addStretch(1);
    watchNavigatorItem();
    watch(state().agents);
    watch(state().tools);
    watch(state().flows);
}

void SummaryPage::refresh() {
    using Selection = NavigatorSelection;
    const auto& shown = state().selectedNavigatorItem().value;
    if (const auto* agent = std::get_if<Selection::Agent>(&shown)) {
        if (const Agent* found = state().agent(agent->id)) {
            show(*found);
        }
    } else if (const auto* tool = std::get_if<Selection::Tool>(&shown)) {
        if (const ToolDefinition* found = state().tool(tool->id)) {
            show(*found);
        }
    } else if (const auto* flow = std::get_if<Selection::Flow>(&shown)) {
        if (const Flow* found = state().flow(flow->id)) {
            show(*found);
        }
    }
}

void SummaryPage::show(const Agent& agent) {
    setFacts(titleOf(agent), toQt(agent.summary),
             {{tr("Instructions"), toQt(agent.instructions)},
              {tr("Input"), numberText(std::ssize(agent.input))},
              {tr("Output"), toQt(rawValue(agent.output.kind()))},
              {tr("Tools"), numberText(std::ssize(agent.toolIDs))},
              {tr("RAG indexes"), numberText(std::ssize(agent.ragAttachments))},
              {tr("Evaluation cases"), numberText(std::ssize(agent.evaluationCases))}},
             QStringLiteral("ombrel agent --help"));
}

void SummaryPage::show(const ToolDefinition& tool) {
    setFacts(titleOf(tool), toQt(tool.description),
             {{tr("Arguments"), numberText(std::ssize(tool.arguments))},
              {tr("Output"), toQt(rawValue(tool.output.kind()))},
              {tr("Mock response"), toQt(tool.mockResponseJSON)}},
             QStringLiteral("ombrel tool --help"));
}

void SummaryPage::show(const Flow& flow) {
    setFacts(titleOf(flow), {},
             {{tr("Kind"), toQt(rawValue(flow.kind))},
              {tr("Nodes"), numberText(std::ssize(flow.nodes))},
              {tr("Edges"), numberText(std::ssize(flow.edges))},
              {tr("Input"), numberText(std::ssize(flow.startInput))},
              {tr("Context fields"), numberText(std::ssize(flow.contextFields))}},
             QStringLiteral("ombrel flow --help"));
}

void SummaryPage::setFacts(const QString& title, const QString& subtitle,
                           const std::vector<std::pair<QString, QString>>& facts,
                           const QString& command) {
    m_header->setTitle(title);
    m_header->setSubtitle(subtitle);
    m_command->setText(command);
    for (std::size_t i = 0; i < std::max(m_shownFacts, facts.size()); ++i) {
        const QString name = QString::number(i);
        if (i < facts.size()) {
            m_facts->setFact(name, facts[i].first, facts[i].second);
        } else {
            m_facts->removeFact(name);
        }
    }
    m_shownFacts = facts.size();
}

} // namespace ombrel

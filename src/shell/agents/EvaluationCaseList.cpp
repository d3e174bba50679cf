#include "shell/agents/EvaluationCaseList.h"

#include "agents/AgentEvaluation.h"
#include "agents/AgentTexts.h"
#include "shell/QtText.h"
#include "shell/agents/EvaluationCaseCard.h"

#include <iterator>
#include <utility>

namespace ombrel {

EvaluationCaseList::EvaluationCaseList(const QString& name, std::shared_ptr<AppState> shownState,
                                       Uuid agentID, QWidget* parentWidget)
    : PagedRows(name, {{}, tr("Add Case"), toQt(noCasesText)}, parentWidget),
      m_state(std::move(shownState)), m_agentID(agentID) {}

void EvaluationCaseList::showCases(const std::set<Uuid>& runningCaseIDs) {
    m_runningCaseIDs = runningCaseIDs;
    showRows();
}

int EvaluationCaseList::rowCount() const {
    const Agent* agent = m_state->agent(m_agentID);
    return agent ? static_cast<int>(std::ssize(agent->evaluationCases)) : 0;
}

const AgentEvaluationCase* EvaluationCaseList::caseOf(const QWidget* card) const {
    const int index = indexOf(card);
    return index < rowCount()
               ? &m_state->agent(m_agentID)->evaluationCases[static_cast<std::size_t>(index)]
               : nullptr;
}

QWidget* EvaluationCaseList::makeRow(const QString& name) {
    auto* card = new EvaluationCaseCard(name);
    connect(card, &EvaluationCaseCard::runRequested, this, [this, card] {
        if (const auto* shown = caseOf(card)) {
            Q_EMIT runRequested(*shown);
        }
    });
    connect(card, &EvaluationCaseCard::removeRequested, this, [this, card] {
        if (const auto* shown = caseOf(card)) {
            removeCase(*m_state, m_agentID, Uuid(shown->id));
        }
    });
    connect(card, &EvaluationCaseCard::inputEdited, this, [this, card](const QString& input) {
        if (const auto* shown = caseOf(card)) {
            setCaseInput(*m_state, m_agentID, Uuid(shown->id), fromQt(input));
        }
    });
    connect(card, &EvaluationCaseCard::enumCaseChosen, this, [this, card](const QString& chosen) {
        if (const auto* shown = caseOf(card)) {
            setExpectedEnumCase(*m_state, m_agentID, Uuid(shown->id), fromQt(chosen));
        }
    });
    connect(card, &EvaluationCaseCard::fieldEdited, this,
            [this, card](const QString& field, const QString& value) {
                if (const auto* shown = caseOf(card)) {
                    setExpectedObjectField(*m_state, m_agentID, Uuid(shown->id), fromQt(field),
                                           fromQt(value));
                }
            });
    return card;
}

void EvaluationCaseList::showRow(QWidget* row, int index) {
    const Agent& agent = *m_state->agent(m_agentID);
    static_cast<EvaluationCaseCard*>(row)->showCase(
        agent, agent.evaluationCases[static_cast<std::size_t>(index)], index + 1, m_runningCaseIDs);
}

void EvaluationCaseList::appendRow() {
    addCase(*m_state, m_agentID);
    showRows();
}

} // namespace ombrel

#include "shell/agents/AgentEvaluationPage.h"

#include "agents/AgentTexts.h"
#include "shell/QtText.h"
#include "shell/agents/EvaluationCaseCard.h"
#include "shell/design/BusyButton.h"
#include "shell/design/Button.h"
#include "shell/design/Icon.h"
#include "shell/design/Named.h"
#include "shell/design/SectionTitle.h"
#include "shell/design/Spacing.h"
#include "shell/design/TextLabel.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

#include <utility>

namespace ombrel {

AgentEvaluationPage::AgentEvaluationPage(std::shared_ptr<AppState> shownState, Uuid id,
                                         QWidget* parentWidget)
    : AgentPart(std::move(shownState), id, parentWidget),
      m_runAll(named(new BusyButton(tr("Run All"), ButtonKind::primary),
                     QStringLiteral("agent.cases.runAll"), tr("Run All"))),
      m_empty((new TextLabel(toQt(noCasesText), TextRole::body, TextLabel::Ink::secondary))
                  ->wrapping()),
      m_column(new QVBoxLayout),
      m_add(named(makeButton(tr("Add Case")), QStringLiteral("agent.cases.add"), tr("Add Case"))) {
    setObjectName(QStringLiteral("agent.evaluation"));
    m_empty->setObjectName(QStringLiteral("agent.cases.empty"));
    m_add->setIcon(themeIcon(QStringLiteral("plus")));
    auto* title = new SectionTitle(toQt(evaluationCasesHeading), toQt(evaluationCasesSubtitle),
                                   TextRole::overline);
    auto* head = new QHBoxLayout;
    head->setSpacing(spacing::small);
    head->addWidget(title, 1);
    head->addWidget(m_runAll);
    auto* foot = new QHBoxLayout;
    foot->addWidget(m_add);
    foot->addStretch(1);
    m_column->setSpacing(spacing::medium);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(spacing::medium);
    column->addLayout(head);
    column->addWidget(m_empty);
    column->addLayout(m_column);
    column->addLayout(foot);
    m_runningChanged = m_running->observe([this] { refreshLater(); });
    connect(m_runAll, &QPushButton::clicked, this, [this] {
        auto running = runAllCases(sharedState(), agentID(), m_running);
        spawn(std::move(running));
        refresh();
    });
    connect(m_add, &QPushButton::clicked, this, [this] {
        ombrel::addCase(state(), agentID());
        refresh();
        if (!m_cards.isEmpty()) {
            m_cards.back()->setFocus(Qt::TabFocusReason);
        }
    });
}

const AgentEvaluationCase* AgentEvaluationPage::caseAt(std::size_t index) const {
    const Agent* shown = agent();
    return shown && index < shown->evaluationCases.size() ? &shown->evaluationCases[index]
                                                          : nullptr;
}

void AgentEvaluationPage::addCard() {
    const auto index = static_cast<std::size_t>(m_cards.size());
    auto* card =
        new EvaluationCaseCard(QStringLiteral("agent.case.") + QString::number(m_cards.size()));
    m_cards.append(card);
    m_column->addWidget(card);
    connect(card, &EvaluationCaseCard::runRequested, this, [this, index] {
        if (const auto* shown = caseAt(index)) {
            auto running = runCase(sharedState(), agentID(), *shown, m_running);
            spawn(std::move(running));
            refresh();
        }
    });
    connect(card, &EvaluationCaseCard::removeRequested, this, [this, index] {
        if (const auto* shown = caseAt(index)) {
            removeCase(state(), agentID(), Uuid(shown->id));
        }
    });
    connect(card, &EvaluationCaseCard::inputEdited, this, [this, index](const QString& input) {
        if (const auto* shown = caseAt(index)) {
            setCaseInput(state(), agentID(), Uuid(shown->id), fromQt(input));
        }
    });
    connect(card, &EvaluationCaseCard::enumCaseChosen, this, [this, index](const QString& name) {
        if (const auto* shown = caseAt(index)) {
            setExpectedEnumCase(state(), agentID(), Uuid(shown->id), fromQt(name));
        }
    });
    connect(card, &EvaluationCaseCard::fieldEdited, this,
            [this, index](const QString& name, const QString& value) {
                if (const auto* shown = caseAt(index)) {
                    setExpectedObjectField(state(), agentID(), Uuid(shown->id), fromQt(name),
                                           fromQt(value));
                }
            });
}

void AgentEvaluationPage::refresh() {
    const Agent* shown = agent();
    if (!shown) {
        return;
    }
    const auto& running = **m_running;
    const auto& cases = shown->evaluationCases;
    while (m_cards.size() > std::ssize(cases)) {
        EvaluationCaseCard* card = m_cards.takeLast();
        card->hide();
        card->deleteLater();
    }
    while (m_cards.size() < std::ssize(cases)) {
        addCard();
    }
    for (std::size_t i = 0; i < cases.size(); ++i) {
        m_cards[static_cast<qsizetype>(i)]->showCase(*shown, cases[i], static_cast<int>(i) + 1,
                                                     running);
    }
    m_empty->setVisible(cases.empty());
    m_runAll->setBusy(!running.empty());
    m_runAll->setEnabled(canRunAllCases(*shown, running));
}

} // namespace ombrel

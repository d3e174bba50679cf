#include "shell/agents/AgentEvaluationPage.h"

#include "agents/AgentTexts.h"
#include "shell/QtText.h"
#include "shell/agents/EvaluationCaseList.h"
#include "shell/design/BusyButton.h"
#include "shell/design/Named.h"
#include "shell/design/SectionTitle.h"
#include "shell/design/Spacing.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

#include <utility>

namespace ombrel {

AgentEvaluationPage::AgentEvaluationPage(std::shared_ptr<AppState> shownState, Uuid id,
                                         QWidget* parentWidget)
    : AgentPart(std::move(shownState), id, parentWidget),
      m_runAll(named(new BusyButton(tr("Run All"), ButtonKind::primary),
                     QStringLiteral("agent.cases.runAll"), tr("Run All"))),
      m_cases(new EvaluationCaseList(QStringLiteral("agent.cases"), sharedState(), id)) {
    setObjectName(QStringLiteral("agent.evaluation"));
    auto* title = new SectionTitle(toQt(evaluationCasesHeading), toQt(evaluationCasesSubtitle),
                                   TextRole::overline);
    auto* head = new QHBoxLayout;
    head->setSpacing(spacing::small);
    head->addWidget(title, 1);
    head->addWidget(m_runAll);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(spacing::medium);
    column->addLayout(head);
    column->addWidget(m_cases);
    m_runningChanged = m_running->observe([this] { refreshLater(); });
    connect(m_runAll, &QPushButton::clicked, this, [this] {
        auto running = runAllCases(sharedState(), agentID(), m_running);
        spawn(std::move(running));
        refresh();
    });
    connect(m_cases, &EvaluationCaseList::runRequested, this,
            [this](const AgentEvaluationCase& evaluationCase) {
                auto running = runCase(sharedState(), agentID(), evaluationCase, m_running);
                spawn(std::move(running));
                refresh();
            });
}

void AgentEvaluationPage::refresh() {
    const Agent* shown = agent();
    if (!shown) {
        return;
    }
    const auto& running = **m_running;
    m_cases->showCases(running);
    m_runAll->setBusy(!running.empty());
    m_runAll->setEnabled(canRunAllCases(*shown, running));
}

} // namespace ombrel

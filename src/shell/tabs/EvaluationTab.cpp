#include "shell/tabs/EvaluationTab.h"

#include "evaluation/EvaluationTexts.h"
#include "shell/QtText.h"
#include "shell/design/Card.h"
#include "shell/design/FactList.h"

#include <iterator>
#include <utility>

namespace ombrel {

EvaluationTab::EvaluationTab(std::shared_ptr<AppState> shownState, StudioServices& sharedServices,
                             QWidget* parent)
    : TabPage(AppTab::evaluation, Body::scrolls, std::move(shownState), sharedServices, parent),
      m_facts(new FactList) {
    auto* card = new Card;
    card->content()->addWidget(m_facts);
    content()->addWidget(card);
    watchIndex();
}

void EvaluationTab::refresh() {
    const RAGIndex& index = state().currentIndex();
    m_facts->setFact(QStringLiteral("questions"), tr("Test questions"),
                     numberText(std::ssize(index.testQuestions)));
    for (const EvaluationCard& card : evaluationCards(state())) {
        m_facts->setFact(toQt(card.title), toQt(card.title), toQt(card.value));
    }
}

} // namespace ombrel

#include "shell/tabs/PlaygroundTab.h"

#include "shell/QtText.h"
#include "shell/design/Card.h"
#include "shell/design/FactList.h"

#include <iterator>
#include <utility>

namespace ombrel {

PlaygroundTab::PlaygroundTab(std::shared_ptr<AppState> shownState, StudioServices& sharedServices,
                             QWidget* parent)
    : TabPage(AppTab::playground, Body::scrolls, std::move(shownState), sharedServices, parent),
      m_facts(new FactList) {
    auto* card = new Card;
    card->content()->addWidget(m_facts);
    content()->addWidget(card);
    watchIndex();
}

void PlaygroundTab::refresh() {
    const RAGIndex& index = state().currentIndex();
    m_facts->setFact(QStringLiteral("question"), tr("Question"), toQt(index.playgroundQuestion));
    m_facts->setFact(QStringLiteral("answer"), tr("Answer"),
                     index.playgroundResult ? toQt(index.playgroundResult->answer)
                                            : tr("Not asked yet"));
}

} // namespace ombrel

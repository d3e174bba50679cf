#include "shell/tabs/SourcesTab.h"

#include "export/ExportReadiness.h"
#include "shell/QtText.h"
#include "shell/design/Card.h"
#include "shell/design/FactList.h"

#include <iterator>
#include <utility>

namespace ombrel {

SourcesTab::SourcesTab(std::shared_ptr<AppState> shownState, StudioServices& sharedServices,
                       QWidget* parent)
    : TabPage(AppTab::sources, Body::scrolls, std::move(shownState), sharedServices, parent),
      m_facts(new FactList) {
    auto* card = new Card;
    card->content()->addWidget(m_facts);
    content()->addWidget(card);
    watchIndex();
}

void SourcesTab::refresh() {
    const RAGIndex& index = state().currentIndex();
    m_facts->setFact(QStringLiteral("sources"), tr("Sources"),
                     numberText(std::ssize(index.sources)));
    std::int64_t tokens = 0;
    for (const SourceDocument& source : index.sources) {
        tokens += source.tokenCount;
    }
    m_facts->setFact(QStringLiteral("chunks"), tr("Chunks"), numberText(totalChunkCount(state())));
    m_facts->setFact(QStringLiteral("tokens"), tr("Tokens"), numberText(tokens));
}

} // namespace ombrel

#include "shell/tabs/IndexTab.h"

#include "export/ExportReadiness.h"
#include "shell/QtText.h"
#include "shell/design/Card.h"
#include "shell/design/FactList.h"

#include <iterator>
#include <utility>

namespace ombrel {

IndexTab::IndexTab(std::shared_ptr<AppState> shownState, StudioServices& sharedServices,
                   QWidget* parent)
    : TabPage(AppTab::index, Body::scrolls, std::move(shownState), sharedServices, parent),
      m_facts(new FactList) {
    auto* card = new Card;
    card->content()->addWidget(m_facts);
    content()->addWidget(card);
    watchIndex();
}

void IndexTab::refresh() {
    const RAGIndex& index = state().currentIndex();
    m_facts->setFact(QStringLiteral("chunks"), tr("Chunks"), numberText(totalChunkCount(state())));
    m_facts->setFact(QStringLiteral("kind"), tr("Index"),
                     toQt(rawValue(state().currentVariant().settings.index)));
    m_facts->setFact(QStringLiteral("embedded"), tr("Embedded"),
                     state().hasEmbeddingsForAllChunks() ? tr("fully embedded")
                                                         : tr("needs a build"));
    m_facts->setFact(QStringLiteral("sources"), tr("Sources"),
                     numberText(std::ssize(index.sources)));
}

} // namespace ombrel

#include "shell/tabs/SettingsTab.h"

#include "shell/QtText.h"
#include "shell/design/Card.h"
#include "shell/design/FactList.h"

#include <iterator>
#include <utility>

namespace ombrel {

SettingsTab::SettingsTab(std::shared_ptr<AppState> shownState, StudioServices& sharedServices,
                         QWidget* parent)
    : TabPage(AppTab::settings, Body::scrolls, std::move(shownState), sharedServices, parent),
      m_facts(new FactList) {
    auto* card = new Card;
    card->content()->addWidget(m_facts);
    content()->addWidget(card);
    watchIndex();
}

void SettingsTab::refresh() {
    const RAGIndex& index = state().currentIndex();
    const Variant& variant = state().currentVariant();
    m_facts->setFact(QStringLiteral("variant"), tr("Variant"), toQt(variant.summaryLabel()));
    m_facts->setFact(QStringLiteral("chunking"), tr("Chunking"),
                     toQt(rawValue(variant.settings.chunking)));
    m_facts->setFact(QStringLiteral("transform"), tr("Transform"),
                     toQt(rawValue(variant.settings.transform)));
    m_facts->setFact(QStringLiteral("variants"), tr("Variants"),
                     numberText(std::ssize(index.variants)));
}

} // namespace ombrel

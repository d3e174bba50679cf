#include "shell/tabs/ExportTab.h"

#include "export/ExportReadiness.h"
#include "shell/QtText.h"
#include "shell/design/Card.h"
#include "shell/design/FactList.h"

#include <iterator>
#include <utility>

namespace ombrel {

ExportTab::ExportTab(std::shared_ptr<AppState> shownState, StudioServices& sharedServices,
                     QWidget* parent)
    : TabPage(AppTab::exportPackage, Body::scrolls, std::move(shownState), sharedServices, parent),
      m_facts(new FactList) {
    auto* card = new Card;
    card->content()->addWidget(m_facts);
    content()->addWidget(card);
    watchIndex();
}

void ExportTab::refresh() {

    m_facts->setFact(QStringLiteral("summary"), tr("Package"), toQt(exportSummary(state())));
    for (const ChecklistRow& row : exportChecklist(state())) {
        m_facts->setFact(toQt(row.title), toQt(row.title), toQt(row.detail));
    }
}

} // namespace ombrel

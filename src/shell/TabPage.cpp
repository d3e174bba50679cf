#include "shell/TabPage.h"

#include "evaluation/EvaluationTexts.h"
#include "export/ExportReadiness.h"
#include "shell/QtText.h"
#include "shell/design/Spacing.h"

#include <QScrollArea>

#include <utility>

namespace ombrel {

TabPage::TabPage(AppTab tab, Body body, std::shared_ptr<AppState> state, StudioServices& services,
                 QWidget* parent)
    : StateView(std::move(state), parent), m_tab(tab), m_services(services),
      m_header(new PageHeader(toQt(rawValue(tab)), pageSubtitle(tab))), m_content(new QVBoxLayout) {
    setObjectName(QStringLiteral("tab.") + toQt(rawValue(tab)).toLower());
    setAccessibleName(toQt(rawValue(tab)));
    auto* page = new QWidget;
    page->setProperty("page", "true");
    page->setMaximumWidth(spacing::readable + 2 * spacing::page);
    auto* column = new QVBoxLayout(page);
    column->setContentsMargins(spacing::page, spacing::wide, spacing::page, spacing::page);
    column->setSpacing(spacing::wide);
    column->addWidget(m_header);
    m_content->setSpacing(spacing::large);
    column->addLayout(m_content, body == Body::fills ? 1 : 0);

    auto* whole = new QHBoxLayout(this);
    whole->setContentsMargins(0, 0, 0, 0);
    whole->setSpacing(0);
    if (body == Body::fills) {
        column->setContentsMargins(spacing::page, spacing::wide, spacing::page, 0);
        whole->addWidget(page, 1);
        return;
    }
    column->addStretch(1);
    auto* middle = new QWidget;
    middle->setProperty("page", "true");
    auto* row = new QHBoxLayout(middle);
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(page, 1);
    auto* area = new QScrollArea;
    area->setObjectName(objectName() + QStringLiteral(".scroll"));
    area->setAccessibleName(accessibleName());
    area->setFocusPolicy(Qt::NoFocus);
    area->setWidgetResizable(true);
    area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    area->setWidget(middle);
    whole->addWidget(area);
}

QString pageSubtitle(AppTab tab) {
    switch (tab) {
    case AppTab::project:
        return TabPage::tr("Identity and housekeeping for this project \u2014 everything here "
                           "saves like any other change (Ctrl+Z undoes it).");
    case AppTab::sources:
        return TabPage::tr("Everything the knowledge bundle is built from. See the Index tab for "
                           "how each one was actually chunked.");
    case AppTab::settings:
        return TabPage::tr("Choose how the knowledge is built and how questions are answered. "
                           "Only valid combinations can be selected.");
    case AppTab::index:
        return TabPage::tr("What Build actually produced \u2014 chunks, embeddings, and "
                           "enrichment \u2014 for every source.");
    case AppTab::evaluation:
        return toQt(evaluationAbout);
    case AppTab::playground:
        return TabPage::tr("Ask a question and see every step: the rewritten query, what was "
                           "retrieved, what fit in the prompt, and the answer.");
    case AppTab::exportPackage:
        return toQt(exportIntroduction);
    }
    return {};
}

} // namespace ombrel

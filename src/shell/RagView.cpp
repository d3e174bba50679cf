#include "shell/RagView.h"

#include "knowledge/SourceTexts.h"
#include "shell/QtText.h"
#include "shell/StudioServices.h"
#include "shell/TabPage.h"
#include "shell/TopBar.h"
#include "shell/design/FileDropArea.h"
#include "shell/design/IconView.h"
#include "shell/design/Named.h"
#include "shell/design/Spacing.h"
#include "shell/design/TextField.h"
#include "shell/design/TextLabel.h"
#include "shell/design/Theme.h"
#include "shell/tabs/SourcesTab.h"

#include <QFrame>
#include <QHBoxLayout>
#include <QStackedWidget>

#include <utility>

namespace ombrel {

RagView::RagView(std::shared_ptr<AppState> shownState, StudioServices& services, QWidget* parent)
    : StateView(std::move(shownState), parent), m_services(services),
      m_name(named(new TextField(tr("RAG name")), QStringLiteral("rag.name"), tr("RAG name"))),
      m_counts(new TextLabel({}, TextRole::caption, TextLabel::Ink::secondary)),
      m_pages(new QStackedWidget), m_dropArea(new FileDropArea({}, toQt(dropAreaText), this)) {
    m_counts->setObjectName(QStringLiteral("rag.counts"));
    m_name->setProperty("kind", "name");
    m_name->setFont(Theme::current().font(TextRole::heading));

    auto* title = new QWidget;
    auto* row = new QHBoxLayout(title);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(spacing::medium);
    row->addWidget(new IconView(QStringLiteral("rag"), Tone::accent, 20));
    row->addWidget(m_name);
    row->addWidget(m_counts);
    auto* bar = new QFrame;
    bar->setProperty("bar", "true");
    auto* barColumn = new QVBoxLayout(bar);
    barColumn->setContentsMargins(0, 0, 0, 0);
    barColumn->addWidget(new TopBar(sharedState(), title));

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(bar);
    column->addWidget(m_pages, 1);

    // The field is as wide as the name, so that the counts stand beside it.
    const auto fitName = [this] {
        const int text = m_name->fontMetrics().horizontalAdvance(
            m_name->text().isEmpty() ? m_name->placeholderText() : m_name->text());
        m_name->setFixedWidth(qBound(80, text + spacing::page, 460));
    };
    connect(m_name, &QLineEdit::textChanged, this, fitName);
    fitName();
    connect(m_name, &TextField::edited, this, [this](const QString& text) {
        state().renameRAGIndex(state().currentIndex().id, fromQt(text));
    });
    connect(m_dropArea, &FileDropArea::dropped, this, [this](const QStringList& paths) {
        state().setSelectedTab(AppTab::sources);
        if (auto* sources = qobject_cast<SourcesTab*>(page(AppTab::sources))) {
            sources->add(paths);
        }
    });
    watchIndex();
    watchSelectedTab();
}

TabPage* RagView::page(AppTab tab) {
    TabPage*& made = m_made[static_cast<std::size_t>(tab)];
    if (!made) {
        made = makeTabPage(tab, sharedState(), m_services, m_pages);
        m_pages->addWidget(made);
    }
    return made;
}

void RagView::refresh() {
    const RAGIndex& index = state().currentIndex();
    m_name->showValue(toQt(index.name));
    std::int64_t chunks = 0;
    for (const SourceDocument& source : index.sources) {
        chunks += source.chunkCount;
    }
    const auto sources = static_cast<std::int64_t>(index.sources.size());
    m_counts->setText(
        (sources == 1 ? tr("%1 source \u00b7 %2 chunks") : tr("%1 sources \u00b7 %2 chunks"))
            .arg(numberText(sources), numberText(chunks)));
    m_dropArea->setTitle(tr("Add to \u201c%1\u201d").arg(toQt(index.name)));
    m_pages->setCurrentWidget(page(state().selectedTab()));
}

} // namespace ombrel

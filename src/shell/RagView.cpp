#include "shell/RagView.h"

#include "shell/QtText.h"
#include "shell/StudioServices.h"
#include "shell/TabPage.h"
#include "shell/TopBar.h"
#include "shell/design/IconView.h"
#include "shell/design/Named.h"
#include "shell/design/Spacing.h"
#include "shell/design/TextField.h"
#include "shell/design/TextLabel.h"
#include "shell/design/Theme.h"

#include <QFrame>
#include <QHBoxLayout>
#include <QStackedWidget>

#include <utility>

namespace ombrel {

RagView::RagView(std::shared_ptr<AppState> shownState, StudioServices& services, QWidget* parent)
    : StateView(std::move(shownState), parent), m_services(services),
      m_name(named(new TextField(tr("RAG name")), QStringLiteral("rag.name"), tr("RAG name"))),
      m_counts(new TextLabel({}, TextRole::caption, TextLabel::Ink::secondary)),
      m_pages(new QStackedWidget) {
    m_counts->setObjectName(QStringLiteral("rag.counts"));
    m_name->setProperty("kind", "name");
    m_name->setFont(Theme::current().font(TextRole::heading));

    auto* head = new QHBoxLayout;
    head->setContentsMargins(spacing::wide, spacing::medium, spacing::wide, 0);
    head->setSpacing(spacing::medium);
    head->addWidget(new IconView(QStringLiteral("rag"), Tone::accent, 20));
    head->addWidget(m_name);
    head->addWidget(m_counts);
    head->addStretch(1);
    auto* bar = new QFrame;
    bar->setProperty("bar", "true");
    auto* barColumn = new QVBoxLayout(bar);
    barColumn->setContentsMargins(0, 0, 0, 0);
    barColumn->setSpacing(0);
    barColumn->addLayout(head);
    barColumn->addWidget(new TopBar(sharedState()));

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
    watchIndex();
    watchSelectedTab();
}

void RagView::refresh() {
    const RAGIndex& index = state().currentIndex();
    m_name->showValue(toQt(index.name));
    std::int64_t chunks = 0;
    for (const SourceDocument& source : index.sources) {
        chunks += source.chunkCount;
    }
    const auto sources = static_cast<std::int64_t>(index.sources.size());
    m_counts->setText(QStringLiteral("%1 source%2 \u00b7 %3 chunks")
                          .arg(numberText(sources), sources == 1 ? QString() : QStringLiteral("s"),
                               numberText(chunks)));
    const AppTab tab = state().selectedTab();
    TabPage*& page = m_made[static_cast<std::size_t>(tab)];
    if (!page) {
        page = makeTabPage(tab, sharedState(), m_services, m_pages);
        m_pages->addWidget(page);
    }
    m_pages->setCurrentWidget(page);
}

} // namespace ombrel

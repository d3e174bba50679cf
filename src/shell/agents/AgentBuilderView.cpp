#include "shell/agents/AgentBuilderView.h"

#include "agents/AgentEvaluation.h"
#include "shell/QtText.h"
#include "shell/agents/AgentDiagramView.h"
#include "shell/agents/AgentEvaluationPage.h"
#include "shell/agents/AgentPropertiesPage.h"
#include "shell/agents/AgentTryPanel.h"
#include "shell/design/IconView.h"
#include "shell/design/Named.h"
#include "shell/design/SegmentedControl.h"
#include "shell/design/Spacing.h"
#include "shell/design/TabOrder.h"
#include "shell/design/TextField.h"
#include "shell/design/TextLabel.h"
#include "shell/design/Theme.h"

#include <QFrame>
#include <QHBoxLayout>
#include <QScrollArea>
#include <QScrollBar>
#include <QVBoxLayout>

#include <utility>

namespace ombrel {

namespace {

constexpr int diagramWidth = 380;
constexpr int leastWidthForBoth = 900;

} // namespace

AgentBuilderView::AgentBuilderView(std::shared_ptr<AppState> shownState, Uuid agentToEdit,
                                   QWidget* parentWidget)
    : AgentPart(std::move(shownState), agentToEdit, parentWidget),
      m_name(
          named(new TextField(tr("Agent name")), QStringLiteral("agent.name"), tr("Agent name"))),
      m_summary(named(new TextField(tr("One-line summary")), QStringLiteral("agent.summary"),
                      tr("One-line summary"))),
      m_usage(new TextLabel({}, TextRole::caption, TextLabel::Ink::secondary)),
      m_tabs(named(new SegmentedControl(SegmentedControl::Look::tabs), QStringLiteral("agent.tab"),
                   tr("Parts of the agent"))),
      m_pages{new AgentPropertiesPage(sharedState(), agentToEdit),
              new AgentTryPanel(sharedState(), agentToEdit),
              new AgentEvaluationPage(sharedState(), agentToEdit)},
      m_diagram(new AgentDiagramView) {
    setObjectName(QStringLiteral("agent"));
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(makeHeader());
    column->addWidget(makeBody(), 1);
    showTab(0);
    placeDiagram();
    watch(state().tools);
    watch(state().ragIndexes);
    watch(state().flows);
    connect(m_name, &TextField::edited, this, [this](const QString& text) {
        edit([&](Agent& edited) { edited.name = fromQt(text); });
    });
    connect(m_summary, &TextField::edited, this, [this](const QString& text) {
        edit([&](Agent& edited) { edited.summary = fromQt(text); });
    });
    connect(m_tabs, &SegmentedControl::chosen, this, &AgentBuilderView::showTab);
}

QWidget* AgentBuilderView::makeHeader() {
    auto* bar = new QFrame;
    bar->setProperty("bar", "true");
    m_name->setProperty("kind", "name");
    m_name->setFont(Theme::current().font(TextRole::heading));
    m_summary->setProperty("kind", "name");
    m_usage->setObjectName(QStringLiteral("agent.usage"));
    for (const auto& tab : rawValues(AgentBuilderTab{})) {
        m_tabs->add(toQt(tab.raw).toLower(), toQt(tab.raw));
    }
    auto* title = new QHBoxLayout;
    title->setSpacing(spacing::medium);
    title->addWidget(new IconView(QStringLiteral("agent"), Tone::accent, 20));
    title->addWidget(m_name, 1);
    title->addWidget(m_usage);
    auto* about = new QHBoxLayout;
    about->setSpacing(spacing::medium);
    about->addSpacing(20 + spacing::medium);
    about->addWidget(m_summary, 1);
    auto* column = new QVBoxLayout(bar);
    column->setContentsMargins(spacing::wide, spacing::medium, spacing::wide, 0);
    column->setSpacing(spacing::hair);
    column->addLayout(title);
    column->addLayout(about);
    column->addSpacing(spacing::tight);
    column->addWidget(m_tabs, 0, Qt::AlignLeft);
    return bar;
}

QWidget* AgentBuilderView::makeBody() {
    const auto makeArea = [](const QString& name) {
        auto* area = new QScrollArea;
        area->setObjectName(name);
        area->setWidgetResizable(true);
        area->setFocusPolicy(Qt::NoFocus);
        return area;
    };
    const auto makePage = [] {
        auto* page = new QWidget;
        page->setProperty("page", "true");
        return page;
    };
    auto* page = makePage();
    m_pageColumn = new QVBoxLayout(page);
    m_pageColumn->setContentsMargins(spacing::wide, spacing::wide, spacing::wide, spacing::wide);
    m_pageColumn->setSpacing(spacing::large);
    for (QWidget* each : m_pages) {
        m_pageColumn->addWidget(each);
    }
    m_pageColumn->addStretch(1);
    m_pageArea = makeArea(QStringLiteral("agent.scroll"));
    m_pageArea->setWidget(page);

    auto* side = makePage();
    m_sideColumn = new QVBoxLayout(side);
    m_sideColumn->setContentsMargins(spacing::small, spacing::wide, spacing::wide, spacing::wide);
    m_sideColumn->addStretch(1);
    m_side = makeArea(QStringLiteral("agent.side"));
    m_side->setFixedWidth(diagramWidth);
    m_side->setWidget(side);

    auto* body = new QWidget;
    auto* row = new QHBoxLayout(body);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(0);
    row->addWidget(m_pageArea, 1);
    row->addWidget(m_side);
    return body;
}

void AgentBuilderView::showTab(int index) {
    m_tabs->setCurrentIndex(index);
    for (std::size_t i = 0; i < m_pages.size(); ++i) {
        m_pages[i]->setVisible(static_cast<int>(i) == index);
    }
    m_pageArea->verticalScrollBar()->setValue(0);
}

void AgentBuilderView::placeDiagram() {
    const bool isBeside = width() >= leastWidthForBoth;
    m_side->setVisible(isBeside);
    if (isBeside && m_sideColumn->indexOf(m_diagram) < 0) {
        m_sideColumn->insertWidget(0, m_diagram);
    } else if (!isBeside && m_pageColumn->indexOf(m_diagram) < 0) {
        m_pageColumn->insertWidget(m_pageColumn->count() - 1, m_diagram);
    }
}

void AgentBuilderView::resizeEvent(QResizeEvent* event) {
    AgentPart::resizeEvent(event);
    placeDiagram();
}

bool AgentBuilderView::focusNextPrevChild(bool next) {
    orderTabsByLayout(*this);
    return AgentPart::focusNextPrevChild(next);
}

void AgentBuilderView::refresh() {
    const Agent* shown = agent();
    if (!shown) {
        return;
    }
    m_name->showValue(toQt(shown->name));
    m_summary->showValue(toQt(shown->summary));
    m_usage->setText(toQt(usageLine(state(), shown->id)));
    m_diagram->showAgent(*shown, *state().tools, *state().ragIndexes);
}

} // namespace ombrel

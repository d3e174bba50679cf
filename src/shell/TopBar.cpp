#include "shell/TopBar.h"

#include "knowledge/BuildTexts.h"
#include "knowledge/Ingestion.h"
#include "shell/QtText.h"
#include "shell/design/Button.h"
#include "shell/design/ElidedLabel.h"
#include "shell/design/Icon.h"
#include "shell/design/IconView.h"
#include "shell/design/Named.h"
#include "shell/design/SegmentedControl.h"
#include "shell/design/Spacing.h"
#include "shell/design/TextLabel.h"

#include <QHBoxLayout>
#include <QTimer>

#include <utility>

namespace ombrel {

namespace {

QString iconOf(AppTab tab) {
    return tab == AppTab::exportPackage ? QStringLiteral("export") : toQt(rawValue(tab)).toLower();
}

bool isBuilding(const RAGIndex& index) {
    return index.isEnriching || index.importProgress || index.embedProgress;
}

} // namespace

TopBar::TopBar(std::shared_ptr<AppState> shownState, QWidget* title, QWidget* parent)
    : StateView(std::move(shownState), parent),
      m_tabs(named(new SegmentedControl(SegmentedControl::Look::tabs), QStringLiteral("tabs"),
                   tr("Tabs"))),
      m_mark(new IconView(QStringLiteral("clock"), Tone::neutral, spacing::icon)),
      m_status(new ElidedLabel({}, TextRole::caption, TextLabel::Ink::secondary)),
      m_totals(new TextLabel({}, TextRole::caption, TextLabel::Ink::secondary)),
      m_build(named(makeButton(tr("Build"), ButtonKind::primary), QStringLiteral("topBar.build"),
                    tr("Build"))),
      m_clock(new QTimer(this)) {
    setObjectName(QStringLiteral("topBar"));
    for (const auto& [tab, label] : rawValues(AppTab{})) {
        m_tabs->add(toQt(label).toLower(), toQt(label), iconOf(tab));
    }
    m_status->setObjectName(QStringLiteral("topBar.status"));
    m_totals->setObjectName(QStringLiteral("topBar.totals"));
    auto* head = new QHBoxLayout;
    head->setSpacing(spacing::small);
    head->addWidget(title);
    head->addSpacing(spacing::medium);
    head->addStretch(1);
    head->addWidget(m_mark);
    // One above the other, so that both are whole in a narrow window.
    auto* figures = new QVBoxLayout;
    figures->setSpacing(0);
    figures->addWidget(m_status);
    figures->addWidget(m_totals);
    head->addLayout(figures);
    head->addSpacing(spacing::medium);
    head->addWidget(m_build);
    auto* tabs = new QHBoxLayout;
    tabs->setContentsMargins(-spacing::small, 0, 0, 0);
    tabs->addWidget(m_tabs);
    tabs->addStretch(1);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(spacing::wide, spacing::medium, spacing::wide, spacing::small);
    column->setSpacing(spacing::small);
    column->addLayout(head);
    column->addLayout(tabs);
    setTabOrder(m_tabs, m_build);

    connect(m_tabs, &SegmentedControl::chosen, this, [this](int index) {
        state().setSelectedTab(rawValues(AppTab{})[static_cast<std::size_t>(index)].value);
    });
    connect(m_build, &QPushButton::clicked, this, [this] {
        if (!state().currentIndex().isEnriching) {
            spawn(rescanAll(sharedState()));
        }
    });
    m_clock->setInterval(20'000);
    connect(m_clock, &QTimer::timeout, this, [this] { refreshLater(); });
    m_clock->start();
    watchIndex();
    watch(state().project);
    watchSelectedTab();
}

void TopBar::refresh() {
    m_tabs->setCurrentIndex(static_cast<int>(state().selectedTab()));
    const RAGIndex& index = state().currentIndex();
    m_status->setText(toQt(buildStatusText(state(), Date::now())));
    if (isBuilding(index)) {
        m_mark->setIcon(QStringLiteral("refresh"), Tone::accent);
        m_status->setInk(TextLabel::Ink::accent);
    } else if (!state().project->lastBuildFinishedAt) {
        m_mark->setIcon(QStringLiteral("clock"), Tone::neutral);
        m_status->setInk(TextLabel::Ink::secondary);
    } else if (settingsChangedSinceBuild(state())) {
        m_mark->setIcon(QStringLiteral("alert"), Tone::warning);
        m_status->setInk(TextLabel::Ink::warning);
    } else {
        m_mark->setIcon(QStringLiteral("check-circle"), Tone::success);
        m_status->setInk(TextLabel::Ink::secondary);
    }
    std::int64_t chunks = 0;
    std::int64_t tokens = 0;
    for (const SourceDocument& source : index.sources) {
        chunks += source.chunkCount;
        tokens += source.tokenCount;
    }
    m_totals->setText(tr("%1 chunks \u00b7 %2 tok").arg(numberText(chunks), numberText(tokens)));
    m_build->setEnabled(!index.isEnriching);
    m_build->setToolTip(desktopText(buildButtonHelp(state())));
}

void TopBar::resizeEvent(QResizeEvent* event) {
    StateView::resizeEvent(event);
    constexpr int roomForIcons = 700;
    m_tabs->setIconsShown(width() >= roomForIcons);
}

} // namespace ombrel

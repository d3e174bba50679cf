#include "shell/agents/AgentTryPanel.h"

#include "agents/AgentRunner.h"
#include "agents/AgentTexts.h"
#include "shell/QtText.h"
#include "shell/agents/AgentResultView.h"
#include "shell/design/BusyButton.h"
#include "shell/design/Card.h"
#include "shell/design/Icon.h"
#include "shell/design/Named.h"
#include "shell/design/SectionTitle.h"
#include "shell/design/Spacing.h"
#include "shell/design/TextArea.h"
#include "shell/design/TextLabel.h"

#include <QHBoxLayout>
#include <QShortcut>
#include <QVBoxLayout>

#include <utility>

namespace ombrel {

namespace {

constexpr int inputHeight = 112;

} // namespace

AgentTryPanel::AgentTryPanel(std::shared_ptr<AppState> shownState, Uuid id, QWidget* parentWidget)
    : AgentPart(std::move(shownState), id, parentWidget),
      m_input(named(new TextArea(tr("What a user or the step before would hand in")),
                    QStringLiteral("agent.try.input"), tr("Sample input"))),
      m_run(named(new BusyButton(tr("Run Agent"), ButtonKind::primary),
                  QStringLiteral("agent.try.run"), tr("Run Agent"))),
      m_status(new TextLabel), m_resultView(new AgentResultView) {
    setObjectName(QStringLiteral("agent.playground"));
    m_input->setFixedHeight(inputHeight);
    m_status->setObjectName(QStringLiteral("agent.try.status"));
    m_run->setToolTip(tr("Ctrl+Return"));
    auto* card = new Card;
    card->content()->addWidget(
        new SectionTitle(tr("TRY AGENT \u00b7 SAMPLE INPUT"), {}, TextRole::overline));
    card->content()->addWidget(m_input);
    auto* row = new QHBoxLayout;
    row->setSpacing(spacing::medium);
    row->addWidget(m_run);
    row->addWidget(m_status);
    row->addStretch(1);
    card->content()->addLayout(row);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(spacing::large);
    column->addWidget(card);
    column->addWidget(m_resultView);
    m_resultView->hide();

    connect(m_input, &TextArea::edited, this, [this](const QString& text) {
        m_sampleInput = fromQt(text);
        refresh();
    });
    connect(m_run, &QPushButton::clicked, this, &AgentTryPanel::run);
    for (const int key : {Qt::Key_Return, Qt::Key_Enter}) {
        auto* runs = new QShortcut(QKeySequence(Qt::CTRL | key), this);
        runs->setContext(Qt::WidgetWithChildrenShortcut);
        connect(runs, &QShortcut::activated, m_run, &QPushButton::click);
    }
}

void AgentTryPanel::refresh() {
    m_run->setBusy(m_isRunning);
    m_run->setEnabled(canRunAgent(m_sampleInput, m_isRunning));
    m_status->setVisible(m_result.has_value());
    if (m_result) {
        m_status->setText(toQt(runStatusText(*m_result)));
        m_status->setInk(m_result->isError ? TextLabel::Ink::danger : TextLabel::Ink::secondary);
    }
}

void AgentTryPanel::run() {
    const Agent* snapshot = agent();
    if (!snapshot) {
        return;
    }
    m_isRunning = true;
    m_result.reset();
    m_resultView->hide();
    refresh();
    auto task = runAndShow(state().platform(), *snapshot, *state().ragIndexes, m_sampleInput, this);
    spawn(std::move(task));
}

Task<void> AgentTryPanel::runAndShow(Platform platform, Agent snapshot,
                                     std::vector<RAGIndex> indexes, std::string input,
                                     QPointer<AgentTryPanel> panel) {
    auto running =
        runAgent(std::move(platform), std::move(snapshot), std::move(indexes), std::move(input));
    AgentRunResult result = co_await std::move(running);
    if (panel) {
        panel->takeResult(std::move(result));
    }
}

void AgentTryPanel::takeResult(AgentRunResult result) {
    m_isRunning = false;
    m_result = std::move(result);
    m_resultView->showResult(*m_result);
    m_resultView->show();
    refreshLater();
}

} // namespace ombrel

#include "shell/tabs/PlaygroundTab.h"

#include "knowledge/RecipeTexts.h"
#include "retrieval/PlaygroundTexts.h"
#include "retrieval/QueryPipeline.h"
#include "shell/ModelSetup.h"
#include "shell/QtText.h"
#include "shell/design/Banner.h"
#include "shell/design/Button.h"
#include "shell/design/Card.h"
#include "shell/design/ElidedLabel.h"
#include "shell/design/EmptyState.h"
#include "shell/design/Icon.h"
#include "shell/design/Named.h"
#include "shell/design/SectionTitle.h"
#include "shell/design/Spacing.h"
#include "shell/design/TextField.h"
#include "shell/tabs/PlaygroundResultView.h"

#include <QKeyEvent>
#include <QMenu>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QToolButton>

#include <utility>

namespace ombrel {

namespace {

// Asks unless an ask has begun since the key was pressed.
Task<void> askWhenIdle(std::shared_ptr<AppState> state, AnswerObserver observer) {
    if (isAskEnabled(*state)) {
        Task<void> asking = ask(std::move(state), std::move(observer));
        co_await asking;
    }
}

QString recipeLine(const BuildSettings& settings) {
    return PlaygroundTab::tr("%1 search \u00b7 %2 \u00b7 top %3 \u00b7 %4")
        .arg(toQt(rawValue(settings.index)), toQt(rawValue(settings.transform)),
             toQt(topKText(settings)), toQt(contextBudgetText(settings)));
}

} // namespace

PlaygroundTab::PlaygroundTab(std::shared_ptr<AppState> shownState, StudioServices& sharedServices,
                             QWidget* parent)
    : TabPage(AppTab::playground, Body::scrolls, std::move(shownState), sharedServices, parent),
      m_modelSetup(new ModelSetup(sharedServices, ModelSetup::Need::language)),
      m_reason(new Banner(Tone::warning)),
      m_empty(new EmptyState(QStringLiteral("playground"), toQt(noResultYet))),
      m_result(new PlaygroundResultView) {
    addWarmUp();
    m_reason->setObjectName(QStringLiteral("playground.reason"));
    m_empty->setObjectName(QStringLiteral("playground.empty"));
    m_result->setObjectName(QStringLiteral("playground.result"));
    content()->addWidget(m_modelSetup);
    content()->addWidget(m_reason);
    content()->addWidget(makeQuestion());
    content()->addWidget(makeRunning());
    content()->addWidget(m_empty);
    content()->addWidget(m_result);
    connect(m_result, &PlaygroundResultView::saveWanted, this, &PlaygroundTab::saveResult);
    watchIndex();
}

void PlaygroundTab::addWarmUp() {
    m_warmUp = named(makeButton(tr("Warm Up")), QStringLiteral("playground.warmUp"), tr("Warm Up"));
    m_warmUp->setToolTip(toQt(warmUpHelp));
    m_warmUp->setAccessibleDescription(toQt(warmUpHelp));
    header()->addControl(m_warmUp);
    connect(m_warmUp, &QPushButton::clicked, this, [this] {
        if (isWarmUpEnabled(state())) {
            spawn(warmUp(sharedState()));
        }
    });
    m_warmUpStatus = new TextLabel({}, TextRole::caption, TextLabel::Ink::secondary);
    m_warmUpStatus->wrapping();
    m_warmUpStatus->setObjectName(QStringLiteral("playground.warmUpStatus"));
    m_warmUpStatus->setAlignment(Qt::AlignRight);
    content()->addWidget(m_warmUpStatus);
}

QWidget* PlaygroundTab::makeQuestion() {
    auto* card = new Card;
    card->content()->setContentsMargins(spacing::large, spacing::large, spacing::large,
                                        spacing::small);
    card->content()->setSpacing(spacing::tight);
    m_question = named(new TextField(tr("Ask a question about your documents")),
                       QStringLiteral("playground.question"), tr("Question"));
    m_question->installEventFilter(this);
    m_historyButton = named(makeIconButton(QStringLiteral("clock"), tr("Earlier questions")),
                            QStringLiteral("playground.history"), tr("Earlier questions"));
    m_historyMenu = new QMenu(m_historyButton);
    m_historyMenu->setObjectName(QStringLiteral("playground.historyMenu"));
    m_historyButton->setMenu(m_historyMenu);
    m_historyButton->setPopupMode(QToolButton::InstantPopup);
    m_ask = named(makeButton(tr("Ask"), ButtonKind::primary), QStringLiteral("playground.ask"),
                  tr("Ask"));
    m_ask->setToolTip(tr("Ask (Enter)"));
    auto* row = new QHBoxLayout;
    row->setSpacing(spacing::small);
    row->addWidget(m_question, 1);
    row->addWidget(m_historyButton);
    row->addWidget(m_ask);
    m_recipe = new ElidedLabel({}, TextRole::caption, TextLabel::Ink::secondary);
    m_recipe->setObjectName(QStringLiteral("playground.recipe"));
    auto* settings = named(makeButton(tr("Settings"), ButtonKind::plain),
                           QStringLiteral("playground.settings"), tr("Change the settings"));
    auto* notes = new QHBoxLayout;
    notes->setSpacing(spacing::small);
    notes->addWidget(m_recipe, 1);
    notes->addWidget(settings);
    card->content()->addLayout(row);
    card->content()->addLayout(notes);
    connect(m_question, &TextField::edited, this, &PlaygroundTab::setQuestion);
    connect(m_ask, &QPushButton::clicked, this, &PlaygroundTab::askQuestion);
    connect(m_historyMenu, &QMenu::aboutToShow, this, &PlaygroundTab::fillHistory);
    connect(settings, &QPushButton::clicked, this,
            [this] { state().setSelectedTab(AppTab::settings); });
    return card;
}

QWidget* PlaygroundTab::makeRunning() {
    m_running = new Card;
    m_running->setObjectName(QStringLiteral("playground.running"));
    m_runningTitle = new TextLabel({}, TextRole::strong);
    m_runningTitle->setObjectName(QStringLiteral("playground.runningTitle"));
    auto* bar = named(new QProgressBar, QStringLiteral("playground.progress"), tr("Asking"));
    bar->setRange(0, 0);
    bar->setTextVisible(false);
    m_written = (new TextLabel)->wrapping();
    m_written->setObjectName(QStringLiteral("playground.written"));
    m_running->content()->addWidget(m_runningTitle);
    m_running->content()->addWidget(bar);
    m_running->content()->addWidget(m_written);
    return m_running;
}

void PlaygroundTab::refresh() {
    const RAGIndex& index = state().currentIndex();
    const BuildSettings& settings = state().currentVariant().settings;
    m_modelSetup->setNeed(settings.index == IndexKind::keyword ? ModelSetup::Need::language
                                                               : ModelSetup::Need::both);
    m_reason->showOrHide(toQt(reasonBanner(state(), settings).value_or("")));
    m_question->showValue(toQt(index.playgroundQuestion));
    m_recipe->setText(recipeLine(settings));
    m_ask->setEnabled(isAskEnabled(state()));
    m_warmUp->setEnabled(isWarmUpEnabled(state()));
    const QString status =
        index.isWarmingUp ? tr("Warming up\u2026") : toQt(index.warmUpStatus.value_or(""));
    m_warmUpStatus->setText(status);
    m_warmUpStatus->setVisible(!status.isEmpty());
    showRunning();

    const std::optional<PlaygroundResult>& result = index.playgroundResult;
    if (result && result->question != m_lastAsked) {
        m_lastAsked = result->question;
        m_history.add(toQt(m_lastAsked));
    }
    m_historyButton->setEnabled(!m_history.questions().isEmpty());
    if (result) {
        m_result->show(*result, settings);
    }
    m_result->setVisible(result.has_value());
    m_empty->setVisible(!result && !index.isAsking);
}

void PlaygroundTab::showRunning() {
    const RAGIndex& index = state().currentIndex();
    m_running->setVisible(index.isAsking);
    if (!index.isAsking) {
        m_pieces.erase(index.id);
        return;
    }
    const auto piece = m_pieces.find(index.id);
    const QString written = piece == m_pieces.end() ? QString() : toQt(piece->second);
    m_runningTitle->setText(written.isEmpty() ? tr("Searching and reading\u2026")
                                              : tr("Answering\u2026"));
    m_written->setText(written);
    m_written->setVisible(!written.isEmpty());
}

void PlaygroundTab::setQuestion(const QString& question) {
    state().editCurrentIndex()->playgroundQuestion = fromQt(question);
    state().scheduleCheckpoint();
    m_ask->setEnabled(isAskEnabled(state()));
}

void PlaygroundTab::askQuestion() {
    if (!isAskEnabled(state())) {
        return;
    }
    const RAGIndex& index = state().currentIndex();
    m_history.add(toQt(index.playgroundQuestion));
    m_pieces.erase(index.id);
    spawn(askWhenIdle(sharedState(),
                      [tab = QPointer(this), id = index.id](const ModelSnapshot& snapshot) {
                          if (tab) {
                              tab->m_pieces[id] = snapshot.content;
                              tab->refreshLater();
                          }
                      }));
}

bool PlaygroundTab::eventFilter(QObject* watched, QEvent* event) {
    if (watched == m_question && event->type() == QEvent::KeyPress) {
        const auto* key = static_cast<QKeyEvent*>(event);
        const QString current = m_question->text();
        switch (key->key()) {
        case Qt::Key_Return:
        case Qt::Key_Enter: // with Ctrl too
            askQuestion();
            return true;
        case Qt::Key_Up:
        case Qt::Key_Down: {
            const QString other =
                key->key() == Qt::Key_Up ? m_history.older(current) : m_history.newer(current);
            if (other != current) {
                m_question->showValue(other);
                m_question->end(false);
                setQuestion(other);
            }
            return true;
        }
        default:
            break;
        }
    }
    return TabPage::eventFilter(watched, event);
}

void PlaygroundTab::showEvent(QShowEvent* event) {
    TabPage::showEvent(event);
    // One comes here to ask; focus that is elsewhere in the window stays.
    if (!window()->focusWidget() || window()->focusWidget() == this) {
        m_question->setFocus(Qt::OtherFocusReason);
    }
}

void PlaygroundTab::fillHistory() {
    m_historyMenu->clear();
    const QStringList& questions = m_history.questions();
    for (auto question = questions.crbegin(); question != questions.crend(); ++question) {
        const QFontMetrics metrics(m_historyMenu->font());
        QString label = metrics.elidedText(*question, Qt::ElideRight, 420);
        label.replace(QLatin1Char('&'), QStringLiteral("&&"));
        QAction* action = m_historyMenu->addAction(label);
        connect(action, &QAction::triggered, this, [this, text = *question] {
            m_question->showValue(text);
            setQuestion(text);
            m_question->setFocus(Qt::OtherFocusReason);
        });
    }
}

void PlaygroundTab::saveResult() {
    if (saveAsTestCase(state())) {
        const TestQuestion& saved = state().currentIndex().testQuestions.back();
        m_result->showSaved(tr("Saved to Evaluation, expecting \u201c%1\u201d.")
                                .arg(toQt(breadcrumbText(saved.expectedBreadcrumb))));
    }
}

} // namespace ombrel

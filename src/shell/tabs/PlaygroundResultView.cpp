#include "shell/tabs/PlaygroundResultView.h"

#include "retrieval/PlaygroundTexts.h"
#include "shell/QtText.h"
#include "shell/design/Button.h"
#include "shell/design/Card.h"
#include "shell/design/FoldingCard.h"
#include "shell/design/Named.h"
#include "shell/design/SectionTitle.h"
#include "shell/design/Spacing.h"
#include "shell/design/TextLabel.h"
#include "shell/design/Theme.h"
#include "shell/design/WholeListView.h"
#include "shell/design/WrapLayout.h"
#include "shell/tabs/ContextBarView.h"
#include "shell/tabs/HitDelegate.h"
#include "shell/tabs/HitListModel.h"
#include "shell/tabs/StageTimesView.h"

#include <QApplication>
#include <QClipboard>
#include <QPlainTextEdit>
#include <QStringList>
#include <QTimer>

#include <algorithm>

namespace ombrel {

namespace {

constexpr int mostListHeight = 2400; // of the hits, before they scroll by themselves
constexpr int mostPromptLines = 18;  // before it scrolls
constexpr int figureWidth = 380;

TextLabel* makeText(const char* name, TextRole role = TextRole::body,
                    TextLabel::Ink ink = TextLabel::Ink::text) {
    auto* label = (new TextLabel({}, role, ink))->wrapping()->selectable();
    label->setObjectName(QString::fromLatin1(name));
    return label;
}

} // namespace

PlaygroundResultView::PlaygroundResultView(QWidget* parent) : QWidget(parent) {
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(spacing::large);
    column->addWidget(makeAnswer());
    column->addWidget(makeQuery());
    column->addWidget(makeFigures());
    column->addWidget(makeHits());
    column->addWidget(makePrompt());
}

QWidget* PlaygroundResultView::makeAnswer() {
    auto* card = new Card;
    card->setObjectName(QStringLiteral("playground.answerCard"));
    m_answerHeader = new TextLabel({}, TextRole::caption, TextLabel::Ink::secondary);
    m_answerHeader->setObjectName(QStringLiteral("playground.answerHeader"));
    auto* title = new SectionTitle(tr("Answer"));
    title->addControl(m_answerHeader);
    m_question = makeText("playground.askedQuestion", TextRole::body, TextLabel::Ink::secondary);
    m_answer = makeText("playground.answer");
    m_copyAnswer = named(makeButton(tr("Copy Answer")), QStringLiteral("playground.copyAnswer"),
                         tr("Copy Answer"));
    m_save = named(makeButton(tr("Save as test case")), QStringLiteral("playground.saveTestCase"),
                   tr("Save as test case"));
    m_save->setToolTip(tr("Adds the question to Evaluation, with the section that was found first "
                          "as the expected one."));
    m_saved = new TextLabel({}, TextRole::caption, TextLabel::Ink::success);
    m_saved->wrapping();
    m_saved->setObjectName(QStringLiteral("playground.saved"));
    auto* buttons = new QHBoxLayout;
    buttons->setSpacing(spacing::small);
    buttons->addWidget(m_save);
    buttons->addWidget(m_copyAnswer);
    buttons->addWidget(m_saved, 1);

    m_breakdown = new Card;
    m_breakdown->setProperty("card", "flat");
    m_breakdown->setObjectName(QStringLiteral("playground.breakdown"));
    m_breakdownLines = makeText("playground.breakdownLines");
    m_breakdown->content()->addWidget(new SectionTitle(
        toQt(answerBreakdownHeading), toQt(answerBreakdownNote), TextRole::strong));
    m_breakdown->content()->addWidget(m_breakdownLines);

    card->content()->addWidget(title);
    card->content()->addWidget(m_question);
    card->content()->addWidget(m_answer);
    card->content()->addSpacing(spacing::tight);
    card->content()->addLayout(buttons);
    card->content()->addWidget(m_breakdown);
    connect(m_save, &QPushButton::clicked, this, &PlaygroundResultView::saveWanted);
    connect(m_copyAnswer, &QPushButton::clicked, this,
            [this] { copy(m_answer->text(), m_copyAnswer); });
    return card;
}

QWidget* PlaygroundResultView::makeQuery() {
    m_queryCard = new FoldingCard(QStringLiteral("playground.query"), tr("Search query"));
    m_query = makeText("playground.queryText");
    m_queryCard->body()->addWidget(m_query);
    return m_queryCard;
}

QWidget* PlaygroundResultView::makeFigures() {
    m_timesCard = new FoldingCard(QStringLiteral("playground.times"), tr("Time"));
    m_times = new StageTimesView;
    m_timesCard->body()->addWidget(m_times);
    m_contextCard = new FoldingCard(QStringLiteral("playground.context"), toQt(contextBarHeading));
    m_context = new ContextBarView;
    m_contextCard->body()->addWidget(m_context);
    auto* figures = new QWidget;
    auto* wrap = new WrapLayout(spacing::large, figureWidth, figures);
    wrap->addWidget(m_timesCard);
    wrap->addWidget(m_contextCard);
    wrap->setAlignment(m_timesCard, Qt::AlignTop); // one can be folded beside the other
    wrap->setAlignment(m_contextCard, Qt::AlignTop);
    return figures;
}

QWidget* PlaygroundResultView::makeHits() {
    m_hitsCard = new FoldingCard(QStringLiteral("playground.hits"), tr("Retrieved"));
    m_hits = new HitListModel(this);
    m_hitList = named(new WholeListView(mostListHeight), QStringLiteral("playground.hitList"),
                      tr("Retrieved chunks"));
    m_hitList->setItemDelegate(new HitDelegate(*m_hits, this));
    m_hitList->setModel(m_hits);
    m_noHits = makeText("playground.noHits", TextRole::body, TextLabel::Ink::secondary);
    m_noHits->setText(tr("No chunk was found."));
    m_hitsCard->body()->addWidget(m_hitList);
    m_hitsCard->body()->addWidget(m_noHits);
    return m_hitsCard;
}

QWidget* PlaygroundResultView::makePrompt() {
    m_promptCard = new FoldingCard(QStringLiteral("playground.prompt"), tr("Prompt"));
    m_copyPrompt = named(makeButton(tr("Copy prompt")), QStringLiteral("playground.copyPrompt"),
                         tr("Copy prompt"));
    m_prompt = named(new QPlainTextEdit, QStringLiteral("playground.promptText"), tr("Prompt"));
    m_prompt->setReadOnly(true);
    m_prompt->setTabChangesFocus(true);
    m_prompt->setUndoRedoEnabled(false);
    m_prompt->setFont(Theme::current().font(TextRole::code));
    m_promptCard->addControl(m_copyPrompt);
    m_promptCard->body()->addWidget(m_prompt);
    m_promptCard->setExpanded(false);
    connect(m_copyPrompt, &QPushButton::clicked, this,
            [this] { copy(m_shown ? toQt(m_shown->fullPrompt) : QString(), m_copyPrompt); });
    return m_promptCard;
}

void PlaygroundResultView::show(const PlaygroundResult& result, const BuildSettings& settings) {
    const bool isOther = m_shown != result;
    if (!isOther && m_shownSettings == settings) {
        return;
    }
    const bool hadCalls = m_shown.has_value() && m_shownSettings.transform == QueryTransform::tool;
    m_shown = result;
    m_shownSettings = settings;
    showAnswer(result, settings);
    showStages(result, settings);
    if (isOther) {
        m_saved->clear();
        m_hits->show(result.retrieved);
        showPrompt(toQt(result.fullPrompt));
        // What the model searched for is what this mode is about.
        const bool hasCalls = settings.transform == QueryTransform::tool;
        if (hasCalls != hadCalls) {
            m_promptCard->setExpanded(hasCalls);
        }
    }
}

void PlaygroundResultView::showAnswer(const PlaygroundResult& result,
                                      const BuildSettings& settings) {
    m_answerHeader->setText(toQt(answerHeader(result, settings)));
    m_question->setText(toQt(result.question));
    m_answer->setText(toQt(result.answer));
    m_copyAnswer->setEnabled(!result.answer.empty());
    m_save->setEnabled(!result.retrieved.empty());
    m_breakdown->setVisible(result.answerBreakdown.has_value());
    QStringList lines;
    if (result.answerBreakdown) {
        for (const std::string& line : answerBreakdownLines(*result.answerBreakdown)) {
            lines.append(toQt(line));
        }
    }
    m_breakdownLines->setText(lines.join(QLatin1Char('\n')));
}

void PlaygroundResultView::showStages(const PlaygroundResult& result,
                                      const BuildSettings& settings) {
    m_queryCard->setTitle(toQt(queryRowTitle(settings.transform)));
    m_query->setText(toQt(result.rewrittenQuery));
    m_times->show(timingStages(result));
    m_timesCard->setSummary(toQt(totalTimeText(result)));
    m_context->show(contextSegments(result), truncated(settings.contextBudget));
    m_contextCard->setSummary(toQt(contextBarText(result, settings)));
    const auto packed = std::ranges::count_if(result.retrieved, &RetrievedChunk::inPrompt);
    m_hitsCard->setSummary(
        result.retrieved.empty()
            ? QString()
            : tr("%1 chunks, %2 in the prompt")
                  .arg(numberText(std::ssize(result.retrieved)), numberText(packed)));
    m_hitList->setVisible(!result.retrieved.empty());
    m_noHits->setVisible(result.retrieved.empty());
    m_promptCard->setTitle(settings.transform == QueryTransform::tool ? tr("Search calls")
                                                                      : tr("Prompt"));
    m_copyPrompt->setEnabled(!result.fullPrompt.empty());
}

void PlaygroundResultView::showPrompt(const QString& text) {
    m_prompt->setPlainText(text);
    constexpr qsizetype lineLength = 100; // about where a line wraps
    qsizetype lines = 1;
    for (const QString& line : text.split(QLatin1Char('\n'))) {
        lines += 1 + line.size() / lineLength;
    }
    m_prompt->setFixedHeight(static_cast<int>(std::min<qsizetype>(lines, mostPromptLines)) *
                                 m_prompt->fontMetrics().lineSpacing() +
                             spacing::large);
}

void PlaygroundResultView::showSaved(const QString& text) {
    m_saved->setText(text);
}

void PlaygroundResultView::copy(const QString& text, QPushButton* button) {
    QApplication::clipboard()->setText(text);
    // Says so for a moment.
    const QString usual = button->accessibleName();
    button->setText(tr("Copied"));
    QTimer::singleShot(1500, button, [button, usual] { button->setText(usual); });
}

} // namespace ombrel

#pragma once

#include "core/BuildSettings.h"
#include "core/PlaygroundResult.h"

#include <QWidget>

#include <optional>

class QPlainTextEdit;
class QPushButton;
class QVBoxLayout;

namespace ombrel {

class Card;
class ContextBarView;
class FoldingCard;
class HitListModel;
class StageTimesView;
class TextLabel;
class WholeListView;

// An answer and every stage that led to it, each of which can be folded away.
class PlaygroundResultView final : public QWidget {
    Q_OBJECT

  public:
    explicit PlaygroundResultView(QWidget* parent = nullptr);
    // The settings are those that are in force now.
    void show(const PlaygroundResult& result, const BuildSettings& settings);
    // Says what came of saving a test case; gone with the next result.
    void showSaved(const QString& text);

  Q_SIGNALS:
    void saveWanted();

  private:
    QWidget* makeAnswer();
    QWidget* makeQuery();
    QWidget* makeFigures();
    QWidget* makeHits();
    QWidget* makePrompt();
    void showAnswer(const PlaygroundResult& result, const BuildSettings& settings);
    void showStages(const PlaygroundResult& result, const BuildSettings& settings);
    void showPrompt(const QString& text);
    void copy(const QString& text, QPushButton* button);

    TextLabel* m_answerHeader;
    TextLabel* m_question;
    TextLabel* m_answer;
    QPushButton* m_copyAnswer;
    QPushButton* m_save;
    TextLabel* m_saved;
    Card* m_breakdown;
    TextLabel* m_breakdownLines;
    FoldingCard* m_queryCard;
    TextLabel* m_query;
    FoldingCard* m_timesCard;
    StageTimesView* m_times;
    FoldingCard* m_contextCard;
    ContextBarView* m_context;
    FoldingCard* m_hitsCard;
    HitListModel* m_hits;
    WholeListView* m_hitList;
    TextLabel* m_noHits;
    FoldingCard* m_promptCard;
    QPushButton* m_copyPrompt;
    QPlainTextEdit* m_prompt;
    std::optional<PlaygroundResult> m_shown;
    BuildSettings m_shownSettings;
};

} // namespace ombrel

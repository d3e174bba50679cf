#pragma once

#include "shell/TabPage.h"
#include "shell/tabs/QuestionHistory.h"

#include <map>
#include <optional>
#include <string>

class QMenu;
class QProgressBar;
class QPushButton;
class QToolButton;

namespace ombrel {

class Banner;
class Card;
class ElidedLabel;
class EmptyState;
class ModelSetup;
class PlaygroundResultView;
class TextField;
class TextLabel;

// A question, and what came of it stage by stage.
class PlaygroundTab final : public TabPage {
    Q_OBJECT

  public:
    PlaygroundTab(std::shared_ptr<AppState> state, StudioServices& services, QWidget* parent);

  protected:
    void refresh() override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void showEvent(QShowEvent* event) override;

  private:
    void addWarmUp();
    QWidget* makeQuestion();
    QWidget* makeRunning();
    void setQuestion(const QString& question);
    void askQuestion();
    void fillHistory();
    void showRunning();
    void saveResult();

    ModelSetup* m_modelSetup;
    QPushButton* m_warmUp;
    TextLabel* m_warmUpStatus;
    Banner* m_reason;
    TextField* m_question;
    QToolButton* m_historyButton;
    QMenu* m_historyMenu;
    QPushButton* m_ask;
    ElidedLabel* m_recipe;
    Card* m_running;
    TextLabel* m_runningTitle;
    TextLabel* m_written;
    EmptyState* m_empty;
    PlaygroundResultView* m_result;
    QuestionHistory m_history;
    std::string m_lastAsked; // of the result that is shown
    // What the model has written of an answer until now, by RAG index.
    std::map<Uuid, std::string> m_pieces;
};

} // namespace ombrel

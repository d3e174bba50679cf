#pragma once

#include "core/AppState.h"
#include "shell/TabPage.h"
#include "shell/tabs/QuestionListModel.h"

#include <QList>

#include <filesystem>
#include <vector>

class QCompleter;
class QProgressBar;
class QPushButton;
class QStringListModel;
class QTableView;

namespace ombrel {

class Banner;
class Card;
class EmptyState;
class FactList;
class ModelSetup;
class SectionTitle;
class SegmentedControl;
class StatTile;
class TextField;
class TextLabel;
class VariantTableModel;
class WholeListView;

// How well the variants of an index find the right sections for its test questions.
class EvaluationTab final : public TabPage {
    Q_OBJECT

  public:
    EvaluationTab(std::shared_ptr<AppState> state, StudioServices& services, QWidget* parent);

  protected:
    void refresh() override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

  private:
    void addCommands();
    QWidget* makeTiles();
    QWidget* makeVariants();
    QWidget* makeAdding();
    QWidget* makeQuestions();
    QWidget* makeDetail();

    void refreshCommands();
    void refreshVariants();
    void refreshQuestions();
    void refreshDetail();

    void useVariant(int row);
    void addTyped();
    void chooseFile();
    void importFile(const std::filesystem::path& file);
    void suggestBreadcrumbs();
    void select(const QModelIndex& current);
    void removeShown();
    void openShown();

    ModelSetup* m_modelSetup;
    Banner* m_reason;
    QPushButton* m_run;
    QWidget* m_running;
    TextLabel* m_progressText;
    QProgressBar* m_progress;
    QPushButton* m_draft;
    QList<StatTile*> m_tiles;
    SectionTitle* m_variantTitle;
    QTableView* m_variants;
    VariantTableModel* m_variantRows;
    TextField* m_question;
    TextField* m_breadcrumb;
    QStringListModel* m_suggestions;
    QPushButton* m_add;
    TextLabel* m_importResult;
    SectionTitle* m_listTitle;
    SegmentedControl* m_filter;
    QPushButton* m_clear;
    WholeListView* m_list;
    QuestionListModel* m_rows;
    EmptyState* m_empty;
    TextLabel* m_noMatch;
    Card* m_detail;
    TextLabel* m_detailQuestion;
    FactList* m_detailFacts;
    TextLabel* m_detailLine;
    QPushButton* m_remove;
    QuestionListModel::Filter m_shownFilter = QuestionListModel::Filter::all;
    bool m_isShowing = false; // the list is brought in line with the state
};

} // namespace ombrel

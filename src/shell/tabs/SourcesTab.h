#pragma once

#include "shell/TabPage.h"

#include <QStringList>

#include <filesystem>
#include <optional>
#include <vector>

class QLineEdit;
class QPushButton;
class QSortFilterProxyModel;
class QStackedWidget;

namespace ombrel {

class Banner;
class BuildProgress;
class DropHint;
class EmptyState;
class ModelSetup;
class ProgressRow;
class SourceDetail;
class SourceImport;
class SourceList;
class SourcesModel;
class TextLabel;

// Everything that the index is built from.
class SourcesTab final : public TabPage {
    Q_OBJECT

  public:
    SourcesTab(std::shared_ptr<AppState> state, StudioServices& services, QWidget* parent);

    // Takes in files and folders that were chosen or dropped.
    void add(const QStringList& paths);

  protected:
    void refresh() override;
    void resizeEvent(QResizeEvent* event) override;

  private:
    QWidget* makeEmptyState();
    QWidget* makeFilled();
    QPushButton* makeAddButton(const char* name, const QString& text, void (SourcesTab::*run)());
    void chooseFiles();
    void chooseFolder();
    void pasteText();
    void openPasteSheet(std::optional<Uuid> existingID, const QString& title, const QString& text);
    void rescan();

    void showImport();
    void showProblem();
    void showSelection();
    void currentChanged();
    std::vector<Uuid> selectedSources() const;
    const SourceDocument* selectedSource() const;
    void openSelected();
    void showFolder();
    void removeSelected();
    void openMenu(const QPoint& where);
    void openPath(const std::filesystem::path& path);

    SourceImport* m_import;
    SourcesModel* m_model;
    QSortFilterProxyModel* m_shown;
    ModelSetup* m_setup;
    Banner* m_notice;
    ProgressRow* m_search;
    BuildProgress* m_progress;
    QStackedWidget* m_body;
    QWidget* m_empty = nullptr;
    QWidget* m_filled = nullptr;
    QLineEdit* m_filter = nullptr;
    TextLabel* m_summary = nullptr;
    SourceList* m_list = nullptr;
    TextLabel* m_noMatch = nullptr;
    DropHint* m_drop = nullptr;
    SourceDetail* m_detail = nullptr;
    bool m_isShowingSelection = false;
    bool m_isTellingProblem = false;
};

} // namespace ombrel

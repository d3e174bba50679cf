#pragma once

#include "core/IndexedChunks.h"
#include "export/ExportReadiness.h"
#include "shell/TabPage.h"

#include <QPointer>

#include <optional>
#include <string>
#include <vector>

class QGridLayout;
class QProgressBar;
class QPushButton;

namespace ombrel {

class Badge;
class Banner;
class Card;
class ChecklistRowView;
class ChoiceTileGroup;
class ElidedLabel;
class SwiftCodeView;
class TextLabel;

// The Swift package of the index: whether all is ready, what it will hold, and the export itself.
class ExportTab final : public TabPage {
    Q_OBJECT

  public:
    ExportTab(std::shared_ptr<AppState> state, StudioServices& services, QWidget* parent);

  protected:
    void refresh() override;
    void hideEvent(QHideEvent* event) override;

  private:
    Card* makeSummary();
    Card* makeChecklist();
    Card* makeExport();
    Card* makePreview();

    void showScreen();
    void showFiles();
    void chooseDestination();
    void pressButton();
    static Task<void> writePackage(QPointer<ExportTab> tab, std::shared_ptr<MainExecutor> executor,
                                   ExportWork work);
    void finish(const Result<std::filesystem::path>& package);
    // Finds out on another thread whether the compiler would take the chunks as they are.
    void examineChunks();
    static Task<void> examine(QPointer<ExportTab> tab, std::shared_ptr<MainExecutor> executor,
                              IndexedChunks pairs);

    ExportScreen m_screen;
    bool m_isExporting = false;
    bool m_isExamining = false;
    // Shared while they are seen, so that what is edited becomes another array.
    IndexedChunks m_examined;
    std::optional<std::string> m_literalWarning;

    ElidedLabel* m_name;
    Badge* m_chunks;
    std::vector<ChecklistRowView*> m_rows;
    ElidedLabel* m_destination;
    QPushButton* m_choose;
    ChoiceTileGroup* m_form;
    Banner* m_warning;
    QPushButton* m_export;
    QProgressBar* m_progress;
    TextLabel* m_note;
    Banner* m_done;
    QGridLayout* m_files;
    std::vector<ElidedLabel*> m_paths;
    std::vector<TextLabel*> m_sizes;
    SwiftCodeView* m_usage;
};

} // namespace ombrel

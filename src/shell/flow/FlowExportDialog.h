#pragma once

#include "flows/ExportOutcome.h"

#include <QDialog>

#include <filesystem>

class QProgressBar;
class QPushButton;

namespace ombrel {

class LongTextView;
class TextLabel;

// Follows the export of a project's flows: that it goes on, then how it ended. While it goes on it
// can be put away; it comes back with the outcome.
class FlowExportDialog final : public QDialog {
    Q_OBJECT

  public:
    FlowExportDialog(const QString& packageName, std::filesystem::path destination, QWidget* over);

    bool isExporting() const { return m_isExporting; }
    void showOutcome(const ExportOutcome& outcome);
    // Closing it while the export goes on puts it away.
    void done(int result) override;

  Q_SIGNALS:
    void exportEnded();

  private:
    bool m_isExporting = true;
    std::filesystem::path m_destination;
    TextLabel* m_title;
    TextLabel* m_message;
    QProgressBar* m_bar;
    LongTextView* m_output;
    QPushButton* m_copy;
    QPushButton* m_folder;
    QPushButton* m_background;
    QPushButton* m_ok;
};

} // namespace ombrel

#pragma once

#include "core/AgentOutputKind.h"
#include "platform/MainExecutor.h"
#include "platform/Result.h"
#include "platform/Task.h"
#include "shell/agents/GenerableReading.h"

#include <QDialog>
#include <QPointer>
#include <QTimer>

#include <functional>
#include <memory>
#include <string>

class QListView;
class QPushButton;

namespace ombrel {

class Banner;
class ChoiceBox;
class OutputRowsModel;
class SwiftSourceEditor;
class TextLabel;
class WarningsModel;

// Where Swift source becomes an output: the source, and beside it what it defines, as it is typed.
// The source is read on another thread. The object names begin with "import.".
class GenerableImportSheet final : public QDialog {
    Q_OBJECT

  public:
    using OnImport = std::function<void(const AgentOutputKind&)>;
    GenerableImportSheet(std::shared_ptr<MainExecutor> executor, OnImport onImport, QWidget* over);

    // The content of the file becomes the source.
    void openFile(const QString& path);
    // Whether what is shown beside the source is of the source as it is.
    bool isUpToDate() const { return !m_isReading && !m_typingPause.isActive(); }

  private:
    static Task<void> readFile(std::shared_ptr<MainExecutor> executor, std::string path,
                               QPointer<GenerableImportSheet> sheet);
    static Task<void> readSource(std::shared_ptr<MainExecutor> executor, std::string source,
                                 std::string rootName, int generation,
                                 QPointer<GenerableImportSheet> sheet);

    QWidget* makeSourceSide();
    QWidget* makeResultSide();
    QLayout* makeFoot();
    void chooseFile();
    void takeFile(const QString& name, const Result<std::string>& content);
    void sourceChanged();
    // Reads the source as it is now, after what is being read.
    void read();
    void takeReading(GenerableReading reading, int generation);
    void showReading();
    void import();

    std::shared_ptr<MainExecutor> m_executor;
    OnImport m_onImport;
    std::string m_selectedRootName;
    std::shared_ptr<const GenerableReading> m_reading;
    int m_generation = 0; // of the source and root that are wanted
    bool m_isReading = false;
    QTimer m_typingPause;

    SwiftSourceEditor* m_source;
    Banner* m_fileError;
    TextLabel* m_status; // in place of a result
    TextLabel* m_busy;
    QWidget* m_result = nullptr;
    QWidget* m_typeRow = nullptr;
    ChoiceBox* m_type;
    TextLabel* m_heading;
    OutputRowsModel* m_rowsModel;
    QListView* m_rows;
    TextLabel* m_warningsHeading;
    WarningsModel* m_warningsModel;
    QListView* m_warnings;
    QPushButton* m_import;
};

} // namespace ombrel

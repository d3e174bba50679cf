#pragma once

#include "agents/OutputDraft.h"
#include "platform/MainExecutor.h"

#include <QDialog>
#include <QTimer>

#include <functional>
#include <memory>
#include <vector>

class QPlainTextEdit;
class QPushButton;
class QStackedWidget;

namespace ombrel {

class EnumCaseListEditor;
class IconView;
class PropertyListEditor;
class SegmentedControl;
class TextLabel;

// Where an output is edited, on a copy that is saved or dropped as a whole. Undo and redo are about
// what is done here. The object names begin with "output.".
class OutputEditorSheet final : public QDialog {
    Q_OBJECT

  public:
    using OnSave = std::function<void(const AgentOutputKind&)>;
    OutputEditorSheet(const AgentOutputKind& output, std::shared_ptr<MainExecutor> executor,
                      OnSave onSave, QWidget* over);

  protected:
    bool focusNextPrevChild(bool next) override;

  private:
    QWidget* makeEditors();
    QWidget* makeExample();
    QLayout* makeFoot();
    // Shows the draft after it changed, and takes note of it for undo.
    void draftChanged();
    void showDraft();
    void takeCheckpoint();
    // Goes back to the last of `from`, and keeps what was for the way back in `to`.
    void step(std::vector<OutputDraft>& from, std::vector<OutputDraft>& to);
    void chooseImport();
    void save();

    std::shared_ptr<MainExecutor> m_executor;
    OnSave m_onSave;
    OutputDraft m_draft;
    OutputDraft m_checkpoint; // the draft before what is being typed
    std::vector<OutputDraft> m_undo;
    std::vector<OutputDraft> m_redo;
    QTimer m_burst;

    SegmentedControl* m_kind;
    TextLabel* m_help;
    EnumCaseListEditor* m_cases;
    PropertyListEditor* m_properties;
    QStackedWidget* m_editors = nullptr;
    QWidget* m_example = nullptr;
    TextLabel* m_exampleHeading;
    QPlainTextEdit* m_exampleText;
    IconView* m_problemIcon;
    TextLabel* m_problem;
    QPushButton* m_save;
};

} // namespace ombrel

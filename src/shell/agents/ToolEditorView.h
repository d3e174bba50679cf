#pragma once

#include "shell/StateView.h"

namespace ombrel {

class IconView;
class OutputKindEditor;
class PropertyListEditor;
class TextArea;
class TextField;
class TextLabel;

// Where one tool is edited. The object names begin with "tool.".
class ToolEditorView final : public StateView {
    Q_OBJECT

  public:
    ToolEditorView(std::shared_ptr<AppState> state, Uuid toolID, QWidget* parent = nullptr);
    // The tool that it is for.
    Uuid id() const { return m_toolID; }

  protected:
    void refresh() override;
    bool focusNextPrevChild(bool next) override;

  private:
    QWidget* makeHeader();
    QWidget* makeBody();
    template <class Change>
    void edit(Change change);

    Uuid m_toolID;
    TextField* m_name;
    TextField* m_description;
    TextLabel* m_usage;
    PropertyListEditor* m_arguments;
    OutputKindEditor* m_output;
    TextArea* m_mock;
    IconView* m_verdictIcon;
    TextLabel* m_verdict;
};

} // namespace ombrel

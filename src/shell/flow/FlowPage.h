#pragma once

#include "core/AppState.h"

#include <QWidget>

#include <functional>
#include <memory>

class QComboBox;
class QSpinBox;

namespace ombrel {

class IssueList;
class PropertyListEditor;
class SectionTitle;
class TextField;
class TextLabel;

// The inspector of a flow itself: its settings, its input, its context and its issues.
class FlowPage final : public QWidget {
    Q_OBJECT

  public:
    FlowPage(std::shared_ptr<AppState> state, Uuid flowID, QWidget* parent = nullptr);
    void showFlow(const Flow& flow);

  private:
    void edit(const std::function<void(Flow&)>& write);

    std::shared_ptr<AppState> m_state;
    Uuid m_flowID;
    TextField* m_name;
    QComboBox* m_kind;
    QSpinBox* m_maxHops;
    QSpinBox* m_maxHistory;
    QWidget* m_maxHistoryField;
    PropertyListEditor* m_startInput;
    TextLabel* m_conversationNote;
    PropertyListEditor* m_context;
    SectionTitle* m_issuesTitle;
    IssueList* m_issues;
};

} // namespace ombrel

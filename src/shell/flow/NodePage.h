#pragma once

#include "core/AppState.h"

#include <QWidget>

#include <functional>
#include <memory>
#include <optional>

class QCheckBox;
class QComboBox;
class QPushButton;

namespace ombrel {

class ConnectionList;
class IssueList;
class SectionTitle;
class TextField;
class TextLabel;

// The inspector of a node.
class NodePage final : public QWidget {
    Q_OBJECT

  public:
    NodePage(std::shared_ptr<AppState> state, Uuid flowID, QWidget* parent = nullptr);
    void showNode(const Flow& flow, const FlowNode& node);

  Q_SIGNALS:
    // The user wants to edit the agent or tool.
    void shown(const ombrel::FlowNodeKind& kind);

  private:
    QWidget* makeBranchForm();
    QWidget* makeEndForm();
    void show(const FlowNodeKind::Start& start);
    void show(const FlowNodeKind::Agent& reference);
    void show(const FlowNodeKind::Branch& branch);
    void show(const FlowNodeKind::Tool& reference);
    void show(const FlowNodeKind::End& end);
    void showTexts(const QString& title, const QString& name, const QString& note,
                   const QString& edit);
    template <class Kind>
    void edit(const std::function<void(Kind&)>& write);

    std::shared_ptr<AppState> m_state;
    Uuid m_flowID;
    std::optional<Uuid> m_nodeID;
    SectionTitle* m_title;
    TextLabel* m_name;
    TextLabel* m_note;
    QPushButton* m_edit;
    TextField* m_field;
    QComboBox* m_operator;
    TextField* m_value;
    QWidget* m_valueField = nullptr;
    QWidget* m_branch;
    TextField* m_caseName;
    QCheckBox* m_carries;
    QWidget* m_end;
    IssueList* m_issues;
    TextLabel* m_unconnected;
    ConnectionList* m_connections;
    QPushButton* m_delete;
};

} // namespace ombrel

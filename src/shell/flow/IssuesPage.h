#pragma once

#include "flows/FlowIssue.h"
#include "shell/StateView.h"

#include <memory>
#include <vector>

class QListView;
class QStackedLayout;
class QStandardItemModel;

namespace ombrel {

// The issues of a flow. Choosing one that is about a node leads to the node.
class IssuesPage final : public StateView {
    Q_OBJECT

  public:
    IssuesPage(std::shared_ptr<AppState> state, Uuid flowID, QWidget* parent = nullptr);

  Q_SIGNALS:
    void nodeChosen(ombrel::Uuid nodeID);

  protected:
    void refresh() override;

  private:
    void choose(int row);

    Uuid m_flowID;
    std::vector<FlowIssue> m_issues;
    QStandardItemModel* m_model;
    QListView* m_list;
    QStackedLayout* m_stack;
};

} // namespace ombrel

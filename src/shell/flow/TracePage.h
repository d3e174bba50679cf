#pragma once

#include "core/FlowRunOutcome.h"
#include "shell/StateView.h"

#include <memory>
#include <optional>

class QFrame;
class QListView;
class QModelIndex;
class QStackedWidget;

namespace ombrel {

class Banner;
class ElidedLabel;
class EmptyState;
class LongTextView;
class ResultView;
class TraceModel;

// What the last run reported, step by step, and how it ended. Choosing a step leads to its node,
// and shows all of the step's detail beside the list.
class TracePage final : public StateView {
    Q_OBJECT

  public:
    TracePage(std::shared_ptr<AppState> state, Uuid flowID, QWidget* parent = nullptr);

  Q_SIGNALS:
    void nodeChosen(ombrel::Uuid nodeID);

  protected:
    void refresh() override;

  private:
    QWidget* makeDetail();
    void showOutcome(const FlowRunOutcome& outcome);
    void showDetail(int row);
    void choose(const QModelIndex& index);

    Uuid m_flowID;
    std::optional<FlowRunOutcome> m_shown;
    QStackedWidget* m_stack;
    EmptyState* m_note;
    Banner* m_problem;
    ResultView* m_result;
    TraceModel* m_model;
    QListView* m_list;
    ElidedLabel* m_detailTitle;
    LongTextView* m_detailText;
    QWidget* m_detail;
};

} // namespace ombrel

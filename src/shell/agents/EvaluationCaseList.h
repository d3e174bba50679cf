#pragma once

#include "core/AppState.h"
#include "shell/agents/PagedRows.h"

#include <memory>
#include <set>

namespace ombrel {

// The evaluation cases of an agent, to be edited; each is an EvaluationCaseCard.
class EvaluationCaseList final : public PagedRows {
    Q_OBJECT

  public:
    EvaluationCaseList(const QString& name, std::shared_ptr<AppState> state, Uuid agentID,
                       QWidget* parent = nullptr);
    // Shows the cases as they are now.
    void showCases(const std::set<Uuid>& runningCaseIDs);

  Q_SIGNALS:
    void runRequested(const AgentEvaluationCase& evaluationCase);

  protected:
    int rowCount() const override;
    QWidget* makeRow(const QString& name) override;
    void showRow(QWidget* row, int index) override;
    void appendRow() override;

  private:
    // The case that a card shows; null when there is none any more.
    const AgentEvaluationCase* caseOf(const QWidget* card) const;

    std::shared_ptr<AppState> m_state;
    Uuid m_agentID;
    std::set<Uuid> m_runningCaseIDs;
};

} // namespace ombrel

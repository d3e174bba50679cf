#pragma once

#include "agents/AgentRunResult.h"

#include <QWidget>

class QVBoxLayout;

namespace ombrel {

// What an agent answered, and what it was given to know. The object names begin with
// "agent.result".
class AgentResultView final : public QWidget {
    Q_OBJECT

  public:
    explicit AgentResultView(QWidget* parent = nullptr);
    void showResult(const AgentRunResult& result);

  private:
    static QWidget* makeAnswer(const AgentRunResult& result);
    static QWidget* makeTable(const std::vector<AgentOutputField>& fields);
    static QWidget* makeContext(const std::vector<AgentRetrievedContext>& context);

    QVBoxLayout* m_column;
};

} // namespace ombrel

#pragma once

#include "shell/StateView.h"

namespace ombrel {

class FactList;
class PageHeader;
class TextLabel;

// What an agent, a tool or a flow is, in facts, and how the command line works on it.
class SummaryPage final : public StateView {
    Q_OBJECT

  public:
    explicit SummaryPage(std::shared_ptr<AppState> state, QWidget* parent = nullptr);

  protected:
    void refresh() override;

  private:
    void show(const Agent& agent);
    void show(const ToolDefinition& tool);
    void show(const Flow& flow);
    void setFacts(const QString& title, const QString& subtitle,
                  const std::vector<std::pair<QString, QString>>& facts, const QString& command);

    PageHeader* m_header;
    FactList* m_facts;
    TextLabel* m_command;
    std::size_t m_shownFacts = 0;
};

} // namespace ombrel

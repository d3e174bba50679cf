#pragma once

#include "core/AgentOutputKind.h"

#include <QWidget>

#include <optional>

namespace ombrel {

class OutputRowsModel;
class TextLabel;
class WholeListView;

// What an output holds, in short: how much, and a row for each property or case. Below the object
// name NAME: NAME.heading, NAME.rows and NAME.placeholder.
class OutputSummaryView final : public QWidget {
    Q_OBJECT

  public:
    explicit OutputSummaryView(const QString& name, QWidget* parent = nullptr);
    void showOutput(const AgentOutputKind& output);

  private:
    TextLabel* m_heading;
    TextLabel* m_placeholder;
    OutputRowsModel* m_model;
    WholeListView* m_rows;
    std::optional<AgentOutputKind> m_shown;
};

} // namespace ombrel

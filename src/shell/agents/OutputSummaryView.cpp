#include "shell/agents/OutputSummaryView.h"

#include "agents/OutputTexts.h"
#include "shell/QtText.h"
#include "shell/agents/OutputRowDelegate.h"
#include "shell/agents/OutputRowsModel.h"
#include "shell/design/Named.h"
#include "shell/design/Spacing.h"
#include "shell/design/TextLabel.h"
#include "shell/design/WholeListView.h"

#include <QVBoxLayout>

#include <utility>

namespace ombrel {

namespace {

constexpr int mostHeight = 280;

} // namespace

OutputSummaryView::OutputSummaryView(const QString& name, QWidget* parentWidget)
    : QWidget(parentWidget), m_heading(new TextLabel({}, TextRole::strong)),
      m_placeholder((new TextLabel({}, TextRole::body, TextLabel::Ink::secondary))->wrapping()),
      m_model(new OutputRowsModel(this)),
      m_rows(named(new WholeListView(mostHeight), name + QStringLiteral(".rows"), tr("Output"))) {
    setObjectName(name);
    m_heading->setObjectName(name + QStringLiteral(".heading"));
    m_placeholder->setObjectName(name + QStringLiteral(".placeholder"));
    m_rows->setItemDelegate(new OutputRowDelegate(this));
    m_rows->setModel(m_model);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(spacing::tight);
    column->addWidget(m_heading);
    column->addWidget(m_placeholder);
    column->addWidget(m_rows);
}

void OutputSummaryView::showOutput(const AgentOutputKind& output) {
    if (m_shown == output) {
        return;
    }
    m_shown = output;
    const OutputDefinitionSummary summary = outputDefinitionSummary(output);
    m_heading->setText(toQt(summary.heading));
    m_placeholder->setText(summary.placeholder ? toQt(*summary.placeholder) : QString());
    m_placeholder->setVisible(summary.placeholder.has_value());
    std::vector<OutputRow> rows;
    for (const auto& row : summary.rows) {
        rows.push_back({0, row.name, row.typeLabel, row.description.value_or(std::string())});
    }
    m_rows->setVisible(!rows.empty());
    m_model->setRows(std::move(rows));
}

} // namespace ombrel

#include "shell/agents/EnumCaseListEditor.h"

#include "agents/PropertyEditing.h"
#include "shell/agents/EnumCaseRow.h"

#include <iterator>
#include <utility>

namespace ombrel {

EnumCaseListEditor::EnumCaseListEditor(const QString& name, const QString& title,
                                       QWidget* parentWidget)
    : PagedRows(name, {title, tr("Add Case"), tr("No cases yet.")}, parentWidget) {
    showRows();
}

void EnumCaseListEditor::setCases(std::vector<AgentEnumCase> cases) {
    if (cases != m_cases) {
        m_cases = std::move(cases);
        showRows();
    }
}

int EnumCaseListEditor::rowCount() const {
    return static_cast<int>(std::ssize(m_cases));
}

QWidget* EnumCaseListEditor::makeRow(const QString& name) {
    auto* row = new EnumCaseRow(name);
    connect(row, &EnumCaseRow::changed, this, [this, row] {
        m_cases[static_cast<std::size_t>(indexOf(row))] = row->value();
        Q_EMIT changed();
    });
    connect(row, &EnumCaseRow::removeRequested, this, [this, row] {
        m_cases.erase(m_cases.begin() + indexOf(row));
        showRows();
        Q_EMIT changed();
    });
    return row;
}

void EnumCaseListEditor::showRow(QWidget* row, int index) {
    static_cast<EnumCaseRow*>(row)->showValue(m_cases[static_cast<std::size_t>(index)]);
}

void EnumCaseListEditor::appendRow() {
    m_cases.push_back(newEnumCase());
    showRows();
    Q_EMIT changed();
}

} // namespace ombrel

#pragma once

#include "core/AgentEnumCase.h"
#include "shell/agents/PagedRows.h"

#include <vector>

namespace ombrel {

// Edits the cases of an enumeration. Row N of the page is an EnumCaseRow with the object name
// NAME.N; see there for the controls in it.
class EnumCaseListEditor final : public PagedRows {
    Q_OBJECT

  public:
    EnumCaseListEditor(const QString& name, const QString& title, QWidget* parent = nullptr);

    const std::vector<AgentEnumCase>& cases() const { return m_cases; }
    // Shows the list; tells nobody. The keyboard focus stays where it is.
    void setCases(std::vector<AgentEnumCase> cases);

  Q_SIGNALS:
    // The user edited the list.
    void changed();

  protected:
    int rowCount() const override;
    QWidget* makeRow(const QString& name) override;
    void showRow(QWidget* row, int index) override;
    void appendRow() override;

  private:
    std::vector<AgentEnumCase> m_cases;
};

} // namespace ombrel

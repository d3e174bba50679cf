#pragma once

#include "core/AgentProperty.h"
#include "shell/agents/PagedRows.h"

#include <vector>

namespace ombrel {

// Edits a list of fields: an input, an object, arguments. Row N of the page is a PropertyRow with
// the object name NAME.N; see there for the controls in it.
class PropertyListEditor final : public PagedRows {
    Q_OBJECT

  public:
    // `allowsNesting`: a row of an array, an object or an enumeration lets what is in it be edited.
    PropertyListEditor(const QString& name, const QString& title, bool allowsNesting,
                       QWidget* parent = nullptr);

    const std::vector<AgentProperty>& properties() const { return m_properties; }
    // Shows the list; tells nobody. The keyboard focus stays where it is.
    void setProperties(std::vector<AgentProperty> properties);

  Q_SIGNALS:
    // The user edited the list.
    void changed();

  protected:
    int rowCount() const override;
    QWidget* makeRow(const QString& name) override;
    void showRow(QWidget* row, int index) override;
    void appendRow() override;

  private:
    bool m_allowsNesting;
    std::vector<AgentProperty> m_properties;
};

} // namespace ombrel

#include "shell/agents/PropertyListEditor.h"

#include "agents/PropertyEditing.h"
#include "shell/agents/PropertyRow.h"

#include <iterator>
#include <utility>

namespace ombrel {

PropertyListEditor::PropertyListEditor(const QString& name, const QString& title,
                                       bool allowsNesting, QWidget* parentWidget)
    : PagedRows(name, {title, tr("Add Property"), tr("No properties yet.")}, parentWidget),
      m_allowsNesting(allowsNesting) {
    showRows();
}

void PropertyListEditor::setProperties(std::vector<AgentProperty> properties) {
    if (properties != m_properties) {
        m_properties = std::move(properties);
        showRows();
    }
}

int PropertyListEditor::rowCount() const {
    return static_cast<int>(std::ssize(m_properties));
}

QWidget* PropertyListEditor::makeRow(const QString& name) {
    auto* row = new PropertyRow(name, m_allowsNesting);
    connect(row, &PropertyRow::changed, this, [this, row] {
        m_properties[static_cast<std::size_t>(indexOf(row))] = row->value();
        Q_EMIT changed();
    });
    connect(row, &PropertyRow::removeRequested, this, [this, row] {
        m_properties.erase(m_properties.begin() + indexOf(row));
        showRows();
        Q_EMIT changed();
    });
    return row;
}

void PropertyListEditor::showRow(QWidget* row, int index) {
    static_cast<PropertyRow*>(row)->showValue(m_properties[static_cast<std::size_t>(index)]);
}

void PropertyListEditor::appendRow() {
    m_properties.push_back(newProperty());
    showRows();
    Q_EMIT changed();
}

} // namespace ombrel

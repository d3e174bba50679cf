#include "cli/OutputTable.h"

#include "agents/OutputTexts.h"
#include "agents/PropertyEditing.h"
#include "cli/FieldArgument.h"
#include "cli/Terminal.h"

#include <cstddef>
#include <variant>

namespace ombrel {

namespace {

void addRows(const std::vector<AgentProperty>& properties, std::size_t depth,
             std::vector<std::vector<std::string>>& rows) {
    for (const AgentProperty& property : properties) {
        rows.push_back(
            {std::string(2 * depth, ' ') + (property.name.empty() ? "(unnamed)" : property.name),
             fieldTypeText(property.kind) + (property.isOptional ? "?" : ""),
             property.description.value_or("")});
        if (const auto* nested = nestedProperties(property.kind)) {
            addRows(*nested, depth + 1, rows);
        }
    }
}

} // namespace

std::string fieldTable(const std::vector<AgentProperty>& properties) {
    std::vector<std::vector<std::string>> rows;
    addRows(properties, 1, rows);
    return table({"  NAME", "TYPE", "DESCRIPTION"}, rows);
}

std::string outputTable(const AgentOutputKind& output) {
    const OutputDefinitionSummary summary = outputDefinitionSummary(output);
    std::string text = "  " + summary.heading + "\n";
    if (const auto* object = std::get_if<AgentOutputKind::Object>(&output.value)) {
        return summary.rows.empty() ? text : text + fieldTable(object->properties);
    }
    std::vector<std::vector<std::string>> rows;
    for (const OutputDefinitionSummary::Row& row : summary.rows) {
        rows.push_back({"  " + row.name, row.description.value_or("")});
    }
    return rows.empty() ? text : text + table({"  CASE", "DESCRIPTION"}, rows);
}

} // namespace ombrel

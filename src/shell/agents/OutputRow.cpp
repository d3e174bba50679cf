#include "shell/agents/OutputRow.h"

#include "agents/OutputTexts.h"

#include <utility>

namespace ombrel {

namespace {

void addCases(std::vector<OutputRow>& rows, const std::vector<AgentEnumCase>& cases, int depth) {
    for (const AgentEnumCase& each : cases) {
        rows.push_back({depth, "." + each.name, {}, each.description.value_or(std::string())});
    }
}

void addProperties(std::vector<OutputRow>& rows, const std::vector<AgentProperty>& properties,
                   int depth) {
    for (const AgentProperty& property : properties) {
        rows.push_back({depth, property.name.empty() ? "(unnamed)" : property.name,
                        propertyTypeText(property), property.description.value_or(std::string())});
        const PropertyKind* kind = &property.kind;
        while (const auto* array = std::get_if<PropertyKind::Array>(&kind->value)) {
            kind = &*array->element;
        }
        if (const auto* object = std::get_if<PropertyKind::Object>(&kind->value)) {
            addProperties(rows, object->properties, depth + 1);
        } else if (const auto* choice = std::get_if<PropertyKind::Enumeration>(&kind->value)) {
            addCases(rows, choice->cases, depth + 1);
        }
    }
}

} // namespace

std::vector<OutputRow> outputRows(const AgentOutputKind& output) {
    std::vector<OutputRow> rows;
    if (const auto* enumeration = std::get_if<AgentOutputKind::Enumeration>(&output.value)) {
        addCases(rows, enumeration->cases, 0);
    } else if (const auto* object = std::get_if<AgentOutputKind::Object>(&output.value)) {
        addProperties(rows, object->properties, 0);
    }
    return rows;
}

} // namespace ombrel

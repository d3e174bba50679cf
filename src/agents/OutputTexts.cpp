#include "agents/OutputTexts.h"

#include "platform/JsonReader.h"

#include <algorithm>
#include <cstddef>
#include <variant>

namespace ombrel {

namespace {

std::string counted(std::size_t count, std::string_view one, std::string_view several) {
    return std::to_string(count) + " " + std::string(count == 1 ? one : several);
}

} // namespace

std::string_view outputHelp(AgentOutputKind::Kind kind) {
    switch (kind) {
    case AgentOutputKind::Kind::enumeration:
        return "The model picks exactly one.";
    case AgentOutputKind::Kind::object:
        return "The model fills in every non-optional property.";
    case AgentOutputKind::Kind::text:
        break;
    }
    return "The agent returns plain text. Choose Enum or Object for a structured result.";
}

std::string_view exampleHeading(AgentOutputKind::Kind kind) {
    return kind == AgentOutputKind::Kind::text ? "Example output" : "Example output (JSON)";
}

OutputDefinitionSummary outputDefinitionSummary(const AgentOutputKind& output) {
    OutputDefinitionSummary summary;
    if (const auto* enumeration = std::get_if<AgentOutputKind::Enumeration>(&output.value)) {
        summary.heading = counted(enumeration->cases.size(), "case", "cases");
        for (const AgentEnumCase& enumCase : enumeration->cases) {
            summary.rows.push_back({"." + enumCase.name, "", enumCase.description});
        }
        if (summary.rows.empty()) {
            summary.placeholder = "No cases yet \u2014 click Edit to add some.";
        }
    } else if (const auto* object = std::get_if<AgentOutputKind::Object>(&output.value)) {
        summary.heading = counted(object->properties.size(), "property", "properties");
        for (const AgentProperty& property : object->properties) {
            summary.rows.push_back({property.name.empty() ? "(unnamed)" : property.name,
                                    propertyTypeText(property), property.description});
        }
        if (summary.rows.empty()) {
            summary.placeholder = "No properties yet \u2014 click Edit to add some.";
        }
    } else {
        summary.heading = "Plain text";
    }
    return summary;
}

std::string propertyTypeText(const AgentProperty& property) {
    return property.kind.typeLabel() + (property.isOptional ? "?" : "");
}

std::optional<std::string_view> diagramOutputText(const AgentOutputKind& output) {
    if (const auto* enumeration = std::get_if<AgentOutputKind::Enumeration>(&output.value)) {
        return enumeration->cases.empty() ? std::optional<std::string_view>("No cases yet")
                                          : std::nullopt;
    }
    if (const auto* object = std::get_if<AgentOutputKind::Object>(&output.value)) {
        return object->properties.empty() ? std::optional<std::string_view>("No properties yet")
                                          : std::nullopt;
    }
    return "Plain text";
}

std::string attachmentLine(const std::vector<Agent>& agents, Uuid toolID) {
    const auto count = std::ranges::count_if(agents, [&](const Agent& agent) {
        return std::ranges::find(agent.toolIDs, toolID) != agent.toolIDs.end();
    });
    if (count == 0) {
        return "Not attached to any agent";
    }
    return "Attached to " + counted(static_cast<std::size_t>(count), "agent", "agents");
}

bool isValidMockResponse(std::string_view json) {
    auto reader = JsonReader::open(json);
    StoredValue value;
    return reader && reader->read(reader->top(), value) &&
           (value.kind == StoredKind::array || value.kind == StoredKind::dictionary);
}

std::string_view mockResponseVerdict(std::string_view json) {
    return isValidMockResponse(json) ? "Valid JSON" : "Invalid JSON";
}

} // namespace ombrel

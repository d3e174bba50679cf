#pragma once

#include "core/Agent.h"
#include "core/AgentOutputKind.h"
#include "core/ToolDefinition.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// What the faces of the system say about outputs, fields and tools.
namespace ombrel {

inline constexpr std::string_view editOutputHint =
    "Edit the output, or import it from a Swift @Generable type.";
inline constexpr std::string_view importGenerableLabel = "Import @Generable\u2026";
inline constexpr std::string_view importGenerableHelp =
    "Define this output from a Swift @Generable struct or enum \u2014 paste code or open a .swift "
    "file.";
inline constexpr std::string_view exampleNote =
    "Sample values are made up to show the shape of the result.";
inline constexpr std::string_view propertyNamePrompt = "propertyName";
inline constexpr std::string_view propertyDescriptionPrompt =
    "Description \u2014 tells the model what to put here (optional)";
inline constexpr std::string_view caseNamePrompt = "caseName";
inline constexpr std::string_view caseDescriptionPrompt = "Description (optional)";
inline constexpr std::string_view mockResponseNote =
    "Returned in Studio runs \u2014 the exported package generates a Swift protocol you implement "
    "for real (T4).";

// Below the choice of what is returned.
std::string_view outputHelp(AgentOutputKind::Kind kind);
// Above the example.
std::string_view exampleHeading(AgentOutputKind::Kind kind);

// An output in short: how much there is, and a row for each property or case.
struct OutputDefinitionSummary {
    struct Row {
        std::string name;
        std::string typeLabel; // empty for a case
        std::optional<std::string> description;
        bool operator==(const Row&) const = default;
    };
    std::string heading; // "2 properties", "1 case", "Plain text"
    std::vector<Row> rows;
    // Instead of rows, where there should be some.
    std::optional<std::string_view> placeholder;
};
OutputDefinitionSummary outputDefinitionSummary(const AgentOutputKind& output);

// "[String]?": the type of a property as summaries show it.
std::string propertyTypeText(const AgentProperty& property);

// What the agent diagram shows in the output's place: "Plain text", or that there is nothing yet.
// Nothing when there are rows to show.
std::optional<std::string_view> diagramOutputText(const AgentOutputKind& output);

// "Attached to 2 agents".
std::string attachmentLine(const std::vector<Agent>& agents, Uuid toolID);

// Whether the text is a JSON object or array, which an answer of a tool should be.
bool isValidMockResponse(std::string_view json);
// "Valid JSON" or "Invalid JSON".
std::string_view mockResponseVerdict(std::string_view json);

} // namespace ombrel

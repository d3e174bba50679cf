#pragma once

#include "core/AgentOutputKind.h"
#include "core/AgentProperty.h"
#include "platform/Uuid.h"

#include <string>
#include <vector>

namespace ombrel {

// A tool that an agent may call. Inside the studio its answer is a fixed mock.
struct ToolDefinition {
    Uuid id;
    std::string name; // usable as an identifier
    std::string description;
    std::vector<AgentProperty> arguments;
    AgentOutputKind output;
    std::string mockResponseJSON;

    static constexpr auto keys() {
        return std::tuple(required("id", &ToolDefinition::id),
                          required("name", &ToolDefinition::name),
                          required("description", &ToolDefinition::description),
                          required("arguments", &ToolDefinition::arguments),
                          required("output", &ToolDefinition::output),
                          required("mockResponseJSON", &ToolDefinition::mockResponseJSON));
    }
    bool operator==(const ToolDefinition&) const = default;
};

// A new tool: a new id, the name, an object without properties as output and "{}" as its answer.
ToolDefinition newTool(std::string name);

} // namespace ombrel

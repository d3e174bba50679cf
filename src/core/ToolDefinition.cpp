#include "core/ToolDefinition.h"

#include <utility>

namespace ombrel {

ToolDefinition newTool(std::string name) {
    ToolDefinition tool;
    tool.id = Uuid::random();
    tool.name = std::move(name);
    tool.output.value = AgentOutputKind::Object{};
    tool.mockResponseJSON = "{}";
    return tool;
}

} // namespace ombrel

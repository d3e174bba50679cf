#include "core/Agent.h"

#include <utility>

namespace ombrel {

Agent newAgent(std::string name) {
    Agent agent;
    agent.id = Uuid::random();
    agent.name = std::move(name);
    return agent;
}

std::string contextPlaceholder(std::string_view fieldName) {
    return "{{context." + std::string(fieldName) + "}}";
}

} // namespace ombrel

#pragma once

#include "core/Record.h"
#include "platform/Uuid.h"

#include <optional>
#include <string>

namespace ombrel {

// A case of an enumeration output or property.
struct AgentEnumCase {
    Uuid id;
    std::string name; // what the model must produce
    std::optional<std::string> description;

    static constexpr auto keys() {
        return std::tuple(required("id", &AgentEnumCase::id),
                          required("name", &AgentEnumCase::name),
                          optional("description", &AgentEnumCase::description));
    }
    bool operator==(const AgentEnumCase&) const = default;
};

} // namespace ombrel

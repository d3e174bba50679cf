#pragma once

#include "core/Record.h"
#include "platform/Uuid.h"

#include <optional>
#include <string>

namespace ombrel {

// A connection. Nothing is checked when it is stored: it may name nodes that do not exist.
struct FlowEdge {
    Uuid id;
    Uuid fromNodeID;
    std::optional<std::string> fromPort; // absent for the unnamed port
    Uuid toNodeID;

    static constexpr auto keys() {
        return std::tuple(
            required("id", &FlowEdge::id), required("fromNodeID", &FlowEdge::fromNodeID),
            optional("fromPort", &FlowEdge::fromPort), required("toNodeID", &FlowEdge::toNodeID));
    }
    bool operator==(const FlowEdge&) const = default;
};

} // namespace ombrel

#pragma once

#include "platform/Uuid.h"

#include <variant>

namespace ombrel {

// What is selected on the flow canvas.
struct CanvasSelection {
    struct Node {
        Uuid id;
        bool operator==(const Node&) const = default;
    };
    struct Edge {
        Uuid id;
        bool operator==(const Edge&) const = default;
    };
    std::variant<Node, Edge> value;
    bool operator==(const CanvasSelection&) const = default;
};

} // namespace ombrel

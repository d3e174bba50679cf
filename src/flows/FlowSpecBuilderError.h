#pragma once

#include "platform/Uuid.h"

#include <string>
#include <variant>

namespace ombrel {

// Why a drawing could not be turned into a tree.
struct FlowSpecBuilderError {
    struct MissingAgent {
        Uuid nodeID;
        bool operator==(const MissingAgent&) const = default;
    };
    struct MissingTool {
        Uuid nodeID;
        bool operator==(const MissingTool&) const = default;
    };
    struct NodeNotConnected {
        Uuid nodeID;
        bool operator==(const NodeNotConnected&) const = default;
    };
    struct NoStartNode {
        bool operator==(const NoStartNode&) const = default;
    };
    struct StartNotConnected {
        bool operator==(const StartNotConnected&) const = default;
    };
    struct MissingNode {
        bool operator==(const MissingNode&) const = default;
    };

    std::variant<MissingAgent, MissingTool, NodeNotConnected, NoStartNode, StartNotConnected,
                 MissingNode>
        value;

    std::string message() const;
    bool operator==(const FlowSpecBuilderError&) const = default;
};

} // namespace ombrel

#pragma once

#include "core/Record.h"
#include "core/WireBranchOperator.h"
#include "platform/Uuid.h"

#include <string>
#include <variant>

namespace ombrel {

// Canvas coordinates; stored as an array of the two numbers.
struct CanvasPoint {
    double x = 0;
    double y = 0;

    static constexpr auto elements() { return std::tuple(&CanvasPoint::x, &CanvasPoint::y); }
    bool operator==(const CanvasPoint&) const = default;
};

// What a node of a flow is. Agents and tools are references that may point at nothing.
struct FlowNodeKind {
    struct Start {
        static constexpr auto keys() { return std::tuple<>(); }
        bool operator==(const Start&) const = default;
    };
    struct Agent {
        Uuid agentID;
        static constexpr auto keys() { return std::tuple(required("_0", &Agent::agentID)); }
        bool operator==(const Agent&) const = default;
    };
    struct Branch {
        std::string field;
        WireBranchOperator operation = WireBranchOperator::equals;
        std::string value;
        static constexpr auto keys() {
            return std::tuple(required("field", &Branch::field),
                              required("operator", &Branch::operation),
                              required("value", &Branch::value));
        }
        bool operator==(const Branch&) const = default;
    };
    struct Tool {
        Uuid toolID;
        static constexpr auto keys() { return std::tuple(required("_0", &Tool::toolID)); }
        bool operator==(const Tool&) const = default;
    };
    struct End {
        std::string caseName;
        bool carriesOutput = false;
        static constexpr auto keys() {
            return std::tuple(required("caseName", &End::caseName),
                              required("carriesOutput", &End::carriesOutput));
        }
        bool operator==(const End&) const = default;
    };

    std::variant<Start, Agent, Branch, Tool, End> value;

    static constexpr auto cases() {
        return std::tuple(payloadCase<Start>("start"), payloadCase<Agent>("agent"),
                          payloadCase<Branch>("branch"), payloadCase<Tool>("tool"),
                          payloadCase<End>("end"));
    }
    bool operator==(const FlowNodeKind&) const = default;
};

struct FlowNode {
    Uuid id;
    FlowNodeKind kind;
    CanvasPoint position; // of the node's centre

    static constexpr auto keys() {
        return std::tuple(required("id", &FlowNode::id), required("kind", &FlowNode::kind),
                          required("position", &FlowNode::position));
    }
    bool operator==(const FlowNode&) const = default;
};

} // namespace ombrel

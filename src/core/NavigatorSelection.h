#pragma once

#include "core/Record.h"
#include "platform/Uuid.h"

#include <variant>

namespace ombrel {

// What the window's main area shows. The thing it names may no longer exist.
struct NavigatorSelection {
    struct Rag {
        Uuid id;
        static constexpr auto keys() { return std::tuple(required("_0", &Rag::id)); }
        bool operator==(const Rag&) const = default;
    };
    struct Agent {
        Uuid id;
        static constexpr auto keys() { return std::tuple(required("_0", &Agent::id)); }
        bool operator==(const Agent&) const = default;
    };
    struct Tool {
        Uuid id;
        static constexpr auto keys() { return std::tuple(required("_0", &Tool::id)); }
        bool operator==(const Tool&) const = default;
    };
    struct Flow {
        Uuid id;
        static constexpr auto keys() { return std::tuple(required("_0", &Flow::id)); }
        bool operator==(const Flow&) const = default;
    };

    std::variant<Rag, Agent, Tool, Flow> value;

    static constexpr auto cases() {
        return std::tuple(payloadCase<Rag>("rag"), payloadCase<Agent>("agent"),
                          payloadCase<Tool>("tool"), payloadCase<Flow>("flow"));
    }
    bool operator==(const NavigatorSelection&) const = default;
};

} // namespace ombrel

#pragma once

#include "core/AgentProperty.h"

#include <variant>
#include <vector>

namespace ombrel {

// What an agent, or a tool, returns.
struct AgentOutputKind {
    struct Text {
        static constexpr auto keys() { return std::tuple<>(); }
        bool operator==(const Text&) const = default;
    };
    struct Enumeration {
        std::vector<AgentEnumCase> cases;
        static constexpr auto keys() { return std::tuple(required("_0", &Enumeration::cases)); }
        bool operator==(const Enumeration&) const = default;
    };
    struct Object {
        std::vector<AgentProperty> properties;
        static constexpr auto keys() { return std::tuple(required("_0", &Object::properties)); }
        bool operator==(const Object&) const = default;
    };

    enum class Kind { text, enumeration, object };

    std::variant<Text, Enumeration, Object> value;

    static constexpr auto cases() {
        return std::tuple(payloadCase<Text>("text"), payloadCase<Enumeration>("enumeration"),
                          payloadCase<Object>("object"));
    }

    Kind kind() const;
    bool operator==(const AgentOutputKind&) const = default;
};

constexpr auto rawValues(AgentOutputKind::Kind) {
    using K = AgentOutputKind::Kind;
    return std::array{RawValue<K>{K::text, "Text"}, RawValue<K>{K::enumeration, "Enum"},
                      RawValue<K>{K::object, "Object"}};
}

inline AgentOutputKind::Kind AgentOutputKind::kind() const {
    return rawValues(Kind{})[value.index()].value;
}

} // namespace ombrel

#pragma once

#include "core/AgentEnumCase.h"
#include "core/Box.h"
#include "core/Record.h"
#include "platform/Uuid.h"

#include <optional>
#include <string>
#include <variant>
#include <vector>

// A property and its kind contain each other, so they share a file.
namespace ombrel {

struct AgentProperty;

// The type of a field; recursive through `Array` and `Object`.
struct PropertyKind {
    struct String {
        static constexpr auto keys() { return std::tuple<>(); }
        bool operator==(const String&) const = default;
    };
    struct Int {
        static constexpr auto keys() { return std::tuple<>(); }
        bool operator==(const Int&) const = default;
    };
    struct Double {
        static constexpr auto keys() { return std::tuple<>(); }
        bool operator==(const Double&) const = default;
    };
    struct Bool {
        static constexpr auto keys() { return std::tuple<>(); }
        bool operator==(const Bool&) const = default;
    };
    struct Object {
        std::vector<AgentProperty> properties;
        static constexpr auto keys() { return std::tuple(required("_0", &Object::properties)); }
        bool operator==(const Object& other) const;
    };
    struct Array {
        Box<PropertyKind> element;
        static constexpr auto keys() { return std::tuple(required("_0", &Array::element)); }
        bool operator==(const Array& other) const;
    };
    struct Enumeration {
        std::vector<AgentEnumCase> cases;
        static constexpr auto keys() { return std::tuple(required("_0", &Enumeration::cases)); }
        bool operator==(const Enumeration&) const = default;
    };

    // The flat form that type pickers list.
    enum class BaseKind { string, integer, number, boolean, object, array, enumeration };

    std::variant<String, Int, Double, Bool, Object, Array, Enumeration> value;

    static constexpr auto cases() {
        return std::tuple(payloadCase<String>("string"), payloadCase<Int>("int"),
                          payloadCase<Double>("double"), payloadCase<Bool>("bool"),
                          payloadCase<Object>("object"), payloadCase<Array>("array"),
                          payloadCase<Enumeration>("enumeration"));
    }

    // The compact type name: "String", "Enum", "[[Int]]".
    std::string typeLabel() const;
    BaseKind baseKind() const;

    bool operator==(const PropertyKind& other) const;
};

constexpr auto rawValues(PropertyKind::BaseKind) {
    using B = PropertyKind::BaseKind;
    return std::array{RawValue<B>{B::string, "String"},   RawValue<B>{B::integer, "Int"},
                      RawValue<B>{B::number, "Double"},   RawValue<B>{B::boolean, "Bool"},
                      RawValue<B>{B::object, "Object"},   RawValue<B>{B::array, "Array"},
                      RawValue<B>{B::enumeration, "Enum"}};
}

// A named, typed field: of an agent's input, an object, a tool's arguments, a flow's input or its
// context.
struct AgentProperty {
    Uuid id; // of the row; not part of a schema
    std::string name;
    PropertyKind kind;
    std::optional<std::string> description; // guides the model
    bool isOptional = false;

    static constexpr auto keys() {
        return std::tuple(required("id", &AgentProperty::id),
                          required("name", &AgentProperty::name),
                          required("kind", &AgentProperty::kind),
                          optional("description", &AgentProperty::description),
                          required("isOptional", &AgentProperty::isOptional));
    }
    bool operator==(const AgentProperty&) const = default;
};

} // namespace ombrel

#pragma once

#include "core/Record.h"

#include <optional>
#include <string>
#include <variant>

namespace ombrel {

// What the model returned for one property, as it is shown.
struct AgentOutputFieldValue {
    struct Plain {
        std::string text;
        static constexpr auto keys() { return std::tuple(required("_0", &Plain::text)); }
        bool operator==(const Plain&) const = default;
    };
    struct EnumCase {
        std::string name; // as the model wrote it, whether or not there is such a case
        std::optional<std::string> description;
        static constexpr auto keys() {
            return std::tuple(required("name", &EnumCase::name),
                              optional("description", &EnumCase::description));
        }
        bool operator==(const EnumCase&) const = default;
    };
    struct Missing {
        static constexpr auto keys() { return std::tuple<>(); }
        bool operator==(const Missing&) const = default;
    };

    std::variant<Plain, EnumCase, Missing> value;

    static constexpr auto cases() {
        return std::tuple(payloadCase<Plain>("plain"), payloadCase<EnumCase>("enumCase"),
                          payloadCase<Missing>("missing"));
    }
    bool operator==(const AgentOutputFieldValue&) const = default;
};

} // namespace ombrel

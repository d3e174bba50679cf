#pragma once

#include "core/Record.h"
#include "platform/Uuid.h"

#include <string>

namespace ombrel {

// One line of the console of a flow's run.
struct FlowConsoleLine {
    enum class Kind { info, step, output, success, failure };

    Uuid id;
    std::string text;
    Kind kind = Kind::output;

    static constexpr auto keys() {
        return std::tuple(required("id", &FlowConsoleLine::id),
                          required("text", &FlowConsoleLine::text),
                          required("kind", &FlowConsoleLine::kind));
    }
    bool operator==(const FlowConsoleLine&) const = default;
};

constexpr auto rawValues(FlowConsoleLine::Kind) {
    using K = FlowConsoleLine::Kind;
    return std::array{RawValue<K>{K::info, "info"}, RawValue<K>{K::step, "step"},
                      RawValue<K>{K::output, "output"}, RawValue<K>{K::success, "success"},
                      RawValue<K>{K::failure, "failure"}};
}

} // namespace ombrel

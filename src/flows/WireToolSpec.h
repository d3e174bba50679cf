#pragma once

#include "core/Record.h"

#include <string>

namespace ombrel {

struct WireToolSpec {
    std::string name;
    std::string mockResponseJSON; // as written

    static constexpr auto keys() {
        return std::tuple(required("name", &WireToolSpec::name),
                          required("mockResponseJSON", &WireToolSpec::mockResponseJSON));
    }
    bool operator==(const WireToolSpec&) const = default;
};

} // namespace ombrel

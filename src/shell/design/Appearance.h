#pragma once

#include "core/Record.h"

namespace ombrel {

enum class Appearance { system, light, dark };

constexpr auto rawValues(Appearance) {
    using enum Appearance;
    return std::array{RawValue<Appearance>{system, "system"}, RawValue<Appearance>{light, "light"},
                      RawValue<Appearance>{dark, "dark"}};
}

} // namespace ombrel

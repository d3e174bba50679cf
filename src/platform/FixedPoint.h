#pragma once

#include <string>

namespace ombrel {

// The number with so many decimals and a full stop, in every locale: "3.50".
std::string fixedPoint(double number, int decimals);

} // namespace ombrel

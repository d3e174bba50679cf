#pragma once

#include <string>

namespace ombrel {

// The shortest decimal text that reads back as the same number, always with a fraction or an
// exponent: "3.0", "-0.1", "1e-05", "2e+20"; "inf", "-inf" and "nan" of what is no finite number.
// Between 0.0001 and 2^54 there is no exponent.
std::string shortestDecimal(double number);

} // namespace ombrel

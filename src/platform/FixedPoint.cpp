#include "platform/FixedPoint.h"

#include <charconv>
#include <limits>

namespace ombrel {

std::string fixedPoint(double number, int decimals) {
    // The longest whole part there is, sign and point.
    std::string text(
        static_cast<std::size_t>(std::numeric_limits<double>::max_exponent10 + 3 + decimals), '\0');
    const auto written = std::to_chars(text.data(), text.data() + text.size(), number,
                                       std::chars_format::fixed, decimals);
    text.resize(static_cast<std::size_t>(written.ptr - text.data()));
    return text;
}

} // namespace ombrel

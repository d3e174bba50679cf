#include "platform/ShortestDecimal.h"

#include <charconv>
#include <cmath>
#include <cstddef>

namespace ombrel {

std::string shortestDecimal(double number) {
    if (!std::isfinite(number)) {
        return std::isnan(number) ? "nan" : number > 0 ? "inf" : "-inf";
    }
    const double size = std::abs(number);
    const bool isPlain = number == 0 || (size >= 1e-4 && size < 0x1p54);
    char text[32];
    const auto end =
        std::to_chars(text, text + sizeof text, number,
                      isPlain ? std::chars_format::fixed : std::chars_format::scientific);
    std::string written(text, static_cast<std::size_t>(end.ptr - text));
    if (isPlain && written.find('.') == std::string::npos) {
        written += ".0";
    }
    return written;
}

} // namespace ombrel

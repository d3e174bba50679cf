#include "core/Variant.h"

#include <algorithm>
#include <compare>
#include <cstddef>

namespace ombrel {

std::optional<double> Variant::medianLatency() const {
    if (recordedLatencies.empty()) {
        return std::nullopt;
    }
    auto sorted = recordedLatencies;
    const auto middle = sorted.begin() + static_cast<std::ptrdiff_t>(sorted.size() / 2);
    // A total order, since a file may hold values that are not numbers.
    std::nth_element(sorted.begin(), middle, sorted.end(),
                     [](double a, double b) { return std::strong_order(a, b) < 0; });
    return *middle;
}

std::string Variant::summaryLabel() const {
    return std::string(rawValue(settings.index)) + " \u00B7 " + name;
}

} // namespace ombrel

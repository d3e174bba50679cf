#pragma once

#include <QColor>

namespace ombrel {

// The opaque colour on the way from one to the other: 0 is the first, 1 the second.
inline QColor mixed(const QColor& from, const QColor& to, double amount) {
    const auto part = [amount](int a, int b) { return static_cast<int>(a + (b - a) * amount); };
    return {part(from.red(), to.red()), part(from.green(), to.green()),
            part(from.blue(), to.blue())};
}

} // namespace ombrel

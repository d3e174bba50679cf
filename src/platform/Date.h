#pragma once

namespace ombrel {

// A moment, in seconds since 2001-01-01 00:00:00 UTC, as property lists store it.
struct Date {
    double secondsSinceReference = 0;

    static Date now();
    bool operator==(const Date&) const = default;
};

// Seconds from 1970-01-01 to 2001-01-01, both 00:00:00 UTC.
inline constexpr double referenceDateSince1970 = 978307200.0;

} // namespace ombrel

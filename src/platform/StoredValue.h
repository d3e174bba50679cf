#pragma once

#include <cstdint>

namespace ombrel {

enum class StoredKind {
    nothing,
    boolean,
    integer,
    real,
    date,
    data,
    string,
    array,
    dictionary,
    other
};

// What stands at one place of a property list or a JSON text: the scalars themselves, of everything
// else where it is and how large. An integer beyond 64 bits is given as a real.
struct StoredValue {
    StoredKind kind = StoredKind::nothing;
    bool boolean = false;
    std::int64_t integer = 0;
    double real = 0;         // of a real, a date (seconds since 2001) and an integer
    std::uint64_t count = 0; // elements, entries, or the length of a string or data as stored
    std::uint64_t place = 0; // for the reader that gave the value, like the next one
    bool isWide = false;
};

} // namespace ombrel

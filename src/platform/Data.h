#pragma once

#include <string>

namespace ombrel {

// Bytes that are not text.
struct Data {
    std::string bytes;
    bool operator==(const Data&) const = default;
};

} // namespace ombrel

#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace ombrel {

// The keys that decoding passed over because the record does not have them.
struct UnknownKeys {
    static constexpr std::size_t longestList = 100;

    std::vector<std::string> paths; // of the first ones, at most `longestList`
    std::size_t count = 0;          // of all

    bool operator==(const UnknownKeys&) const = default;
};

} // namespace ombrel

#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace ombrel {

enum class SwiftTokenKind { plain, keyword, type, number, string, comment };

// A run of a source text, in bytes.
struct SwiftToken {
    std::size_t begin = 0;
    std::size_t length = 0;
    SwiftTokenKind kind = SwiftTokenKind::plain;
    bool operator==(const SwiftToken&) const = default;
};

// Which colours a short piece of Swift is shown in: tokens that together are the whole text, and of
// which no two neighbours are plain. Takes any text.
std::vector<SwiftToken> highlightSwift(std::string_view source);

} // namespace ombrel

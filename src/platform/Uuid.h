#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <cstring>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace ombrel {

// An RFC 4122 identifier. The default value is all zero; `random` makes version 4.
struct Uuid {
    std::array<std::uint8_t, 16> bytes{};

    static Uuid random();
    // Reads the canonical form of 36 characters, in either case; nothing for any other text.
    static std::optional<Uuid> parse(std::string_view text);
    // The canonical form in upper case.
    std::string text() const;

    auto operator<=>(const Uuid&) const = default;
};

} // namespace ombrel

template <>
struct std::hash<ombrel::Uuid> {
    std::size_t operator()(const ombrel::Uuid& id) const noexcept {
        std::size_t parts[2];
        std::memcpy(parts, id.bytes.data(), sizeof parts);
        return parts[0] ^ (parts[1] * 0x9e3779b97f4a7c15U);
    }
};

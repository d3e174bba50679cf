#include "platform/Base64.h"

#include <cstdint>

namespace ombrel {

namespace {

constexpr std::string_view alphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

} // namespace

std::string base64(std::string_view bytes) {
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const std::size_t count = bytes.size() - i < 3 ? bytes.size() - i : 3;
        std::uint32_t group = 0;
        for (std::size_t k = 0; k < 3; ++k) {
            group = group << 8 | (k < count ? static_cast<unsigned char>(bytes[i + k]) : 0U);
        }
        for (std::size_t k = 0; k < 4; ++k) {
            text += k <= count ? alphabet[group >> (18 - 6 * k) & 63] : '=';
        }
    }
    return text;
}

std::optional<std::string> bytesOfBase64(std::string_view text) {
    if (text.size() % 4 != 0) {
        return std::nullopt;
    }
    std::string bytes;
    bytes.reserve(text.size() / 4 * 3);
    for (std::size_t i = 0; i < text.size(); i += 4) {
        const bool isLast = i + 4 == text.size();
        std::size_t padding = 0;
        std::uint32_t group = 0;
        for (std::size_t k = 0; k < 4; ++k) {
            if (isLast && k >= 2 && text[i + k] == '=') {
                ++padding;
                group <<= 6;
                continue;
            }
            const std::size_t digit = alphabet.find(text[i + k]);
            if (digit == std::string_view::npos || padding > 0) {
                return std::nullopt;
            }
            group = group << 6 | static_cast<std::uint32_t>(digit);
        }
        for (std::size_t k = 0; k < 3 - padding; ++k) {
            bytes += static_cast<char>(group >> (16 - 8 * k));
        }
        if (padding > 0 && (group & (padding == 1 ? 0xFFU : 0xFFFFU)) != 0) {
            return std::nullopt;
        }
    }
    return bytes;
}

} // namespace ombrel

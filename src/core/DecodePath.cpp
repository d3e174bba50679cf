#include "core/DecodePath.h"

#include <algorithm>

namespace ombrel {

namespace {

bool isWord(std::string_view key) {
    const auto isPlain = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
               c == '_';
    };
    return !key.empty() && std::all_of(key.begin(), key.end(), isPlain);
}

} // namespace

std::string DecodePath::text() const {
    constexpr std::size_t longestKey = 100; // bytes of a key that are shown
    std::string text;
    for (const Step& step : m_steps) {
        if (!step.isKey) {
            text += "[" + std::to_string(step.index) + "]";
        } else if (isWord(step.key)) {
            text += text.empty() ? "" : ".";
            text += step.key;
        } else {
            text += "[\"";
            text += step.key.substr(0, longestKey);
            text += "\"]";
        }
    }
    return text;
}

} // namespace ombrel

#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace ombrel {

// The language that stands for text with no recognisable one.
inline constexpr std::string_view fallbackLanguage = "en";

class LanguageRecognizer {
  public:
    virtual ~LanguageRecognizer() = default;
    // The dominant language as a BCP 47 identifier ("en", "pt", "zh-Hans"), or nothing for text
    // with no recognisable one. Any thread.
    virtual std::optional<std::string> dominantLanguage(std::string_view text) const = 0;
};

} // namespace ombrel

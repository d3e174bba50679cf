#pragma once

#include "platform/LanguageRecognizer.h"

#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ombrel::test {

// Says English of everything until the test sets another function.
class ScriptedRecognizer : public LanguageRecognizer {
  public:
    std::function<std::optional<std::string>(std::string_view)> languageOf = [](std::string_view) {
        return std::optional<std::string>("en");
    };

    std::optional<std::string> dominantLanguage(std::string_view text) const override {
        {
            std::lock_guard lock(m_mutex);
            m_texts.emplace_back(text);
        }
        return languageOf(text);
    }
    // Every text that was examined, in order.
    std::vector<std::string> texts() const {
        std::lock_guard lock(m_mutex);
        return m_texts;
    }

  private:
    mutable std::mutex m_mutex;
    mutable std::vector<std::string> m_texts;
};

} // namespace ombrel::test

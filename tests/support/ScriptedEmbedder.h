#pragma once

#include "platform/SentenceEmbedder.h"
#include "tests/support/Gate.h"
#include "tests/support/TestExecutor.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace ombrel::test {

// Counts the words of a text into 32 places by a hash of each word in lower case (ASCII): texts
// that share words are near each other. Nothing for a text without words.
inline std::optional<Vector> bagOfWords(std::string_view text) {
    Vector vector(32, 0.0);
    bool hasWords = false;
    for (std::size_t i = 0; i < text.size();) {
        std::uint32_t hash = 2166136261U;
        const std::size_t begin = i;
        for (; i < text.size(); ++i) {
            const char c = text[i];
            const bool isUpper = c >= 'A' && c <= 'Z';
            const bool isWord = isUpper || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9');
            if (!isWord) {
                break;
            }
            hash = (hash ^ static_cast<std::uint8_t>(isUpper ? c + 32 : c)) * 16777619U;
        }
        if (i > begin) {
            vector[hash % vector.size()] += 1;
            hasWords = true;
        } else {
            ++i;
        }
    }
    return hasWords ? std::optional(vector) : std::nullopt;
}

class ScriptedEmbedder : public SentenceEmbedder {
  public:
    struct Call {
        std::string language;
        std::vector<std::string> texts;
    };

    explicit ScriptedEmbedder(std::shared_ptr<TestExecutor> executor) : gate(std::move(executor)) {}

    std::set<std::string, std::less<>> languages = {"en"};
    std::function<std::optional<Vector>(std::string_view)> vectorOf = bagOfWords;
    std::size_t batch = 32;
    std::vector<Call> calls;
    Gate gate; // every call passes it

    bool supports(std::string_view language) override { return languages.contains(language); }
    Task<std::vector<std::optional<Vector>>> vectors(std::string language,
                                                     std::vector<std::string> texts) override {
        calls.push_back({language, texts});
        co_await gate.pass();
        std::vector<std::optional<Vector>> result;
        for (const std::string& text : texts) {
            result.push_back(supports(language) ? vectorOf(text) : std::nullopt);
        }
        co_return result;
    }
    std::size_t batchSize() const override { return batch; }

    // All texts that were asked for, in order.
    std::vector<std::string> texts() const {
        std::vector<std::string> result;
        for (const Call& call : calls) {
            result.insert(result.end(), call.texts.begin(), call.texts.end());
        }
        return result;
    }
};

} // namespace ombrel::test

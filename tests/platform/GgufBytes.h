#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace ombrel::test {

// Writes the head of a model file.
class GgufBytes {
  public:
    GgufBytes& text(std::string_view key, std::string_view value) {
        entry(key, 8);
        string(value);
        return *this;
    }
    GgufBytes& number(std::string_view key, std::uint32_t value) {
        entry(key, 4);
        put(value);
        return *this;
    }
    GgufBytes& boolean(std::string_view key, bool value) {
        entry(key, 7);
        put(static_cast<std::uint8_t>(value));
        return *this;
    }
    GgufBytes& real(std::string_view key, float value) {
        entry(key, 6);
        put(value);
        return *this;
    }
    GgufBytes& texts(std::string_view key, const std::vector<std::string>& values) {
        entry(key, 9);
        put(std::uint32_t{8});
        put(std::uint64_t{values.size()});
        for (const auto& value : values) {
            string(value);
        }
        return *this;
    }
    // An array of elements of that type and size, all zero bytes.
    GgufBytes& zeros(std::string_view key, std::uint32_t type, std::uint64_t count,
                     std::size_t bytes) {
        entry(key, 9);
        put(type);
        put(count);
        m_entries.append(bytes, '\0');
        return *this;
    }
    std::string bytes(std::uint32_t version = 3) const { return bytes(version, m_count); }
    // With a number of entries that may be a lie.
    std::string bytes(std::uint32_t version, std::uint64_t count) const {
        GgufBytes head;
        head.m_entries = "GGUF";
        head.put(version);
        head.put(std::uint64_t{0});
        head.put(count);
        return head.m_entries + m_entries;
    }

  private:
    template <class Number>
    void put(Number value) {
        char raw[sizeof value];
        std::memcpy(raw, &value, sizeof value);
        m_entries.append(raw, sizeof value);
    }
    void string(std::string_view value) {
        put(std::uint64_t{value.size()});
        m_entries += value;
    }
    void entry(std::string_view key, std::uint32_t type) {
        m_count++;
        string(key);
        put(type);
    }

    std::string m_entries;
    std::uint64_t m_count = 0;
};

inline std::string languageModelBytes() {
    return GgufBytes()
        .text("general.architecture", "llama")
        .number("llama.context_length", 4096)
        .text("tokenizer.chat_template", "{{ messages }}")
        .bytes();
}

inline std::string embeddingModelBytes() {
    return GgufBytes()
        .text("general.architecture", "bert")
        .number("bert.context_length", 512)
        .boolean("bert.attention.causal", false)
        .number("bert.pooling_type", 1)
        .bytes();
}

} // namespace ombrel::test

#pragma once

#include "platform/SentenceEmbedder.h"

#include <cstddef>
#include <list>
#include <string>
#include <string_view>
#include <unordered_map>

namespace ombrel {

// Vectors of texts by one model, in memory: those used last, up to a size in bytes.
class EmbeddingCache {
  public:
    explicit EmbeddingCache(std::size_t capacityBytes) : m_capacityBytes(capacityBytes) {}

    // The vector of a text, or null. It stands until the next call of `store`.
    const Vector* find(std::string_view text);
    // A text that is already there keeps the vector that it has.
    void store(std::string text, Vector vector);
    std::size_t count() const { return m_entries.size(); }

  private:
    struct Entry {
        std::string text;
        Vector vector;
        std::size_t bytes() const;
    };
    using Entries = std::list<Entry>;

    std::size_t m_capacityBytes;
    std::size_t m_bytes = 0;
    Entries m_entries; // used last first
    std::unordered_map<std::string_view, Entries::iterator> m_byText;
};

} // namespace ombrel

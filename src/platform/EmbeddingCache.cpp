#include "platform/EmbeddingCache.h"

#include <utility>

namespace ombrel {

std::size_t EmbeddingCache::Entry::bytes() const {
    constexpr std::size_t bookkeeping = 128;
    return text.size() + vector.size() * sizeof(double) + bookkeeping;
}

const Vector* EmbeddingCache::find(std::string_view text) {
    const auto found = m_byText.find(text);
    if (found == m_byText.end()) {
        return nullptr;
    }
    m_entries.splice(m_entries.begin(), m_entries, found->second);
    return &found->second->vector;
}

void EmbeddingCache::store(std::string text, Vector vector) {
    if (m_byText.contains(text)) {
        return;
    }
    m_entries.push_front({std::move(text), std::move(vector)});
    m_byText.emplace(m_entries.front().text, m_entries.begin());
    m_bytes += m_entries.front().bytes();
    while (m_bytes > m_capacityBytes) {
        m_bytes -= m_entries.back().bytes();
        m_byText.erase(m_entries.back().text);
        m_entries.pop_back();
    }
}

} // namespace ombrel

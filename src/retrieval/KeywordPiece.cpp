#include "retrieval/KeywordPiece.h"

#include "retrieval/KeywordBase.h"
#include "retrieval/Postings.h"

#include <utility>
#include <vector>

namespace ombrel {

std::shared_ptr<const KeywordPiece> KeywordPiece::of(const ChunkArray& array) {
    return array.derived<KeywordPiece>(slot, [](const std::vector<DocumentChunk>&) {
        return std::make_shared<const KeywordPiece>();
    });
}

std::shared_ptr<const KeywordBase> KeywordPiece::base() const {
    std::lock_guard lock(m_mutex);
    return m_base;
}

void KeywordPiece::join(std::shared_ptr<const KeywordBase> base) const {
    std::shared_ptr<const Postings> own; // freed after the lock is
    std::lock_guard lock(m_mutex);
    m_base.swap(base);
    m_own.swap(own);
}

void KeywordPiece::leave(const KeywordBase* base) const {
    std::shared_ptr<const KeywordBase> left; // freed after the lock is
    std::lock_guard lock(m_mutex);
    if (m_base.get() == base) {
        m_base.swap(left);
    }
}

std::shared_ptr<const Postings> KeywordPiece::own(const ChunkArray& array) const {
    std::lock_guard lock(m_mutex);
    if (!m_own) {
        m_own = std::make_shared<const Postings>(std::vector{array});
    }
    return m_own;
}

} // namespace ombrel

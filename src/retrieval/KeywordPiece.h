#pragma once

#include "core/DocumentChunk.h"

#include <memory>
#include <mutex>

namespace ombrel {

struct KeywordBase;
class Postings;

// What keyword search keeps with one chunk array: the base that the array's chunks are in, or, as
// long as there is none, their own postings. A base lives as long as a piece or an index that is
// in use has it. Any thread.
class KeywordPiece {
  public:
    // The piece of an array that has memory.
    static std::shared_ptr<const KeywordPiece> of(const ChunkArray& array);

    std::shared_ptr<const KeywordBase> base() const;
    // From now on the chunks are looked up in `base`.
    void join(std::shared_ptr<const KeywordBase> base) const;
    // Lets go of the base, unless the piece has joined another one since.
    void leave(const KeywordBase* base) const;

    // The postings of `array`, whose piece this is, by themselves.
    std::shared_ptr<const Postings> own(const ChunkArray& array) const;

  private:
    static constexpr std::size_t slot = 0;

    mutable std::mutex m_mutex;
    mutable std::shared_ptr<const KeywordBase> m_base;
    mutable std::shared_ptr<const Postings> m_own;
};

} // namespace ombrel

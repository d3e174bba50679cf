#pragma once

#include "retrieval/KeywordPiece.h"
#include "retrieval/Postings.h"

#include <memory>
#include <utility>
#include <vector>

namespace ombrel {

// The postings of many chunk arrays in one, and which of its chunks are whose.
struct KeywordBase {
    struct Member {
        // Kept so that no other piece gets the same address.
        std::weak_ptr<const KeywordPiece> piece;
        const KeywordPiece* identity = nullptr;
        Postings::Range chunks;
    };

    explicit KeywordBase(const std::vector<ChunkArray>& arrays) : postings(arrays) {
        Postings::Ordinal end = 0;
        for (const ChunkArray& array : arrays) {
            const auto piece = KeywordPiece::of(array);
            const auto begin =
                std::exchange(end, end + static_cast<Postings::Ordinal>(array.size()));
            members.push_back({piece, piece.get(), {begin, end}});
        }
    }

    Postings postings;
    std::vector<Member> members;
};

} // namespace ombrel

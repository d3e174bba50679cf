#pragma once

#include "core/DocumentChunk.h"
#include "retrieval/Bm25.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ombrel {

// In which chunks each term stands and how often, for the chunks of some arrays, numbered in order
// from 0. Immutable. Takes less memory than the text does.
class Postings {
  public:
    using Term = std::uint32_t;
    using Ordinal = std::uint32_t;
    struct Range {
        Ordinal begin = 0;
        Ordinal end = 0;
    };

    explicit Postings(const std::vector<ChunkArray>& arrays);

    Ordinal chunkCount() const { return static_cast<Ordinal>(m_lengths.size()); }
    // The number of terms in a chunk, repeats counted.
    std::uint32_t length(Ordinal chunk) const { return m_lengths[chunk]; }
    std::uint64_t totalLength(Range chunks) const;

    // The term with this key (see TermReader), if any chunk has it.
    std::optional<Term> find(std::string_view key) const;
    // The number of chunks that have the term: of all, and of some.
    std::uint32_t documentFrequency(Term term) const { return m_lists[term].count; }
    std::uint32_t documentFrequency(Term term, Range chunks) const;
    // Not less than the term's greatest share in any chunk, for a corpus of this average length.
    double greatestShare(Term term, double average) const;

    // Adds weight × share to the score of every chunk that has the term. `scores` has a place for
    // each chunk.
    void addShares(Term term, float weight, const Bm25Share& share, float* scores) const;
    // The chunks that have the term, when they are few enough to be kept as a list.
    bool isSparse(Term term) const { return !m_lists[term].isDense; }
    const Ordinal* sparseBegin(Term term) const { return &m_ordinals[m_lists[term].start]; }
    const Ordinal* sparseEnd(Term term) const { return sparseBegin(term) + m_lists[term].count; }

    // Looks up one term in chunk after chunk, in ascending order of the chunks.
    class Cursor {
      public:
        Cursor(const Postings& postings, Term term)
            : m_postings(postings), m_term(term), m_place(postings.m_lists[term].start),
              m_end(m_place + postings.m_lists[term].count) {}
        // How often the term stands in the chunk.
        std::uint32_t frequency(Ordinal chunk);

      private:
        const Postings& m_postings;
        Term m_term;
        std::size_t m_place; // of the first entry that may be wanted
        std::size_t m_end;
    };

  private:
    class Builder;

    // A frequency is kept in a byte; this one stands for those that do not fit, which are looked
    // up in `m_excess`.
    static constexpr std::uint8_t manyTimes = 255;
    struct Excess {
        Term term = 0;
        Ordinal chunk = 0;
        std::uint32_t frequency = 0;
    };
    // A sparse list is `count` entries of m_ordinals and m_frequencies from `start` on. A dense
    // one is a frequency for every chunk, in m_denseFrequencies from `start` on.
    struct List {
        std::size_t start = 0;
        std::uint32_t count = 0;
        bool isDense = false;
        float greatestShare = 0; // at m_average
    };
    struct Slot {
        std::uint32_t hash = 0;
        std::uint32_t term = 0; // counted from 1; 0 is an empty slot
    };

    std::uint32_t excessFrequency(Term term, Ordinal chunk) const;
    std::string_view text(Term term) const {
        return std::string_view(m_texts).substr(m_textStarts[term],
                                                m_textStarts[term + 1] - m_textStarts[term]);
    }

    std::vector<std::uint32_t> m_lengths;
    double m_average = 1;
    std::vector<Slot> m_slots; // a hash table with open addressing
    std::string m_texts;
    std::vector<std::size_t> m_textStarts; // one more than there are terms
    std::vector<List> m_lists;
    std::vector<Ordinal> m_ordinals;
    std::vector<std::uint8_t> m_frequencies;
    std::vector<std::uint8_t> m_denseFrequencies;
    std::vector<Excess> m_excess; // by term, then chunk
};

} // namespace ombrel

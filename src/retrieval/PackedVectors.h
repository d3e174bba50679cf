#pragma once

#include "core/DocumentChunk.h"
#include "platform/SentenceEmbedder.h"
#include "retrieval/CpuLevel.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace ombrel {

// The embeddings of one chunk array in a byte a number, for telling which chunks may be among the
// nearest to a query. How far a similarity that is computed from them can be from the exact one is
// known for each chunk. Immutable, any thread.
class PackedVectors {
  public:
    // A query vector as it is compared with packed ones.
    class Query {
      public:
        explicit Query(const Vector& vector);
        // Whether the vector can be compared with packed ones at all: it is not empty, and its
        // norm is neither 0 nor so small or great that squares leave the range of doubles.
        bool isPacked() const { return !m_numbers.empty(); }

      private:
        friend class PackedVectors;
        std::size_t m_dimension = 0;
        std::vector<std::int16_t> m_numbers; // times m_scale: the vector divided by its norm
        float m_scale = 0;
        float m_error = 0;
    };

    explicit PackedVectors(const std::vector<DocumentChunk>& chunks);
    // Those of an array that has memory: made once, kept with the array.
    static std::shared_ptr<const PackedVectors> of(const ChunkArray& array);

    // The packed embeddings all have this dimension; 0 when there are none.
    std::size_t dimension() const { return m_dimension; }
    // Which chunks they are of, ascending.
    const std::vector<std::uint32_t>& chunks() const { return m_chunks; }
    // The square root of the sum of the squares of a packed embedding, by its place.
    double norm(std::size_t place) const { return m_norms[place]; }
    // The chunks, ascending, whose embedding is not packed though its similarity to some query may
    // be above 0.
    const std::vector<std::uint32_t>& others() const { return m_others; }

    // Bounds of the similarities of the packed embeddings to a packed query of the same dimension.
    struct Bounds {
        float least = 0;
        float most = 0;
    };
    void bound(const Query& query, std::vector<Bounds>& bounds,
               CpuLevel level = detectedCpuLevel()) const;

  private:
    std::size_t m_dimension = 0;
    std::vector<std::uint32_t> m_chunks;
    std::vector<std::uint32_t> m_others;
    std::vector<double> m_norms;
    // A packed embedding is `paddedDimension` bytes, which times its scale are the embedding
    // divided by its norm, give or take an error: the norm of the difference.
    std::vector<std::int8_t> m_bytes;
    std::vector<float> m_scales;
    std::vector<float> m_errors;
};

// Σ a[i]·b[i] over the first `count` numbers, added one after the other.
inline double dotProduct(const double* a, const double* b, std::size_t count) {
    double sum = 0;
    for (std::size_t i = 0; i < count; ++i) {
        sum += a[i] * b[i];
    }
    return sum;
}

} // namespace ombrel

#include "retrieval/PackedVectors.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace ombrel {

namespace {

// Vectors are filled up with zeros to a multiple of this.
constexpr std::size_t padding = 32;
// The greatest number in a packed embedding and in a packed query. With these, no sum of products
// of `longest` numbers leaves 32 bits.
constexpr int embeddingRange = 127;
constexpr int queryRange = 2047;
constexpr std::size_t longest = 8192;
static_assert(std::int64_t{embeddingRange} * queryRange * longest <= 0x7fffffff);
// Sums of squares in this range, and their products, are far from overflow and underflow.
constexpr double leastSquares = 1e-200;
constexpr double mostSquares = 1e200;
// More than all the rounding in single precision adds up to, for numbers about 1.
constexpr double rounding = 4e-6;

std::size_t padded(std::size_t dimension) {
    return (dimension + padding - 1) / padding * padding;
}

bool canPack(std::size_t dimension, double squares) {
    return dimension <= longest && squares >= leastSquares && squares <= mostSquares;
}

float roundedUp(double value) {
    return std::nextafter(static_cast<float>(value), 2.0F);
}

struct Packing {
    float scale = 0;
    float error = 0;
};

// Writes vector / norm, divided by the scale, in whole numbers up to `range`. The norm is not 0.
template <class Number>
Packing pack(const Vector& vector, double norm, int range, Number* numbers) {
    double greatest = 0;
    for (const double value : vector) {
        greatest = std::max(greatest, std::abs(value / norm));
    }
    // A scale that is a little greater than needed keeps the greatest number in range.
    const float scale = roundedUp(greatest / range);
    double squares = 0;
    for (std::size_t i = 0; i < vector.size(); ++i) {
        const double value = vector[i] / norm;
        const double number = std::nearbyint(value / scale);
        numbers[i] = static_cast<Number>(number);
        const double difference = value - number * scale;
        squares += difference * difference;
    }
    return {scale, roundedUp(std::sqrt(squares) * (1 + 1e-9))};
}

// Compiled once for each level: every body is the same, only the instructions differ.
#define OMBREL_DOT_PRODUCTS(name, attributes)                                                      \
    attributes void name(const std::int8_t* rows, std::size_t count, std::size_t size,             \
                         const std::int16_t* query, std::int32_t* products) {                      \
        for (std::size_t row = 0; row < count; ++row) {                                            \
            std::int32_t sum = 0;                                                                  \
            for (std::size_t i = 0; i < size / padding * padding; ++i) {                           \
                sum += static_cast<std::int16_t>(rows[row * size + i]) * query[i];                 \
            }                                                                                      \
            products[row] = sum;                                                                   \
        }                                                                                          \
    }
OMBREL_DOT_PRODUCTS(dotProducts, )
#if defined(__x86_64__)
OMBREL_DOT_PRODUCTS(dotProductsAvx2, __attribute__((target("avx2"))))
OMBREL_DOT_PRODUCTS(dotProductsAvx512,
                    __attribute__((target("avx512f,avx512bw,avx512vl,avx512vnni"))))
#endif

} // namespace

PackedVectors::Query::Query(const Vector& vector) : m_dimension(vector.size()) {
    const double squares = dotProduct(vector.data(), vector.data(), vector.size());
    if (canPack(vector.size(), squares)) {
        m_numbers.resize(padded(vector.size()));
        const Packing packing = pack(vector, std::sqrt(squares), queryRange, m_numbers.data());
        m_scale = packing.scale;
        m_error = packing.error;
    }
}

PackedVectors::PackedVectors(const std::vector<DocumentChunk>& chunks) {
    for (std::uint32_t i = 0; i < chunks.size(); ++i) {
        const std::optional<Vector>& embedding = chunks[i].embedding;
        if (!embedding || embedding->empty()) {
            continue;
        }
        const double squares = dotProduct(embedding->data(), embedding->data(), embedding->size());
        if (squares == 0) {
            continue; // its similarity to everything is 0
        }
        if (!canPack(embedding->size(), squares) ||
            (m_dimension != 0 && embedding->size() != m_dimension)) {
            m_others.push_back(i);
            continue;
        }
        if (m_dimension == 0) {
            m_dimension = embedding->size();
            const std::size_t left = chunks.size() - i;
            m_chunks.reserve(left);
            m_norms.reserve(left);
            m_bytes.reserve(left * padded(m_dimension));
            m_scales.reserve(left);
            m_errors.reserve(left);
        }
        m_chunks.push_back(i);
        m_norms.push_back(std::sqrt(squares));
        m_bytes.resize(m_bytes.size() + padded(m_dimension));
        const Packing packing = pack(*embedding, m_norms.back(), embeddingRange,
                                     m_bytes.data() + m_bytes.size() - padded(m_dimension));
        m_scales.push_back(packing.scale);
        m_errors.push_back(packing.error);
    }
}

std::shared_ptr<const PackedVectors> PackedVectors::of(const ChunkArray& array) {
    constexpr std::size_t slot = 1;
    return array.derived<PackedVectors>(slot, [](const std::vector<DocumentChunk>& chunks) {
        return std::make_shared<const PackedVectors>(chunks);
    });
}

void PackedVectors::bound(const Query& query, std::vector<Bounds>& bounds, CpuLevel level) const {
    auto* products = dotProducts;
#if defined(__x86_64__)
    if (level == CpuLevel::avx512) {
        products = dotProductsAvx512;
    } else if (level == CpuLevel::avx2) {
        products = dotProductsAvx2;
    }
#endif
    // With u and w of norm 1 and their packed forms p and q: u·w - p·q = (u - p)·w + p·(w - q).
    // The norm of p is below 2, since no number of the embedding moves by more than its scale.
    const float common = query.m_error * 2 + static_cast<float>(rounding);
    bounds.resize(m_chunks.size());
    constexpr std::size_t block = 64;
    std::int32_t sums[block];
    const std::size_t size = padded(m_dimension);
    for (std::size_t start = 0; start < m_chunks.size(); start += block) {
        const std::size_t count = std::min(block, m_chunks.size() - start);
        products(m_bytes.data() + start * size, count, size, query.m_numbers.data(), sums);
        for (std::size_t i = 0; i < count; ++i) {
            const float product =
                m_scales[start + i] * (query.m_scale * static_cast<float>(sums[i]));
            const float error = m_errors[start + i] + common;
            bounds[start + i] = {product - error, product + error};
        }
    }
}

} // namespace ombrel

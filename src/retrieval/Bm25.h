#pragma once

#include <cmath>

namespace ombrel {

// The scoring function of keyword search: Okapi BM25 over a corpus of `count` chunks whose mean
// length is `average` terms (at least 1).
struct Bm25 {
    static constexpr double k1 = 1.5;
    static constexpr double b = 0.75;

    double count = 0;
    double average = 1;

    // The weight of a term that occurs in `documentFrequency` chunks; always above 0.
    double inverseFrequency(double documentFrequency) const {
        return std::log((count - documentFrequency + 0.5) / (documentFrequency + 0.5) + 1);
    }
    // What a term adds to the score of a chunk of `length` terms in which it stands `tf` times.
    double part(double inverseFrequency, double tf, double length) const {
        const double denominator = tf + k1 * (1 - b + b * length / average);
        return inverseFrequency * (tf * (k1 + 1)) / denominator;
    }
};

// The same in single precision, for finding candidates: tf / (tf + atZero + slope * length), which
// times inverse frequency and k1 + 1 is the part.
struct Bm25Share {
    explicit Bm25Share(double average) : slope(static_cast<float>(Bm25::k1 * Bm25::b / average)) {}

    static constexpr float atZero = static_cast<float>(Bm25::k1 * (1 - Bm25::b));
    float slope;

    float operator()(float tf, float length) const { return tf / (tf + (atZero + slope * length)); }
};

} // namespace ombrel

#pragma once

#include "core/IndexedChunks.h"
#include "platform/SentenceEmbedder.h"
#include "platform/Text.h"

#include <bit>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <map>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

// Chunks and queries in which two programs could see different texts or scores.
namespace ombrel::test {

using Random = std::mt19937_64;

inline std::size_t below(Random& random, std::size_t bound) {
    return random() % bound;
}

inline std::string hex(std::string_view text) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string result;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        result += digits[byte >> 4];
        result += digits[byte & 15];
    }
    return result;
}

inline std::string bits(double number) {
    char text[17];
    std::snprintf(text, sizeof text, "%llx",
                  static_cast<unsigned long long>(std::bit_cast<std::uint64_t>(number)));
    return text;
}

// Words in which one program could see another text than the other.
inline const std::vector<std::string> words = {"battery",
                                               "Battery",
                                               "BATTERY",
                                               "won't",
                                               "snake_case",
                                               "a1b2",
                                               "x",
                                               "the",
                                               "the",
                                               "the",
                                               "straße",
                                               "STRASSE",
                                               "ẞ",
                                               "ß",
                                               "ΟΔΟΣ",
                                               "οδος",
                                               "οδοσ",
                                               "Σ",
                                               "ς",
                                               "ISTANBUL",
                                               "İstanbul",
                                               "ıstanbul",
                                               "i\u0307stanbul",
                                               "café",
                                               "cafe\u0301",
                                               "CAFÉ",
                                               "CAFE\u0301",
                                               "e\u0301\u0323",
                                               "e\u0323\u0301",
                                               "\u1eb9\u0301",
                                               "\u212b",
                                               "\u00c5",
                                               "A\u030a",
                                               "Ω",
                                               "\u2126",
                                               "ﬁn",
                                               "fin",
                                               "👩‍👩‍👧‍👦",
                                               "👍🏽",
                                               "🇩🇪",
                                               "🇩🇪🇫🇷",
                                               "1️⃣",
                                               "#️⃣",
                                               "a👍b",
                                               "٣٤",
                                               "१२",
                                               "１２",
                                               "一二三",
                                               "三",
                                               "〇",
                                               "卅",
                                               "知識",
                                               "क्षत्रिय",
                                               "हिन्दी",
                                               "স্ত্রী",
                                               "ക്ഷ",
                                               "தமிழ்",
                                               "ภาษาไทย",
                                               "น้ำ",
                                               "한국어",
                                               "\u1112\u1161\u11ab",
                                               "ⓐⓑ",
                                               "Ⓐ",
                                               "Ⅷ",
                                               "ⅷ",
                                               "½",
                                               "x²",
                                               "①",
                                               "㉑",
                                               "🄰",
                                               "ǅ",
                                               "Ǆ",
                                               "ǆ",
                                               "a\u0301b",
                                               "1\u0301",
                                               "-\u0301x",
                                               "\u0301x",
                                               "ﬀ",
                                               "ᾳ",
                                               "ᾼ",
                                               "Ͱ",
                                               "Ა",
                                               "Ꭰ",
                                               "ꭰ",
                                               "𐐀",
                                               "𐐨",
                                               "\u200dzero",
                                               "zero\u200cwidth",
                                               "\u00adsoft",
                                               "soft\u00adhyphen",
                                               "don\u2019t",
                                               "l\u00b7l",
                                               "\ufeffmark",
                                               "ªº",
                                               "ʰ",
                                               "\u0345",
                                               "\u24d0",
                                               "\u3007",
                                               "\u2180",
                                               "\u09f4",
                                               "\u0b72",
                                               "\u1369",
                                               "\u10a0",
                                               "\u2c00",
                                               "ꙁ",
                                               "\u1e9e",
                                               "ŉ",
                                               "ǰ"};
inline const std::vector<std::string> separators = {" ",  " ", " ", "\r\n",   "\n",     "\t",
                                                    ", ", ".", "-", "\u00a0", "\u2028", "\u3000",
                                                    "_",  "",  "'", "\r"};

inline std::string someText(Random& random, std::size_t count) {
    std::string text;
    for (std::size_t i = 0; i < count; ++i) {
        text += words[below(random, words.size())];
        text += separators[below(random, separators.size())];
    }
    return text;
}

inline Vector someVector(Random& random, std::size_t dimension) {
    std::normal_distribution<double> normal;
    Vector vector(dimension);
    for (double& number : vector) {
        number = normal(random);
    }
    return vector;
}

inline DocumentChunk someChunk(Random& random) {
    static std::int64_t index = 0;
    DocumentChunk chunk;
    for (std::uint8_t& byte : chunk.id.bytes) {
        byte = static_cast<std::uint8_t>(random());
    }
    chunk.index = ++index;
    chunk.breadcrumb = {"Guide", "A \"quoted\" \\(part)"};
    chunk.tokenCount = 5;
    chunk.text = someText(random, 1 + below(random, 25));
    if (below(random, 4) == 0) {
        chunk.contextualNote = someText(random, 5);
    }
    if (below(random, 4) == 0) {
        chunk.generatedQuestions = {someText(random, 3), someText(random, 3)};
    }
    if (below(random, 4) == 0) {
        chunk.parentText = chunk.text + someText(random, 5);
    }
    constexpr std::size_t dimension = 24;
    switch (below(random, 12)) {
    case 0:
        break;
    case 1:
        chunk.embedding = Vector();
        break;
    case 2:
        chunk.embedding = Vector(dimension, 0.0);
        break;
    case 3:
        chunk.embedding = someVector(random, dimension / 2);
        break;
    case 4:
        chunk.embedding = someVector(random, dimension);
        (*chunk.embedding)[3] = std::numeric_limits<double>::infinity();
        (*chunk.embedding)[4] = std::numeric_limits<double>::quiet_NaN();
        break;
    default:
        chunk.embedding = someVector(random, dimension);
        if (below(random, 2) == 0) {
            for (double& number : *chunk.embedding) {
                number = static_cast<float>(number);
            }
        }
    }
    return chunk;
}

inline IndexedChunks someCorpus(Random& random) {
    IndexedChunks corpus(4);
    std::vector<DocumentChunk> earlier;
    for (IndexedDocument& entry : corpus) {
        std::vector<DocumentChunk> chunks;
        for (int i = 0; i < 16; ++i) {
            chunks.push_back(someChunk(random));
            if (!earlier.empty() && below(random, 6) == 0) {
                // Exact ties.
                const DocumentChunk& other = earlier[below(random, earlier.size())];
                chunks.back().text = other.text;
                chunks.back().contextualNote = other.contextualNote;
                chunks.back().generatedQuestions = other.generatedQuestions;
                chunks.back().embedding = other.embedding;
            }
            earlier.push_back(chunks.back());
        }
        entry.document.name = "Document";
        entry.chunks = std::move(chunks);
    }
    return corpus;
}

struct Query {
    std::string text;
    std::int64_t topK = 0;
    std::optional<Vector> vector;
};

inline std::vector<Query> someQueries(Random& random, const IndexedChunks& corpus) {
    constexpr std::int64_t topKs[] = {6, 1, 3, 0, 200};
    std::vector<Query> queries;
    const auto add = [&](std::string text) {
        queries.push_back(
            {std::move(text), topKs[queries.size() % std::size(topKs)], someVector(random, 24)});
        const std::size_t kind = below(random, 10);
        if (kind == 0) {
            queries.back().vector.reset();
        } else if (kind == 1) {
            queries.back().vector = someVector(random, 12);
        } else if (kind == 2) {
            queries.back().vector = Vector(24, 0.0);
        } else if (kind < 5) {
            const ChunkArray& chunks = corpus[below(random, corpus.size())].chunks;
            queries.back().vector = chunks[below(random, chunks.size())].embedding;
        }
    };
    add("");
    add("?!");
    for (const std::string& word : words) {
        add(word);
    }
    while (queries.size() < 300) {
        add(someText(random, 1 + below(random, 6)));
    }
    // One vector a text.
    std::map<std::string, std::optional<Vector>> vectors;
    for (Query& query : queries) {
        query.vector = vectors.emplace(query.text, query.vector).first->second;
    }
    return queries;
}

} // namespace ombrel::test

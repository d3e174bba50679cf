#include "retrieval/Postings.h"

#include "retrieval/CpuLevel.h"
#include "retrieval/TermReader.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <tuple>
#include <unordered_map>
#include <utility>

namespace ombrel {

namespace {

// A list that would take this fraction of the chunks or more is kept dense: it takes no more room
// then, and is much faster.
constexpr std::uint64_t denseFraction = 5;

template <class Word>
std::uint64_t load(const char* bytes) {
    Word word = 0;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

std::uint64_t mix(std::uint64_t a, std::uint64_t b) {
    const std::uint64_t product = (a ^ b) * 0x9e3779b97f4a7c15U;
    return product ^ (product >> 29);
}

static_assert(std::endian::native == std::endian::little);

// A term as the hash table compares it: its first 16 bytes, filled up with zeros, which for nearly
// all terms is everything.
struct TermKey {
    static constexpr std::size_t headSize = 16;

    explicit TermKey(std::string_view text) : length(static_cast<std::uint32_t>(text.size())) {
        const char* const bytes = text.data();
        const std::size_t size = std::min(text.size(), headSize);
        if (size > 8) {
            first = load<std::uint64_t>(bytes);
            second = load<std::uint64_t>(bytes + size - 8) >> (8 * (headSize - size));
        } else if (size >= 4) {
            first = load<std::uint32_t>(bytes) |
                    (load<std::uint32_t>(bytes + size - 4) >> (8 * (8 - size)) << 32);
        } else if (size >= 2) {
            first = load<std::uint16_t>(bytes) | (load<std::uint8_t>(bytes + size - 1) << 16);
        } else if (size == 1) {
            first = load<std::uint8_t>(bytes);
        }
        std::uint64_t sum = mix(mix(length, first), second);
        for (std::size_t i = headSize; i < text.size(); ++i) {
            sum = mix(sum, load<std::uint8_t>(bytes + i));
        }
        hash = static_cast<std::uint32_t>(sum >> 32);
    }

    std::uint64_t first = 0;
    std::uint64_t second = 0;
    std::uint32_t length = 0;
    std::uint32_t hash = 0;
};

// Compiled once for each level: every body is the same, only the instructions differ.
#define OMBREL_ADD_DENSE_SHARES(name, attributes)                                                  \
    attributes void name(const std::uint8_t* frequencies, const std::uint32_t* lengths,            \
                         std::size_t count, float weight, Bm25Share share, float* scores) {        \
        for (std::size_t i = 0; i < count; ++i) {                                                  \
            scores[i] +=                                                                           \
                weight * share(static_cast<float>(frequencies[i]),                                 \
                               static_cast<float>(static_cast<std::int32_t>(lengths[i])));         \
        }                                                                                          \
    }
OMBREL_ADD_DENSE_SHARES(addDenseShares, )
#if defined(__x86_64__)
OMBREL_ADD_DENSE_SHARES(addDenseSharesAvx2, __attribute__((target("avx2"))))
OMBREL_ADD_DENSE_SHARES(addDenseSharesAvx512, __attribute__((target("avx512f,avx512bw,avx512vl"))))
#endif

} // namespace

// Collects the terms of chunk after chunk, then turns them into lists by term.
class Postings::Builder {
  public:
    explicit Builder(Postings& postings) : m_postings(postings) { m_postings.m_slots.resize(1024); }

    void reserve(std::size_t textBytes) {
        m_terms.reserve(textBytes / 7);
        m_frequencies.reserve(textBytes / 7);
    }
    void add(std::string_view searchText);
    void finish();

  private:
    struct Known {
        std::uint64_t first = 0; // of its key
        std::uint64_t second = 0;
        std::uint32_t length = 0;
        std::uint32_t chunk = 0; // the last one with the term, counted from 1
        std::uint32_t place = 0; // of the term among those of that chunk
        std::uint32_t inChunks = 0;
    };
    // A term as it stands in a chunk. Its text is in m_longTexts when it is longer than a head.
    struct Token {
        TermKey key;
        std::size_t longText = 0;
    };

    Term termOf(const Token& token);
    void grow();
    void count(const Token& token);

    Postings& m_postings;
    TermReader m_reader;
    std::string m_key;
    std::vector<Token> m_tokens;
    std::string m_longTexts;
    std::vector<Known> m_known;
    // The distinct terms of each chunk in order of first occurrence, chunk after chunk.
    std::vector<Term> m_terms;
    std::vector<std::uint8_t> m_frequencies;
    std::vector<std::size_t> m_chunkEnds;
    std::size_t m_chunkStart = 0;
    std::unordered_map<Term, std::uint32_t> m_excessInChunk;
};

void Postings::Builder::add(std::string_view searchText) {
    // The table is larger than the processor's caches: what the tokens will need of it is fetched
    // ahead.
    m_tokens.clear();
    m_longTexts.clear();
    m_reader.read(searchText, [&](std::string_view text) {
        const std::string_view key = TermReader::key(text, m_key);
        const Token& token = m_tokens.emplace_back(Token{TermKey(key), m_longTexts.size()});
        if (key.size() > TermKey::headSize) {
            m_longTexts += key;
        }
        __builtin_prefetch(&m_postings.m_slots[token.key.hash & (m_postings.m_slots.size() - 1)]);
    });
    m_chunkStart = m_terms.size();
    constexpr std::size_t ahead = 8;
    for (std::size_t i = 0; i < m_tokens.size(); ++i) {
        if (i + ahead < m_tokens.size()) {
            const std::uint32_t hash = m_tokens[i + ahead].key.hash;
            const Slot slot = m_postings.m_slots[hash & (m_postings.m_slots.size() - 1)];
            if (slot.term != 0) {
                __builtin_prefetch(&m_known[slot.term - 1]);
            }
        }
        count(m_tokens[i]);
    }
    for (const auto& [term, frequency] : m_excessInChunk) {
        m_postings.m_excess.push_back({term, m_postings.chunkCount(), frequency});
    }
    m_excessInChunk.clear();
    m_postings.m_lengths.push_back(static_cast<std::uint32_t>(m_tokens.size()));
    m_chunkEnds.push_back(m_terms.size());
}

Postings::Term Postings::Builder::termOf(const Token& token) {
    const TermKey& key = token.key;
    const std::size_t mask = m_postings.m_slots.size() - 1;
    std::string_view longText;
    if (key.length > TermKey::headSize) {
        longText = std::string_view(m_longTexts).substr(token.longText, key.length);
    }
    std::size_t i = key.hash & mask;
    for (; m_postings.m_slots[i].term != 0; i = (i + 1) & mask) {
        const Term term = m_postings.m_slots[i].term - 1;
        const Known& known = m_known[term];
        if (m_postings.m_slots[i].hash == key.hash && known.first == key.first &&
            known.second == key.second && known.length == key.length &&
            (longText.empty() ||
             std::string_view(m_postings.m_texts)
                     .substr(m_postings.m_textStarts[term], key.length) == longText)) {
            return term;
        }
    }
    const auto term = static_cast<Term>(m_known.size());
    m_postings.m_slots[i] = {key.hash, term + 1};
    m_known.push_back({key.first, key.second, key.length});
    m_postings.m_textStarts.push_back(m_postings.m_texts.size());
    if (longText.empty()) {
        char head[TermKey::headSize];
        std::memcpy(head, &key.first, 8);
        std::memcpy(head + 8, &key.second, 8);
        m_postings.m_texts.append(head, key.length);
    } else {
        m_postings.m_texts += longText;
    }
    if (m_known.size() * 2 > m_postings.m_slots.size()) {
        grow();
    }
    return term;
}

void Postings::Builder::grow() {
    std::vector<Slot> slots(m_postings.m_slots.size() * 2);
    const std::size_t mask = slots.size() - 1;
    for (const Slot& slot : m_postings.m_slots) {
        if (slot.term != 0) {
            std::size_t i = slot.hash & mask;
            while (slots[i].term != 0) {
                i = (i + 1) & mask;
            }
            slots[i] = slot;
        }
    }
    m_postings.m_slots = std::move(slots);
}

void Postings::Builder::count(const Token& token) {
    const Term term = termOf(token);
    Known& known = m_known[term];
    const auto chunk = static_cast<std::uint32_t>(m_postings.m_lengths.size());
    if (known.chunk != chunk + 1) {
        known.chunk = chunk + 1;
        known.place = static_cast<std::uint32_t>(m_terms.size() - m_chunkStart);
        ++known.inChunks;
        m_terms.push_back(term);
        m_frequencies.push_back(1);
        return;
    }
    std::uint8_t& frequency = m_frequencies[m_chunkStart + known.place];
    if (frequency + 1 < manyTimes) {
        ++frequency;
    } else if (frequency != manyTimes) {
        frequency = manyTimes;
        m_excessInChunk[term] = manyTimes;
    } else {
        ++m_excessInChunk[term];
    }
}

void Postings::Builder::finish() {
    Postings& p = m_postings;
    const std::size_t chunks = p.m_lengths.size();
    p.m_textStarts.push_back(p.m_texts.size());
    if (chunks > 0) {
        p.m_average = std::max(1.0, static_cast<double>(p.totalLength({0, p.chunkCount()})) /
                                        static_cast<double>(chunks));
    }

    std::size_t sparse = 0;
    std::size_t dense = 0;
    p.m_lists.reserve(m_known.size());
    for (const Known& known : m_known) {
        const bool isDense = known.inChunks * denseFraction >= chunks;
        std::size_t& size = isDense ? dense : sparse;
        p.m_lists.push_back({size, known.inChunks, isDense, 0});
        size += isDense ? chunks : known.inChunks;
    }
    // One entry more, so that the address of an empty list's start is one of the array's.
    p.m_ordinals.resize(sparse + 1);
    p.m_frequencies.resize(sparse + 1);
    p.m_denseFrequencies.resize(dense);

    struct Place {
        std::size_t next = 0;
        bool isDense = false;
        float greatest = 0;
    };
    std::vector<Place> places;
    places.reserve(p.m_lists.size());
    for (const List& list : p.m_lists) {
        places.push_back({list.start, list.isDense, 0});
    }
    const Bm25Share share(p.m_average);
    std::size_t i = 0;
    for (Ordinal chunk = 0; chunk < chunks; ++chunk) {
        const auto length = static_cast<float>(p.m_lengths[chunk]);
        for (; i < m_chunkEnds[chunk]; ++i) {
            Place& place = places[m_terms[i]];
            const std::uint8_t frequency = m_frequencies[i];
            if (place.isDense) {
                p.m_denseFrequencies[place.next + chunk] = frequency;
            } else {
                p.m_ordinals[place.next] = chunk;
                p.m_frequencies[place.next] = frequency;
                ++place.next;
            }
            place.greatest = std::max(place.greatest, share(frequency, length));
        }
    }
    for (Term term = 0; term < places.size(); ++term) {
        p.m_lists[term].greatestShare = places[term].greatest;
    }
    for (const Excess& excess : p.m_excess) {
        float& greatest = p.m_lists[excess.term].greatestShare;
        greatest = std::max(greatest, share(static_cast<float>(excess.frequency),
                                            static_cast<float>(p.m_lengths[excess.chunk])));
    }
    std::ranges::sort(p.m_excess, {}, [](const Excess& e) { return std::tuple(e.term, e.chunk); });
    p.m_texts.shrink_to_fit();
    p.m_textStarts.shrink_to_fit();
}

Postings::Postings(const std::vector<ChunkArray>& arrays) {
    Builder builder(*this);
    std::size_t bytes = 0;
    std::size_t chunks = 0;
    for (const ChunkArray& array : arrays) {
        chunks += array.size();
        for (const DocumentChunk& chunk : array) {
            bytes += chunk.text.size();
        }
    }
    m_lengths.reserve(chunks);
    builder.reserve(bytes);
    for (const ChunkArray& array : arrays) {
        for (const DocumentChunk& chunk : array) {
            if (chunk.contextualNote || chunk.generatedQuestions) {
                builder.add(chunk.searchText());
            } else {
                builder.add(chunk.text); // the search text without a copy
            }
        }
    }
    builder.finish();
}

std::uint64_t Postings::totalLength(Range chunks) const {
    std::uint64_t total = 0;
    for (Ordinal i = chunks.begin; i < chunks.end; ++i) {
        total += m_lengths[i];
    }
    return total;
}

std::optional<Postings::Term> Postings::find(std::string_view key) const {
    const std::uint32_t hash = TermKey(key).hash;
    const std::size_t mask = m_slots.size() - 1;
    for (std::size_t i = hash & mask; m_slots[i].term != 0; i = (i + 1) & mask) {
        if (m_slots[i].hash == hash && text(m_slots[i].term - 1) == key) {
            return m_slots[i].term - 1;
        }
    }
    return std::nullopt;
}

std::uint32_t Postings::documentFrequency(Term term, Range chunks) const {
    const List& list = m_lists[term];
    if (list.isDense) {
        const std::uint8_t* const frequencies = &m_denseFrequencies[list.start];
        std::uint32_t count = 0;
        for (Ordinal i = chunks.begin; i < chunks.end; ++i) {
            count += frequencies[i] != 0;
        }
        return count;
    }
    const Ordinal* const first = std::lower_bound(sparseBegin(term), sparseEnd(term), chunks.begin);
    return static_cast<std::uint32_t>(std::lower_bound(first, sparseEnd(term), chunks.end) - first);
}

double Postings::greatestShare(Term term, double average) const {
    // A longer average makes every share greater, by no more than its own growth. A share is
    // below 1.
    const double growth = std::max(1.0, average / m_average);
    return std::min(1.0, static_cast<double>(m_lists[term].greatestShare) * growth);
}

void Postings::addShares(Term term, float weight, const Bm25Share& share, float* scores) const {
    const List& list = m_lists[term];
    if (list.isDense) {
        const std::uint8_t* const frequencies = &m_denseFrequencies[list.start];
        auto* add = addDenseShares;
#if defined(__x86_64__)
        if (detectedCpuLevel() == CpuLevel::avx512) {
            add = addDenseSharesAvx512;
        } else if (detectedCpuLevel() == CpuLevel::avx2) {
            add = addDenseSharesAvx2;
        }
#endif
        add(frequencies, m_lengths.data(), m_lengths.size(), weight, share, scores);
    } else {
        const Ordinal* const ordinals = sparseBegin(term);
        const std::uint8_t* const frequencies = &m_frequencies[list.start];
        for (std::uint32_t i = 0; i < list.count; ++i) {
            const Ordinal chunk = ordinals[i];
            scores[chunk] += weight * share(static_cast<float>(frequencies[i]),
                                            static_cast<float>(m_lengths[chunk]));
        }
    }
    auto excess = std::ranges::lower_bound(m_excess, term, {}, &Excess::term);
    for (; excess != m_excess.end() && excess->term == term; ++excess) {
        const auto length = static_cast<float>(m_lengths[excess->chunk]);
        scores[excess->chunk] += weight * (share(static_cast<float>(excess->frequency), length) -
                                           share(manyTimes, length));
    }
}

std::uint32_t Postings::excessFrequency(Term term, Ordinal chunk) const {
    return std::ranges::lower_bound(m_excess, std::tuple(term, chunk), {},
                                    [](const Excess& e) { return std::tuple(e.term, e.chunk); })
        ->frequency;
}

std::uint32_t Postings::Cursor::frequency(Ordinal chunk) {
    const List& list = m_postings.m_lists[m_term];
    std::uint8_t frequency = 0;
    if (list.isDense) {
        frequency = m_postings.m_denseFrequencies[list.start + chunk];
    } else {
        // Steps that double, then a binary search within the last one.
        const Ordinal* const ordinals = m_postings.m_ordinals.data();
        std::size_t step = 1;
        std::size_t reach = m_place;
        while (reach < m_end && ordinals[reach] < chunk) {
            m_place = reach + 1;
            reach += step;
            step *= 2;
        }
        m_place = static_cast<std::size_t>(
            std::lower_bound(ordinals + m_place, ordinals + std::min(reach, m_end), chunk) -
            ordinals);
        if (m_place < m_end && ordinals[m_place] == chunk) {
            frequency = m_postings.m_frequencies[m_place];
        }
    }
    return frequency == manyTimes ? m_postings.excessFrequency(m_term, chunk) : frequency;
}

} // namespace ombrel

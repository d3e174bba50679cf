#include "retrieval/KeywordIndex.h"

#include "retrieval/Bm25.h"
#include "retrieval/ChunkOrder.h"
#include "retrieval/Greatest.h"
#include "retrieval/KeywordBase.h"
#include "retrieval/KeywordPiece.h"
#include "retrieval/Postings.h"
#include "retrieval/TermReader.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <mutex>
#include <optional>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace ombrel {

namespace {

using Ordinal = Postings::Ordinal;

// A new base is built when more than this fraction of the chunks would be dead in the old one or
// missing from it.
constexpr std::size_t rebuildFraction = 5;

// Calls `take(i)` for every i with scores[i] > least(), in ascending order; `least` may grow.
template <class Least, class Take>
void forEachAbove(const std::vector<float>& scores, Least&& least, Take&& take) {
    constexpr std::size_t lanes = 8;
    constexpr std::size_t block = 64;
    std::size_t i = 0;
    for (; i + block <= scores.size(); i += block) {
        float greatest[lanes] = {};
        for (std::size_t j = 0; j < block; j += lanes) {
            for (std::size_t lane = 0; lane < lanes; ++lane) {
                const float score = scores[i + j + lane];
                greatest[lane] = score > greatest[lane] ? score : greatest[lane];
            }
        }
        if (*std::max_element(greatest, greatest + lanes) > least()) {
            for (std::size_t j = i; j < i + block; ++j) {
                if (scores[j] > least()) {
                    take(j);
                }
            }
        }
    }
    for (; i < scores.size(); ++i) {
        if (scores[i] > least()) {
            take(i);
        }
    }
}

// A term of the query as one part of the index has it.
struct SoughtTerm {
    Postings::Term term = 0;
    double inverseFrequency = 0;
    float weight = 0; // times the share: the term's part of the score
    double bound = 0; // no part is greater
};

struct Candidate {
    Ordinal chunk = 0;
    float score = 0; // of the terms that were added so far
};

} // namespace

struct KeywordIndex::State {
    // Postings with those of their chunks that are in the corpus.
    struct Live {
        Postings::Range chunks;
        std::size_t position = 0; // of the first one, in the order of the corpus
    };
    struct Part {
        std::shared_ptr<const Postings> postings;
        std::shared_ptr<const KeywordBase> base; // that holds the postings, if one does
        std::vector<Live> live;                  // in ascending order
        std::vector<Postings::Range> dead;       // the others, in ascending order

        std::uint32_t documentFrequency(Postings::Term term) const {
            std::uint32_t count = postings->documentFrequency(term);
            for (const Postings::Range range : dead) {
                count -= postings->documentFrequency(term, range);
            }
            return count;
        }
    };

    explicit State(const IndexedChunks& chunks) : order(chunks) {}

    void assemble();
    void addPart(std::shared_ptr<const Postings> postings, std::shared_ptr<const KeywordBase> base,
                 std::vector<Live> live);
    // The chunks of the part that may be among the best `limit`, ascending: at least all those
    // whose score is `floor` or more and that `limit` others of the part do not exceed.
    std::vector<Candidate> candidates(const Part& part, std::vector<SoughtTerm> terms,
                                      std::size_t limit, double floor) const;

    ChunkOrder order;
    std::vector<Part> parts;
    double averageLength = 0;

    // Buffers for scores, one for each search that is under way, all kept for the next ones.
    mutable std::mutex mutex;
    mutable std::vector<std::vector<float>> buffers;
};

void KeywordIndex::State::addPart(std::shared_ptr<const Postings> postings,
                                  std::shared_ptr<const KeywordBase> base, std::vector<Live> live) {
    std::ranges::sort(live, {}, [](const Live& range) { return range.chunks.begin; });
    Part part{std::move(postings), std::move(base), std::move(live), {}};
    Ordinal end = 0;
    for (const Live& range : part.live) {
        if (range.chunks.begin > end) {
            part.dead.push_back({end, range.chunks.begin});
        }
        end = range.chunks.end;
    }
    if (end < part.postings->chunkCount()) {
        part.dead.push_back({end, part.postings->chunkCount()});
    }
    parts.push_back(std::move(part));
}

void KeywordIndex::State::assemble() {
    struct Item {
        const ChunkArray* array = nullptr;
        std::size_t position = 0;
        std::shared_ptr<const KeywordPiece> piece;
    };
    std::vector<Item> items;
    // The base with the most chunks of the corpus.
    std::shared_ptr<const KeywordBase> base;
    std::unordered_map<const KeywordBase*, std::size_t> covered;
    for (std::size_t i = 0; i < order.corpus().size(); ++i) {
        const ChunkArray& array = order.corpus()[i].chunks;
        if (array.empty()) {
            continue;
        }
        items.push_back({&array, order.start(i), KeywordPiece::of(array)});
        if (auto candidate = items.back().piece->base()) {
            covered[candidate.get()] += array.size();
            if (!base || covered[candidate.get()] > covered[base.get()]) {
                base = std::move(candidate);
            }
        }
    }
    if (items.empty()) {
        return;
    }

    // Which of the base's chunks are whose; an array that stands twice in the corpus is in the
    // base as often as it was when that was built.
    std::vector<Live> live;
    std::vector<const Item*> missing;
    std::size_t liveCount = 0;
    const auto match = [&] {
        std::unordered_multimap<const KeywordPiece*, Postings::Range> members;
        for (const KeywordBase::Member& member : base->members) {
            members.emplace(member.identity, member.chunks);
        }
        for (const Item& item : items) {
            const auto member = members.find(item.piece.get());
            if (member == members.end()) {
                missing.push_back(&item);
                continue;
            }
            live.push_back({member->second, item.position});
            liveCount += item.array->size();
            members.erase(member);
        }
    };
    if (base) {
        match();
    }
    const std::size_t missingCount = order.size() - liveCount;
    if (!base || (base->postings.chunkCount() - liveCount + missingCount) * rebuildFraction >
                     base->postings.chunkCount()) {
        std::vector<ChunkArray> arrays;
        for (const Item& item : items) {
            arrays.push_back(*item.array);
        }
        const auto old = std::exchange(base, std::make_shared<const KeywordBase>(arrays));
        for (const Item& item : items) {
            item.piece->join(base);
        }
        if (old) {
            for (const KeywordBase::Member& member : old->members) {
                if (const auto piece = member.piece.lock()) {
                    piece->leave(old.get());
                }
            }
        }
        live.clear();
        missing.clear();
        match();
    }

    addPart({base, &base->postings}, base, std::move(live));
    for (const Item* item : missing) {
        auto postings = item->piece->own(*item->array);
        const Live all{{0, postings->chunkCount()}, item->position};
        addPart(std::move(postings), nullptr, {all});
    }
    std::uint64_t total = 0;
    for (const Part& part : parts) {
        for (const Live& range : part.live) {
            total += part.postings->totalLength(range.chunks);
        }
    }
    averageLength = static_cast<double>(total) / static_cast<double>(order.size());
}

std::vector<Candidate> KeywordIndex::State::candidates(const Part& part,
                                                       std::vector<SoughtTerm> terms,
                                                       std::size_t limit, double floor) const {
    // Every sum here is of positive numbers, each computed in single precision with a handful of
    // roundings: its relative error is below `slack`.
    const double slack = (static_cast<double>(terms.size()) + 16) * 0x1p-22;
    const Bm25Share share(std::max(averageLength, 1.0));

    // The terms that can add most come first. `rest` is what all from one on can add together.
    std::ranges::sort(terms, std::greater(), &SoughtTerm::bound);
    std::vector<double> rest(terms.size() + 1);
    for (std::size_t i = terms.size(); i-- > 0;) {
        rest[i] = rest[i + 1] + terms[i].bound * (1 + slack);
    }
    Greatest greatest(limit);
    // A chunk whose score is less is not wanted.
    double wanted = floor * (1 - slack);
    const auto raise = [&] {
        wanted = std::max(wanted, static_cast<double>(greatest.least()) * (1 - 2 * slack));
        greatest.clear();
    };
    // What a chunk's sum so far must exceed when the terms from `next` on are still to come. It is
    // never negative: a chunk without any of the terms has the sum 0.
    const auto threshold = [&](std::size_t next) {
        const double least = wanted - rest[next];
        return least > 0 ? std::nextafter(static_cast<float>(least), 0.0F) : 0.0F;
    };

    std::vector<float> scores;
    {
        std::lock_guard lock(mutex);
        if (!buffers.empty()) {
            scores = std::move(buffers.back());
            buffers.pop_back();
        }
    }
    scores.assign(part.postings->chunkCount(), 0);
    for (const Postings::Range range : part.dead) {
        std::fill(scores.begin() + range.begin, scores.begin() + range.end,
                  -std::numeric_limits<float>::infinity());
    }

    // Term by term over all chunks, until what is left to come cannot bring in a new chunk.
    std::size_t next = 0;
    while (next < terms.size() && rest[next] >= wanted) {
        const SoughtTerm& term = terms[next++];
        part.postings->addShares(term.term, term.weight, share, scores.data());
        if (part.postings->isSparse(term.term)) {
            const Ordinal* const end = part.postings->sparseEnd(term.term);
            for (const Ordinal* i = part.postings->sparseBegin(term.term); i < end; ++i) {
                greatest.offer(std::max(scores[*i], 0.0F));
            }
        } else {
            forEachAbove(
                scores, [&] { return greatest.least(); },
                [&](std::size_t i) { greatest.offer(scores[i]); });
        }
        raise();
    }
    std::vector<Candidate> found;
    const float least = threshold(next);
    forEachAbove(
        scores, [&] { return least; },
        [&](std::size_t i) {
            found.push_back({static_cast<Ordinal>(i), scores[i]});
        });
    {
        std::lock_guard lock(mutex);
        buffers.push_back(std::move(scores));
    }

    // The other terms only for those that are left.
    while (next < terms.size() && found.size() > limit) {
        const SoughtTerm& term = terms[next++];
        Postings::Cursor cursor(*part.postings, term.term);
        for (Candidate& candidate : found) {
            const auto length = static_cast<float>(part.postings->length(candidate.chunk));
            const auto frequency = static_cast<float>(cursor.frequency(candidate.chunk));
            candidate.score += term.weight * share(frequency, length);
            greatest.offer(candidate.score);
        }
        raise();
        std::erase_if(found, [least = threshold(next)](const Candidate& candidate) {
            return candidate.score <= least;
        });
    }
    return found;
}

KeywordIndex::KeywordIndex(const IndexedChunks& chunks) {
    auto state = std::make_shared<State>(chunks);
    state->assemble();
    m_state = std::move(state);
}

std::vector<std::string> KeywordIndex::tokenize(std::string_view text) {
    std::vector<std::string> terms;
    TermReader().read(text, [&](std::string_view term) { terms.emplace_back(term); });
    return terms;
}

std::vector<KeywordIndex::Entry> KeywordIndex::search(std::string_view query,
                                                      std::int64_t topK) const {
    const State& state = *m_state;
    if (topK <= 0 || state.order.size() == 0) {
        return {};
    }
    const std::size_t limit = std::min<std::uint64_t>(state.order.size(), topK);
    const Bm25 bm25{static_cast<double>(state.order.size()), std::max(state.averageLength, 1.0)};

    // The distinct terms in order of first occurrence: in this order their parts are added, for
    // every chunk. A part of the index has a term or not.
    std::unordered_set<std::string> keys;
    std::vector<std::vector<SoughtTerm>> sought(state.parts.size());
    TermReader().read(query, [&](std::string_view term) {
        std::string storage;
        const std::string_view key = TermReader::key(term, storage);
        if (!keys.emplace(key).second) {
            return;
        }
        std::vector<std::pair<std::size_t, Postings::Term>> found;
        std::uint64_t documentFrequency = 0;
        for (std::size_t i = 0; i < state.parts.size(); ++i) {
            if (const auto known = state.parts[i].postings->find(key)) {
                found.emplace_back(i, *known);
                documentFrequency += state.parts[i].documentFrequency(*known);
            }
        }
        if (documentFrequency == 0) {
            return;
        }
        const double weight = bm25.inverseFrequency(static_cast<double>(documentFrequency));
        for (const auto& [i, known] : found) {
            const double most = weight * (Bm25::k1 + 1);
            sought[i].push_back(
                {known, weight, static_cast<float>(most),
                 most * state.parts[i].postings->greatestShare(known, bm25.average)});
        }
    });

    std::vector<ChunkOrder::Scored> scored;
    double floor = 0; // the least score of the best `limit` so far
    for (std::size_t i = 0; i < state.parts.size(); ++i) {
        if (sought[i].empty()) {
            continue;
        }
        const State::Part& part = state.parts[i];
        const std::vector<Candidate> found = state.candidates(part, sought[i], limit, floor);
        std::vector<double> scores(found.size());
        for (const SoughtTerm& term : sought[i]) {
            Postings::Cursor cursor(*part.postings, term.term);
            for (std::size_t j = 0; j < found.size(); ++j) {
                if (const std::uint32_t frequency = cursor.frequency(found[j].chunk)) {
                    scores[j] += bm25.part(term.inverseFrequency, frequency,
                                           part.postings->length(found[j].chunk));
                }
            }
        }
        auto live = part.live.begin();
        for (std::size_t j = 0; j < found.size(); ++j) {
            while (live->chunks.end <= found[j].chunk) {
                ++live;
            }
            scored.push_back({live->position + (found[j].chunk - live->chunks.begin), scores[j]});
        }
        if (scored.size() >= limit) {
            std::ranges::nth_element(scored,
                                     scored.begin() + static_cast<std::ptrdiff_t>(limit - 1),
                                     std::greater(), &ChunkOrder::Scored::score);
            floor = scored[limit - 1].score;
        }
    }
    return state.order.best(std::move(scored), topK);
}

std::size_t KeywordIndex::size() const {
    return m_state->order.size();
}

double KeywordIndex::averageLength() const {
    return m_state->averageLength;
}

std::int64_t KeywordIndex::documentFrequency(std::string_view term) const {
    std::string storage;
    const std::string_view key = TermReader::key(term, storage);
    std::int64_t count = 0;
    for (const State::Part& part : m_state->parts) {
        if (const auto known = part.postings->find(key)) {
            count += part.documentFrequency(*known);
        }
    }
    return count;
}

} // namespace ombrel

#pragma once

#include "core/ChunkingStrategy.h"
#include "core/Enrichment.h"
#include "core/IndexKind.h"
#include "core/QueryTransform.h"
#include "core/Record.h"

#include <cstdint>
#include <set>

namespace ombrel {

// The recipe: how the knowledge is built and how questions are answered. The numbers are doubles
// because sliders write them; whoever uses one truncates it to an integer there and then.
struct BuildSettings {
    ChunkingStrategy chunking = ChunkingStrategy::headingAware;
    double targetChunkSize = 400; // estimated tokens
    double overlapPercent = 10;   // of a chunk
    IndexKind index = IndexKind::hybrid;
    std::set<Enrichment> enrichments = {Enrichment::contextualNotes};
    double generatedQuestionsPerChunk = 3;
    QueryTransform transform = QueryTransform::rewrite;
    bool rerank = false; // stored and shown; no step reads it
    double topK = 6;
    double contextBudget = 3000; // tokens of retrieved text in the prompt

    static constexpr auto keys() {
        return std::tuple(
            required("chunking", &BuildSettings::chunking),
            required("targetChunkSize", &BuildSettings::targetChunkSize),
            required("overlapPercent", &BuildSettings::overlapPercent),
            required("index", &BuildSettings::index),
            required("enrichments", &BuildSettings::enrichments),
            required("generatedQuestionsPerChunk", &BuildSettings::generatedQuestionsPerChunk),
            required("transform", &BuildSettings::transform),
            required("rerank", &BuildSettings::rerank), required("topK", &BuildSettings::topK),
            required("contextBudget", &BuildSettings::contextBudget));
    }

    // Whether the six fields that shape the built knowledge are equal; the other four need no
    // rebuild.
    bool matchesBuild(const BuildSettings& other) const;

    bool operator==(const BuildSettings&) const = default;
};

// A setting as the integer that its users take: truncated, and held inside the 64-bit range, so
// that any file can be used.
std::int64_t truncated(double setting);

} // namespace ombrel

#pragma once

#include "core/Record.h"

#include <QString>

namespace ombrel {

// What the studio explains in place, for someone who is new to retrieval.
enum class GlossaryTopic {
    chunkingStrategy,
    chunkSize,
    overlap,
    index,
    enrichment,
    queryTransform,
    rerank,
    topK,
    contextBudget,
};

// The names by which object names and tests tell them.
constexpr auto rawValues(GlossaryTopic) {
    using enum GlossaryTopic;
    return std::array{RawValue<GlossaryTopic>{chunkingStrategy, "chunkingStrategy"},
                      RawValue<GlossaryTopic>{chunkSize, "chunkSize"},
                      RawValue<GlossaryTopic>{overlap, "overlap"},
                      RawValue<GlossaryTopic>{index, "index"},
                      RawValue<GlossaryTopic>{enrichment, "enrichment"},
                      RawValue<GlossaryTopic>{queryTransform, "queryTransform"},
                      RawValue<GlossaryTopic>{rerank, "rerank"},
                      RawValue<GlossaryTopic>{topK, "topK"},
                      RawValue<GlossaryTopic>{contextBudget, "contextBudget"}};
}

QString title(GlossaryTopic topic);
QString definition(GlossaryTopic topic); // one line
// Paragraphs with a blank line between them.
QString explanation(GlossaryTopic topic);
QString example(GlossaryTopic topic);

} // namespace ombrel

#pragma once

#include "core/Agent.h"
#include "core/RAGIndex.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

// Agents with knowledge attached.
namespace ombrel::test {

// A keyword index of one document with chunks of these texts, "Part 1" and so on.
inline RAGIndex knowledge(std::string name, const std::vector<std::string>& texts) {
    RAGIndex index(Uuid::random(), name);
    index.variants.front().settings.index = IndexKind::keyword;
    if (texts.empty()) {
        return index;
    }
    index.sources.emplace_back().id = Uuid::random();
    std::vector<DocumentChunk> chunks;
    for (const std::string& text : texts) {
        DocumentChunk& chunk = chunks.emplace_back();
        chunk.id = Uuid::random();
        chunk.index = static_cast<std::int64_t>(chunks.size());
        chunk.breadcrumb = {name, "Part " + std::to_string(chunks.size())};
        chunk.text = text;
    }
    index.chunksByDocument[index.sources[0].id] = std::move(chunks);
    return index;
}

template <class Edit>
void editChunks(RAGIndex& index, Edit edit) {
    for (auto& [document, chunks] : index.chunksByDocument) {
        for (DocumentChunk& chunk : chunks.edit()) {
            edit(chunk);
        }
    }
}

inline void setIndexKind(RAGIndex& index, IndexKind kind) {
    index.variants.front().settings.index = kind;
}

// A text agent that has these indexes attached.
inline Agent agentWith(const std::vector<Uuid>& ragIndexIDs) {
    Agent agent = newAgent("Helper");
    agent.instructions = "Be kind.";
    for (const Uuid id : ragIndexIDs) {
        AgentRAGAttachment& attachment = agent.ragAttachments.emplace_back();
        attachment.id = Uuid::random();
        attachment.ragIndexID = id;
    }
    return agent;
}

} // namespace ombrel::test

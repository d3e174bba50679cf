#pragma once

#include "evaluation/TestQuestions.h"
#include "tests/core/Workspace.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace ombrel::test {

using Texts = std::vector<std::string>;

inline DocumentChunk makeChunk(std::string text, Texts breadcrumb) {
    DocumentChunk chunk;
    chunk.id = Uuid::random();
    chunk.text = std::move(text);
    chunk.breadcrumb = std::move(breadcrumb);
    return chunk;
}

// A workspace whose recipe is keyword search with the question as asked.
struct EvaluationWorkspace : Workspace {
    EvaluationWorkspace() {
        BuildSettings settings;
        settings.index = IndexKind::keyword;
        settings.transform = QueryTransform::direct;
        set(settings);
    }

    void set(const BuildSettings& settings) const {
        Variant variant = state->currentVariant();
        variant.settings = settings;
        state->updateVariant(variant);
    }
    void setIndex(IndexKind kind) const {
        BuildSettings settings = state->currentVariant().settings;
        settings.index = kind;
        set(settings);
    }
    void setTransform(QueryTransform transform) const {
        BuildSettings settings = state->currentVariant().settings;
        settings.transform = transform;
        set(settings);
    }
    void setTopK(double topK) const {
        BuildSettings settings = state->currentVariant().settings;
        settings.topK = topK;
        set(settings);
    }
    void addChunks(std::vector<DocumentChunk> chunks) const {
        SourceDocument source;
        source.id = Uuid::random();
        source.name = "doc.md";
        auto index = state->editCurrentIndex();
        index->chunksByDocument[source.id] = std::move(chunks);
        index->sources.push_back(std::move(source));
    }
    // Chunks of the sections "1", "2" and so on that "bus" finds in this order.
    void addRankedChunks(int count) const {
        std::vector<DocumentChunk> chunks;
        for (int i = 1; i <= count; ++i) {
            std::string text = "bus";
            for (int word = 0; word < i; ++word) {
                text += " road";
            }
            chunks.push_back(makeChunk(std::move(text), {std::to_string(i)}));
        }
        addChunks(std::move(chunks));
    }
    void ask(std::string question, Texts expected) const {
        addTestQuestion(*state, std::move(question), std::move(expected));
    }

    const std::vector<TestQuestion>& questions() const {
        return state->currentIndex().testQuestions;
    }
    Texts questionTexts() const {
        Texts texts;
        for (const TestQuestion& question : questions()) {
            texts.push_back(question.question);
        }
        return texts;
    }
};

} // namespace ombrel::test

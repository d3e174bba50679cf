#pragma once

#include "core/CowArray.h"
#include "core/Record.h"
#include "platform/Uuid.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace ombrel {

// One retrievable piece of a document.
struct DocumentChunk {
    Uuid id;
    std::int64_t index = 0; // from 1, in the document's sequence of chunks
    std::vector<std::string> breadcrumb;
    std::int64_t tokenCount = 0; // of `text`
    std::optional<std::string> contextualNote;
    std::string text;
    std::optional<std::vector<std::string>> generatedQuestions;
    std::optional<std::string> parentText;
    std::optional<std::vector<double>> embedding; // the sentence vector of `searchText()`

    static constexpr auto keys() {
        return std::tuple(required("id", &DocumentChunk::id),
                          required("index", &DocumentChunk::index),
                          required("breadcrumb", &DocumentChunk::breadcrumb),
                          required("tokenCount", &DocumentChunk::tokenCount),
                          optional("contextualNote", &DocumentChunk::contextualNote),
                          required("text", &DocumentChunk::text),
                          optional("generatedQuestions", &DocumentChunk::generatedQuestions),
                          optional("parentText", &DocumentChunk::parentText),
                          optional("embedding", &DocumentChunk::embedding));
    }

    // What is indexed and embedded: the text, the note and the questions, a line feed between.
    std::string searchText() const;
    // What reaches the model: the parent's text when there is one, else the text.
    const std::string& packText() const { return parentText ? *parentText : text; }

    bool operator==(const DocumentChunk&) const = default;
};

// The chunks of one document, in the document's order, shared between copies. Of the derived
// slots, 0 is the keyword postings' and 1 the packed vectors'.
using ChunkArray = CowArray<DocumentChunk>;

// A breadcrumb as it is shown: its parts with " > " between.
std::string breadcrumbText(const std::vector<std::string>& breadcrumb);

} // namespace ombrel

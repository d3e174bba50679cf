#include "knowledge/ChunkCard.h"

#include "core/TokenEstimate.h"
#include "platform/Text.h"

#include <algorithm>

namespace ombrel {

std::string ChunkCard::number() const {
    return "#" + std::to_string(chunk.index);
}

std::string ChunkCard::breadcrumb() const {
    return breadcrumbText(chunk.breadcrumb);
}

std::string ChunkCard::tokens() const {
    return std::to_string(chunk.tokenCount) + " tok";
}

std::optional<std::string> ChunkCard::note() const {
    if (!chunk.contextualNote) {
        return std::nullopt;
    }
    return "Contextual note \u00b7 " + *chunk.contextualNote;
}

std::optional<std::string> ChunkCard::parent() const {
    if (!chunk.parentText) {
        return std::nullopt;
    }
    return "Parent section sent to model on a match \u00b7 " +
           std::to_string(estimateTokens(*chunk.parentText)) + " tok";
}

const std::vector<std::string>& ChunkCard::questions() const {
    static const std::vector<std::string> none;
    return chunk.generatedQuestions ? *chunk.generatedQuestions : none;
}

std::string_view ChunkCard::embedding() const {
    switch (indexKind) {
    case IndexKind::spotlight:
    case IndexKind::keyword:
        return "Found by its words; no embedding is needed.";
    case IndexKind::vector:
    case IndexKind::hybrid:
        break;
    }
    return chunk.embedding
               ? "Embedded: it can be found by its meaning."
               : "Not embedded yet: it can\u2019t be found by its meaning until a build.";
}

std::string ChunkCard::wholeText() const {
    return number() + "  " + breadcrumb() + "  " + tokens() + "\n\n" + bodyText();
}

std::string ChunkCard::bodyText() const {
    std::string whole = chunk.text;
    for (const auto& more : {note(), parent()}) {
        if (more) {
            whole += "\n\n" + *more;
        }
    }
    if (!questions().empty()) {
        whole += "\n\n";
        whole += questionsHeading;
        for (const std::string& question : questions()) {
            whole += "\n\u2022 " + question;
        }
    }
    return whole;
}

bool ChunkCard::mentions(std::string_view loweredWords) const {
    const auto holds = [loweredWords](const std::string& text) {
        return lowercased(text).find(loweredWords) != std::string::npos;
    };
    return holds(chunk.text) || (chunk.contextualNote && holds(*chunk.contextualNote)) ||
           holds(breadcrumb()) || std::ranges::any_of(questions(), holds);
}

} // namespace ombrel

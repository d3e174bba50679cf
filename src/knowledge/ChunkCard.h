#pragma once

#include "core/DocumentChunk.h"
#include "core/IndexKind.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ombrel {

// What is shown of a chunk where the index is reported. It refers to the chunk.
struct ChunkCard {
    static constexpr std::string_view questionsHeading = "Generated questions";

    const DocumentChunk& chunk;
    IndexKind indexKind;

    std::string number() const;                // "#3"
    std::string breadcrumb() const;            // "Guide > Battery"
    std::string tokens() const;                // "120 tok"
    std::optional<std::string> note() const;   // "Contextual note · …"
    std::optional<std::string> parent() const; // that a larger section is sent, and its tokens
    const std::vector<std::string>& questions() const;
    // Whether a search of this kind by meaning can find it.
    std::string_view embedding() const;

    // All that is shown, as text to be copied; and without the line at its top.
    std::string wholeText() const;
    std::string bodyText() const;
    // Whether the text, the note, the breadcrumb or a question holds the words, which are in lower
    // case, in any case.
    bool mentions(std::string_view loweredWords) const;
};

} // namespace ombrel

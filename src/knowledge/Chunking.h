#pragma once

#include "core/DocumentChunk.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Cuts the text of one document into chunks. Pure: strings and integers in, records out. All
// lengths are in characters.
//
// `target` is the size of a chunk in estimated tokens, `overlap` how much of a chunk is repeated in
// the next, in percent. Any integers are taken: a target under 1 acts as 1, an overlap under 1 as
// none, one over 100 as 100. From 100 on the chunks of a document can repeat all of what came
// before, so their size is quadratic in the text's.
//
// Every chunk has a new random identifier, its index, breadcrumb, token count and text; nothing
// else. Bytes that are not valid UTF-8 count as U+FFFD and stay in the text as they are.
namespace ombrel {

struct Chunked {
    std::vector<DocumentChunk> chunks;
    std::int64_t lastIndex = 0; // of the last chunk made; what was handed in when there is none
};

// A sliding window over the characters: `target` * 4 wide, moved on by what is not overlap, and by
// one character at least. `firstIndex` is the index of the document's last chunk so far, 0 at
// first.
Chunked chunkFixed(std::string_view text, const std::vector<std::string>& breadcrumb,
                   std::int64_t target, std::int64_t overlap, std::int64_t firstIndex);

// Whole paragraphs, parted by two LF characters, gathered until they reach the target. A paragraph
// is never cut. What overlaps of the last chunk makes a chunk of its own.
Chunked chunkParagraphs(std::string_view text, const std::vector<std::string>& breadcrumb,
                        std::int64_t target, std::int64_t overlap, std::int64_t firstIndex);

// Whole lines, gathered until they reach the target, under a breadcrumb that follows the Markdown
// headings: the name of the document or its last heading of level 1, then the open sections.
// A section under the target folds into the next one. What overlaps of the last chunk makes a
// chunk of its own.
std::vector<DocumentChunk> chunkHeadingAware(std::string_view text, const std::string& documentName,
                                             std::int64_t target, std::int64_t overlap);

struct Heading {
    int level = 0; // 1 to 6
    std::string title;
    bool operator==(const Heading&) const = default;
};

// A Markdown heading with hash signs: one to six of them as the line's first characters, a space,
// and the title, which may be empty.
std::optional<Heading> parseHeading(std::string_view line);

} // namespace ombrel

#include "knowledge/Chunking.h"

#include "core/TokenEstimate.h"
#include "platform/Text.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace ombrel {

namespace {

using Breadcrumb = std::vector<std::string>;

void addChunk(Chunked& made, std::string_view text, std::size_t characters,
              const Breadcrumb& breadcrumb) {
    DocumentChunk& chunk = made.chunks.emplace_back();
    chunk.id = Uuid::random();
    chunk.index = ++made.lastIndex;
    chunk.breadcrumb = breadcrumb;
    chunk.tokenCount = estimateTokensOf(characters);
    chunk.text = text;
}

// `overlap` percent of `characters`, truncated, at most all of them.
std::size_t overlapOf(std::size_t characters, std::int64_t overlap) {
    if (overlap < 1) {
        return 0;
    }
    const double all = static_cast<double>(characters);
    const double part = static_cast<double>(overlap) * all / 100.0;
    return part >= all ? characters : static_cast<std::size_t>(part);
}

// Text gathered for the next chunk. Its size is kept, not measured anew: the pieces are put
// together with line feeds, and no piece ends in CR, so no characters grow together there.
class ChunkBuffer {
  public:
    ChunkBuffer(std::int64_t target, std::int64_t overlap, std::int64_t firstIndex)
        : m_target(target), m_overlap(overlap), m_made{{}, firstIndex} {}

    void append(std::string_view separator, std::string_view piece) {
        if (!m_text.empty()) {
            m_text += separator;
            m_characters += separator.size();
        }
        m_text += piece;
        m_characters += characterCount(piece);
    }

    bool reachesTarget() const { return estimateTokensOf(m_characters) >= m_target; }

    // Makes a chunk of what is gathered, unless that is blank, and begins the next one with what
    // overlaps.
    void flush(const Breadcrumb& breadcrumb) {
        const std::string_view text = trimWhitespacesAndNewlines(m_text);
        // Trimming goes by scalar: what it leaves may be made of other characters.
        const std::size_t characters =
            text.size() == m_text.size() ? m_characters : characterCount(text);
        if (!text.empty()) {
            addChunk(m_made, text, characters, breadcrumb);
        }
        m_characters = overlapOf(characters, m_overlap);
        // Assigning a part of a string to itself moves it in place.
        m_text.assign(lastCharacters(text, m_characters));
    }

    // Makes the last chunk of what is left.
    Chunked finish(const Breadcrumb& breadcrumb) {
        flush(breadcrumb);
        return std::move(m_made);
    }

  private:
    std::int64_t m_target;
    std::int64_t m_overlap;
    std::string m_text;
    std::size_t m_characters = 0; // of m_text
    Chunked m_made;
};

// Where the next two LF characters from `offset` on stand; npos when they don't. The LF of a CR LF
// is no LF character.
std::size_t findParagraphEnd(std::string_view text, std::size_t offset) {
    std::size_t place = text.find("\n\n", offset);
    while (place != text.npos && place > 0 && text[place - 1] == '\r') {
        place = text.find("\n\n", place + 1);
    }
    return place;
}

// The breadcrumb that follows the headings of a document.
class Outline {
  public:
    explicit Outline(std::string documentName) : m_breadcrumb{std::move(documentName)} {}

    void enter(Heading heading) {
        if (heading.level == 1) {
            m_breadcrumb = {std::move(heading.title)};
            m_levels.clear();
            return;
        }
        while (!m_levels.empty() && m_levels.back() >= heading.level) {
            m_levels.pop_back();
            m_breadcrumb.pop_back();
        }
        m_levels.push_back(heading.level);
        m_breadcrumb.push_back(std::move(heading.title));
    }
    const Breadcrumb& breadcrumb() const { return m_breadcrumb; }

  private:
    Breadcrumb m_breadcrumb;   // the root, then a title for each of the levels
    std::vector<int> m_levels; // of the open sections, ascending
};

} // namespace

Chunked chunkFixed(std::string_view text, const std::vector<std::string>& breadcrumb,
                   std::int64_t target, std::int64_t overlap, std::int64_t firstIndex) {
    constexpr std::int64_t mostTokens =
        std::numeric_limits<std::int64_t>::max() / charactersPerToken;
    const std::int64_t tokens = std::clamp<std::int64_t>(target, 0, mostTokens);
    const auto window =
        static_cast<std::size_t>(std::max<std::int64_t>(tokens * charactersPerToken, 1));
    const std::size_t stride = std::max<std::size_t>(window - overlapOf(window, overlap), 1);

    Chunked made{{}, firstIndex};
    text = trimWhitespacesAndNewlines(text);
    while (!text.empty()) {
        const std::size_t next = prefixLength(text, stride);
        const std::size_t end = next + prefixLength(text.substr(next), window - stride);
        const std::string_view slice = trimWhitespacesAndNewlines(text.substr(0, end));
        if (!slice.empty()) {
            addChunk(made, slice, characterCount(slice), breadcrumb);
        }
        text.remove_prefix(end == text.size() ? end : next);
    }
    return made;
}

Chunked chunkParagraphs(std::string_view text, const std::vector<std::string>& breadcrumb,
                        std::int64_t target, std::int64_t overlap, std::int64_t firstIndex) {
    constexpr std::string_view separator = "\n\n";
    ChunkBuffer buffer(target, overlap, firstIndex);
    for (std::size_t start = 0; start <= text.size();) {
        const std::size_t end = std::min(findParagraphEnd(text, start), text.size());
        const std::string_view paragraph =
            trimWhitespacesAndNewlines(text.substr(start, end - start));
        if (!paragraph.empty()) {
            buffer.append(separator, paragraph);
            if (buffer.reachesTarget()) {
                buffer.flush(breadcrumb);
            }
        }
        start = end + separator.size();
    }
    return buffer.finish(breadcrumb);
}

std::vector<DocumentChunk> chunkHeadingAware(std::string_view text, const std::string& documentName,
                                             std::int64_t target, std::int64_t overlap) {
    Outline outline(documentName);
    ChunkBuffer buffer(target, overlap, 0);
    LineCursor lines(text);
    while (const auto line = lines.next()) {
        auto heading = parseHeading(*line);
        if (!heading) {
            buffer.append("\n", *line);
        }
        if (buffer.reachesTarget()) {
            buffer.flush(outline.breadcrumb()); // still that of the section that a heading ends
        }
        if (heading) {
            outline.enter(std::move(*heading));
        }
    }
    return buffer.finish(outline.breadcrumb()).chunks;
}

std::optional<Heading> parseHeading(std::string_view line) {
    constexpr std::size_t deepest = 6;
    const std::size_t level = std::min(line.find_first_not_of('#'), line.size());
    if (level == 0 || level > deepest) {
        return std::nullopt;
    }
    const std::string_view rest = line.substr(level);
    // A space that a mark extends is another character.
    if (firstCharacters(rest, 1) != " ") {
        return std::nullopt;
    }
    return Heading{static_cast<int>(level), std::string(trimWhitespaces(rest))};
}

} // namespace ombrel

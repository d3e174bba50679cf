#pragma once

#include "knowledge/Chunking.h"

#include <map>
#include <memory>
#include <string>
#include <unicode/brkiter.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <vector>

// The three chunkers once more, slow and plain: texts are arrays of characters as ICU's iterator
// gives them, and every size is measured anew. Valid UTF-8 only.
namespace ombrel::test {

using Characters = std::vector<icu::UnicodeString>;

inline Characters charactersOf(const icu::UnicodeString& text) {
    UErrorCode error = U_ZERO_ERROR;
    static const std::unique_ptr<icu::BreakIterator> iterator(
        icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), error));
    iterator->setText(text);
    Characters characters;
    std::int32_t start = iterator->first();
    for (std::int32_t end = iterator->next(); end != icu::BreakIterator::DONE;
         start = end, end = iterator->next()) {
        characters.push_back(text.tempSubStringBetween(start, end));
        characters.back().getTerminatedBuffer(); // a copy of its own
    }
    return characters;
}

inline icu::UnicodeString joined(const Characters& characters, std::size_t from, std::size_t to) {
    icu::UnicodeString text;
    for (std::size_t i = from; i < to && i < characters.size(); ++i) {
        text += characters[i];
    }
    return text;
}

inline bool isBlankScalar(UChar32 c) {
    return c == 9 || u_charType(c) == U_SPACE_SEPARATOR;
}
inline bool isLineEnd(UChar32 c) {
    return (c >= 10 && c <= 13) || c == 0x85 || c == 0x2028 || c == 0x2029;
}

template <class Member>
icu::UnicodeString trimmed(const icu::UnicodeString& text, Member member) {
    std::int32_t start = 0;
    std::int32_t end = text.length();
    while (start < end && member(text.char32At(start))) {
        start = text.moveIndex32(start, 1);
    }
    while (end > start && member(text.char32At(text.moveIndex32(end, -1)))) {
        end = text.moveIndex32(end, -1);
    }
    return icu::UnicodeString(text, start, end - start);
}
inline icu::UnicodeString trimmedOfAll(const icu::UnicodeString& text) {
    return trimmed(text, [](UChar32 c) { return isBlankScalar(c) || isLineEnd(c); });
}

inline std::int64_t tokens(const icu::UnicodeString& text) {
    return std::max<std::int64_t>(static_cast<std::int64_t>(charactersOf(text).size()) / 4, 1);
}

class ReferenceChunking {
  public:
    ReferenceChunking(std::int64_t target, std::int64_t overlap, std::int64_t firstIndex)
        : m_target(target), m_overlap(overlap), m_made{{}, firstIndex} {}

    Chunked fixed(const icu::UnicodeString& whole, const std::vector<std::string>& breadcrumb) {
        const Characters text = charactersOf(trimmedOfAll(whole));
        const std::int64_t window = std::max<std::int64_t>(m_target * 4, 1);
        const std::int64_t overlapping =
            std::max<std::int64_t>(static_cast<std::int64_t>(static_cast<double>(m_overlap) *
                                                             static_cast<double>(window) / 100.0),
                                   0);
        const std::int64_t stride = std::max<std::int64_t>(window - overlapping, 1);
        for (std::size_t start = 0; start < text.size();
             start += static_cast<std::size_t>(stride)) {
            const std::size_t end = start + static_cast<std::size_t>(window);
            const auto slice = trimmedOfAll(joined(text, start, end));
            if (!slice.isEmpty()) {
                make(slice, breadcrumb);
            }
            if (end >= text.size()) {
                break;
            }
        }
        return m_made;
    }

    Chunked paragraphs(const icu::UnicodeString& text, const std::vector<std::string>& breadcrumb) {
        const Characters characters = charactersOf(text);
        std::vector<icu::UnicodeString> pieces(1);
        for (std::size_t i = 0; i < characters.size(); ++i) {
            if (characters[i] == u"\n" && i + 1 < characters.size() && characters[i + 1] == u"\n") {
                pieces.emplace_back();
                ++i;
            } else {
                pieces.back() += characters[i];
            }
        }
        for (const auto& piece : pieces) {
            const auto paragraph = trimmedOfAll(piece);
            if (paragraph.isEmpty()) {
                continue;
            }
            if (!m_buffer.isEmpty()) {
                m_buffer += u"\n\n";
            }
            m_buffer += paragraph;
            if (tokens(m_buffer) >= m_target) {
                flush(breadcrumb);
            }
        }
        finish(breadcrumb);
        return m_made;
    }

    Chunked headingAware(const icu::UnicodeString& text, const std::string& documentName) {
        std::vector<icu::UnicodeString> lines(1);
        for (std::int32_t i = 0; i < text.length(); i = text.moveIndex32(i, 1)) {
            if (isLineEnd(text.char32At(i))) {
                lines.emplace_back();
            } else {
                lines.back() += text.char32At(i);
            }
        }
        std::string root = documentName;
        std::map<int, std::string> sections;
        std::vector<std::string> breadcrumb{root};
        for (const auto& line : lines) {
            const auto found = heading(line);
            if (!found) {
                if (!m_buffer.isEmpty()) {
                    m_buffer += u"\n";
                }
                m_buffer += line;
                if (tokens(m_buffer) >= m_target) {
                    flush(breadcrumb);
                }
                continue;
            }
            if (tokens(m_buffer) >= m_target) {
                flush(breadcrumb);
            }
            if (found->level == 1) {
                root = found->title;
                sections.clear();
            } else {
                sections.erase(sections.lower_bound(found->level), sections.end());
                sections[found->level] = found->title;
            }
            breadcrumb = {root};
            for (const auto& [level, title] : sections) {
                breadcrumb.push_back(title);
            }
        }
        finish(breadcrumb);
        return m_made;
    }

    static std::optional<Heading> heading(const icu::UnicodeString& line) {
        const Characters characters = charactersOf(line);
        std::size_t count = 0;
        while (count < characters.size() && characters[count] == u"#") {
            ++count;
        }
        if (count == 0 || count == characters.size() || count > 6 || characters[count] != u" ") {
            return std::nullopt;
        }
        Heading found{static_cast<int>(count), {}};
        trimmed(joined(characters, count, characters.size()), isBlankScalar)
            .toUTF8String(found.title);
        return found;
    }

  private:
    void make(const icu::UnicodeString& text, const std::vector<std::string>& breadcrumb) {
        DocumentChunk chunk;
        chunk.index = ++m_made.lastIndex;
        chunk.breadcrumb = breadcrumb;
        chunk.tokenCount = tokens(text);
        text.toUTF8String(chunk.text);
        m_made.chunks.push_back(chunk);
    }
    void flush(const std::vector<std::string>& breadcrumb) {
        const auto text = trimmedOfAll(m_buffer);
        m_buffer.remove();
        if (text.isEmpty()) {
            return;
        }
        make(text, breadcrumb);
        if (m_overlap < 1) {
            return;
        }
        const Characters characters = charactersOf(text);
        const auto count = static_cast<std::size_t>(static_cast<double>(m_overlap) *
                                                    static_cast<double>(characters.size()) / 100.0);
        const std::size_t start = characters.size() - std::min(count, characters.size());
        m_buffer = joined(characters, start, characters.size());
    }
    void finish(const std::vector<std::string>& breadcrumb) {
        const auto text = trimmedOfAll(m_buffer);
        if (!text.isEmpty()) {
            make(text, breadcrumb);
        }
    }

    std::int64_t m_target;
    std::int64_t m_overlap;
    icu::UnicodeString m_buffer;
    Chunked m_made;
};

} // namespace ombrel::test

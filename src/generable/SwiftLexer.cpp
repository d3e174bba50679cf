#include "generable/SwiftLexer.h"

#include "platform/Text.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>

namespace ombrel {

namespace {

using Kind = SwiftLexer::Kind;

constexpr bool isAsciiByte(char byte) {
    return static_cast<unsigned char>(byte) < 0x80;
}

// What a byte can start, when it is a character by itself.
enum class Start : std::uint8_t { other, newline, blank, word, digit };
constexpr std::array<Start, 256> starts = [] {
    std::array<Start, 256> table{};
    for (std::size_t c = 'a'; c <= 'z'; ++c) {
        table[c] = table[c - 'a' + 'A'] = Start::word;
    }
    for (std::size_t c = '0'; c <= '9'; ++c) {
        table[c] = Start::digit;
    }
    for (std::size_t c = '\n'; c <= '\r'; ++c) {
        table[c] = Start::newline;
    }
    table['_'] = table['$'] = Start::word;
    table[' '] = table['\t'] = Start::blank;
    return table;
}();
constexpr Start startOf(char byte) {
    return starts[static_cast<unsigned char>(byte)];
}

bool isLetterStart(char32_t scalar) {
    const bool isAsciiLetter = (scalar | 0x20) >= 'a' && (scalar | 0x20) <= 'z';
    return scalar < 0x80 ? isAsciiLetter : hasLetterCategory(scalar);
}

bool isNumberStart(char32_t scalar) {
    return scalar < 0x80 ? startOf(static_cast<char>(scalar)) == Start::digit
                         : hasNumberCategory(scalar);
}

// The character that starts at an offset. After the end of the text its length is 0.
struct Character {
    char32_t first = 0; // its first scalar
    std::size_t length = 0;
    bool isAscii = false; // and nothing is joined to it

    bool is(char c) const { return isAscii && first == static_cast<unsigned char>(c); }
};

Character joinedCharacterAt(std::string_view text, std::size_t offset) {
    const DecodedScalar scalar = decodeScalar(text, offset);
    const std::size_t length = prefixLength(text.substr(offset), 1);
    return {scalar.scalar, length, length == 1 && scalar.scalar < 0x80};
}

inline Character characterAt(std::string_view text, std::size_t offset) {
    if (offset >= text.size()) {
        return {};
    }
    const char byte = text[offset];
    const bool isLast = offset + 1 == text.size();
    if (!isAsciiByte(byte) || !(isLast || isAsciiByte(text[offset + 1]))) {
        return joinedCharacterAt(text, offset);
    }
    const bool isPair = byte == '\r' && !isLast && text[offset + 1] == '\n';
    return {static_cast<unsigned char>(byte), isPair ? std::size_t{2} : std::size_t{1}, !isPair};
}

// Whether the character at the offset is `c`.
inline bool isAt(std::string_view text, std::size_t offset, char c) {
    return offset < text.size() && text[offset] == c &&
           (offset + 1 == text.size() || isAsciiByte(text[offset + 1]) ||
            prefixLength(text.substr(offset), 1) == 1);
}

// Where the next newline starts, or the end.
std::size_t lineEnd(std::string_view text, std::size_t offset) {
    return offset + LineCursor(text.substr(offset)).next()->size();
}

// The length of the newline at the offset; 0 at the end of the text.
std::size_t newlineLength(std::string_view text, std::size_t offset) {
    return characterAt(text, offset).length;
}

bool isDropped(std::string_view directive) {
    static constexpr std::string_view dropped[] = {"if",      "elseif", "else",          "endif",
                                                   "warning", "error",  "sourceLocation"};
    return std::find(std::begin(dropped), std::end(dropped), directive) != std::end(dropped);
}

// A text that is mostly a piece of the source. It is copied to `memory` from the first place on
// where it differs. No text is longer than what it is read from, so the memory for all of them is
// as large as the source.
class Decoded {
  public:
    Decoded(std::string_view source, std::size_t start, char*& memory)
        : m_source(source), m_start(start), m_memory(memory), m_begin(memory) {}

    // What was read up to `end` belongs to the text; reading goes on at `next`.
    void skip(std::size_t end, std::size_t next) {
        append(m_source.substr(m_start, end - m_start));
        m_start = next;
        m_isCopied = true;
    }
    void append(std::string_view piece) {
        m_memory = std::copy(piece.begin(), piece.end(), m_memory);
    }
    // The text, which ends where `end` is in the source.
    std::string_view finish(std::size_t end) {
        if (!m_isCopied) {
            return m_source.substr(m_start, end - m_start);
        }
        skip(end, end);
        return {m_begin, static_cast<std::size_t>(m_memory - m_begin)};
    }

  private:
    std::string_view m_source;
    std::size_t m_start;
    char*& m_memory;
    char* m_begin;
    bool m_isCopied = false;
};

} // namespace

class SwiftLexer::Stream::Reader {
  public:
    explicit Reader(std::string_view source)
        : m_source(source), m_decoded(std::make_unique_for_overwrite<char[]>(source.size())),
          m_memory(m_decoded.get()) {}

    bool next(Token& token) {
        m_result = &token;
        m_hasResult = false;
        while (!m_hasResult && m_position < m_source.size()) {
            readToken();
        }
        return m_hasResult;
    }

  private:
    Character at(std::size_t offset) const { return characterAt(m_source, offset); }
    bool is(std::size_t offset, char c) const { return isAt(m_source, offset, c); }

    // Emits what stands from the position to `end`, and goes there.
    void emit(Kind kind, std::string_view text, std::int64_t line, std::size_t end) {
        *m_result = {kind, text, line, m_position, end};
        m_hasResult = true;
        m_position = end;
    }
    void emitSource(Kind kind, std::size_t end) {
        emit(kind, m_source.substr(m_position, end - m_position), m_line, end);
    }

    void readToken() {
        const Character character = at(m_position);
        if (character.isAscii) {
            switch (startOf(static_cast<char>(character.first))) {
            case Start::newline:
                ++m_line;
                ++m_position;
                return;
            case Start::blank:
                ++m_position;
                return;
            case Start::word:
                return emitSource(Kind::identifier, wordEnd(m_position, true));
            case Start::digit:
                return readNumber();
            case Start::other:
                return readSymbol(static_cast<char>(character.first));
            }
        }
        if (isNewline(character.first)) {
            ++m_line;
            m_position += character.length;
        } else if (hasWhiteSpaceProperty(character.first)) {
            m_position += character.length;
        } else if (isLetterStart(character.first)) {
            emitSource(Kind::identifier, wordEnd(m_position, true));
        } else if (isNumberStart(character.first)) {
            readNumber();
        } else {
            emitSource(Kind::punctuation, m_position + character.length);
        }
    }

    void readSymbol(char symbol) {
        const std::size_t next = m_position + 1;
        switch (symbol) {
        case '/':
            if (is(next, '/')) {
                return readLineComment();
            }
            if (is(next, '*')) {
                return readBlockComment();
            }
            break;
        case '"':
            return readString(0);
        case '#':
            return readHash();
        case '`':
            return readEscapedIdentifier();
        case '.':
            if (is(next, '.') && (is(next + 1, '.') || is(next + 1, '<'))) {
                return emitSource(Kind::punctuation, m_position + 3);
            }
            break;
        case '-':
            if (is(next, '>')) {
                return emitSource(Kind::punctuation, m_position + 2);
            }
            break;
        default:
            break;
        }
        emitSource(Kind::punctuation, next);
    }

    // Where the run of letters, numbers and "_" (and "$") from the offset on ends.
    std::size_t wordEnd(std::size_t offset, bool withDollar) const {
        while (true) {
            while (offset + 1 < m_source.size() && isAsciiByte(m_source[offset + 1]) &&
                   (startOf(m_source[offset]) == Start::digit ||
                    (startOf(m_source[offset]) == Start::word && m_source[offset] != '$'))) {
                ++offset;
            }
            const Character character = at(offset);
            if (character.length == 0 ||
                !(isLetterStart(character.first) || isNumberStart(character.first) ||
                  character.is('_') || (withDollar && character.is('$')))) {
                return offset;
            }
            offset += character.length;
        }
    }

    void readNumber() {
        std::size_t end = wordEnd(m_position, false);
        while (is(end, '.') && end + 1 < m_source.size() && isNumberStart(at(end + 1).first)) {
            end = wordEnd(end + 1, false);
        }
        emitSource(Kind::number, end);
    }

    void readLineComment() {
        const bool isDoc = is(m_position + 2, '/') && !is(m_position + 3, '/');
        const std::size_t start = m_position + (isDoc ? 3 : 2);
        const std::size_t end = lineEnd(m_source, start);
        if (isDoc) {
            emit(Kind::docComment, trimBlanksAndTabs(m_source.substr(start, end - start)), m_line,
                 end);
        } else {
            m_position = end;
        }
    }

    void readBlockComment() {
        const bool isDoc = is(m_position + 2, '*') && !is(m_position + 3, '/');
        const std::int64_t line = m_line;
        std::size_t offset = m_position + 2;
        Decoded raw(m_source, offset, m_memory);
        std::size_t end = m_source.size(); // of the raw text
        for (std::size_t depth = 1; offset < m_source.size();) {
            const Character character = at(offset);
            const bool opens = character.is('/') && is(offset + 1, '*');
            const bool closes = character.is('*') && is(offset + 1, '/');
            if (!opens && !closes) {
                m_line += isNewline(character.first);
                offset += character.length;
                continue;
            }
            depth = opens ? depth + 1 : depth - 1;
            if (depth == 0) {
                end = offset;
                offset += 2;
                break;
            }
            if (isDoc) {
                raw.skip(offset, offset + 2);
            }
            offset += 2;
        }
        if (isDoc) {
            emit(Kind::docComment, cleanComment(raw.finish(end)), line, offset);
        } else {
            m_position = offset;
        }
    }

    // The lines without what decorates them, joined with blanks.
    std::string_view cleanComment(std::string_view raw) {
        char* const begin = startOfRewritten(raw);
        char* end = begin;
        LineCursor lines(raw);
        while (auto line = lines.next()) {
            *line = trimBlanksAndTabs(*line);
            while (isAt(*line, 0, '*')) {
                line->remove_prefix(1);
            }
            *line = trimBlanksAndTabs(*line);
            if (line->empty()) {
                continue;
            }
            if (end != begin) {
                *end++ = ' ';
            }
            end = std::copy(line->begin(), line->end(), end);
        }
        return rewritten(begin, end);
    }

    void readHash() {
        // Where the run ends is found once: no later one of it stands before a quotation mark
        // either, and only the last one can stand before a word.
        std::size_t end = std::max(m_position, m_hashesEnd);
        while (is(end, '#')) {
            ++end;
        }
        m_hashesEnd = end;
        if (is(end, '"')) {
            return readString(end - m_position);
        }
        if (end > m_position + 1) {
            return emitSource(Kind::punctuation, m_position + 1);
        }
        if (end == m_source.size() || !isLetterStart(at(end).first)) {
            return emitSource(Kind::punctuation, end);
        }
        const std::size_t wordStart = end;
        end = wordEnd(wordStart, false);
        if (isDropped(m_source.substr(wordStart, end - wordStart))) {
            m_position = lineEnd(m_source, end);
        } else {
            emitSource(Kind::identifier, end);
        }
    }

    // A backtick that is not closed takes the newline with it, which is then not counted.
    void readEscapedIdentifier() {
        const std::size_t start = m_position + 1;
        std::size_t offset = start;
        Character character = at(offset);
        while (character.length > 0 && !character.is('`') && !isNewline(character.first)) {
            offset += character.length;
            character = at(offset);
        }
        emit(Kind::identifier, m_source.substr(start, offset - start), m_line,
             offset + character.length);
    }

    // Whether `hashes` hash characters stand at the offset.
    bool hasHashes(std::size_t offset, std::size_t hashes) const {
        for (std::size_t i = 0; i < hashes; ++i) {
            if (!is(offset + i, '#')) {
                return false;
            }
        }
        return true;
    }

    // A literal that starts at the position with so many hash characters.
    void readString(std::size_t hashes) {
        const std::int64_t line = m_line;
        std::size_t offset = m_position + hashes;
        const bool isMultiLine = is(offset + 1, '"') && is(offset + 2, '"');
        const std::size_t quotes = isMultiLine ? 3 : 1;
        offset += quotes;
        Decoded text(m_source, offset, m_memory);
        while (offset < m_source.size()) {
            const Character character = at(offset);
            if (character.is('"') &&
                (!isMultiLine || (is(offset + 1, '"') && is(offset + 2, '"'))) &&
                hasHashes(offset + quotes, hashes)) {
                const std::string_view contents = text.finish(offset);
                return emit(Kind::string, isMultiLine ? dedent(contents) : contents, line,
                            offset + quotes + hashes);
            }
            if (isNewline(character.first)) {
                if (!isMultiLine) {
                    break;
                }
                ++m_line;
            } else if (character.is('\\') && hasHashes(offset + 1, hashes)) {
                offset = readEscape(text, offset, offset + 1 + hashes);
                continue;
            }
            offset += character.length;
        }
        emit(Kind::string, text.finish(offset), line, offset);
    }

    // Reads the escape whose backslash is at `backslash` and whose next character, behind the hash
    // characters, is at `offset`. Returns where reading goes on.
    std::size_t readEscape(Decoded& text, std::size_t backslash, std::size_t offset) {
        const Character character = at(offset);
        if (character.is('(')) {
            return readInterpolation(text, backslash, offset);
        }
        if (character.is('u') && is(offset + 1, '{')) {
            return readScalar(text, backslash, offset + 2);
        }
        std::string_view meaning;
        if (character.length > 0 && isNewline(character.first)) {
            ++m_line;
        } else if (character.is('n')) {
            meaning = "\n";
        } else if (character.is('t')) {
            meaning = "\t";
        } else if (character.is('r')) {
            meaning = "\r";
        } else if (character.is('0')) {
            meaning = std::string_view("\0", 1);
        } else if (character.is('"') || character.is('\'') || character.is('\\')) {
            meaning = m_source.substr(offset, 1);
        } else {
            return backslash + 1;
        }
        const std::size_t next = offset + character.length;
        text.skip(backslash, next);
        text.append(meaning);
        return next;
    }

    // The digits of a scalar start at `digits`.
    std::size_t readScalar(Decoded& text, std::size_t backslash, std::size_t digits) {
        std::size_t end = digits;
        char32_t scalar = 0;
        bool isValid = true;
        Character character = at(end);
        while (character.length > 0 && !character.is('}')) {
            const char digit = character.isAscii ? static_cast<char>(character.first) : '\0';
            m_line += isNewline(character.first);
            if (digit >= '0' && digit <= '9') {
                scalar = scalar * 16 + static_cast<char32_t>(digit - '0');
            } else if ((digit >= 'a' && digit <= 'f') || (digit >= 'A' && digit <= 'F')) {
                scalar = scalar * 16 + static_cast<char32_t>((digit | 0x20) - 'a' + 10);
            } else {
                isValid = false;
            }
            isValid = isValid && scalar <= 0x10ffff;
            end += character.length;
            character = at(end);
        }
        const std::size_t next = end + character.length;
        text.skip(backslash, next);
        if (isValid && end > digits && (scalar < 0xd800 || scalar > 0xdfff)) {
            std::string encoded;
            appendScalar(encoded, scalar);
            text.append(encoded);
        }
        return next;
    }

    // The text keeps the interpolation as the source has it, but for the hash characters.
    std::size_t readInterpolation(Decoded& text, std::size_t backslash, std::size_t parenthesis) {
        const std::size_t start = parenthesis + 1;
        std::size_t offset = start;
        std::size_t depth = 1;
        while (offset < m_source.size()) {
            const Character character = at(offset);
            m_line += isNewline(character.first);
            depth += character.is('(');
            depth -= character.is(')');
            if (depth == 0) {
                break;
            }
            offset += character.length;
        }
        const std::size_t next = offset + (depth == 0 ? 1 : 0);
        if (depth > 0 || parenthesis > backslash + 1) {
            text.skip(backslash, next);
            text.append("\\(");
            text.append(m_source.substr(start, offset - start));
            text.append(")");
        }
        return next;
    }

    // The text of a multi-line literal without the indentation that its last line tells.
    std::string_view dedent(std::string_view text) {
        struct Line {
            std::string_view text;
            std::size_t next; // where the next line starts; behind the end for the last one
        };
        const auto lineAt = [text](std::size_t start) {
            const std::size_t end = lineEnd(text, start);
            const std::size_t newline = newlineLength(text, end);
            return Line{text.substr(start, end - start),
                        newline == 0 ? text.size() + 1 : end + newline};
        };
        const auto isBlank = [](std::string_view line) { return trimBlanksAndTabs(line).empty(); };
        std::size_t start = 0;
        if (const Line first = lineAt(0); isBlank(first.text)) {
            start = first.next;
        }
        if (start > text.size()) {
            return {};
        }
        // The last line, when it is blank, is the blanks at the end of the text.
        std::size_t indentation = 0;
        std::size_t lastStart = text.size();
        while (lastStart > start && (text[lastStart - 1] == ' ' || text[lastStart - 1] == '\t')) {
            --lastStart;
        }
        const bool lastIsBlank = lastStart == start || endsInNewline(text.substr(0, lastStart));
        if (lastIsBlank) {
            indentation = text.size() - lastStart;
        }
        char* const begin = startOfRewritten(text);
        char* end = begin;
        for (bool isFirst = true; start <= text.size(); isFirst = false) {
            Line line = lineAt(start);
            if (lastIsBlank && start == lastStart) {
                break;
            }
            std::size_t removed = 0;
            while (removed < indentation && (isAt(line.text, 0, ' ') || isAt(line.text, 0, '\t'))) {
                line.text.remove_prefix(1);
                ++removed;
            }
            if (!isFirst) {
                *end++ = '\n';
            }
            end = std::copy(line.text.begin(), line.text.end(), end);
            start = line.next;
        }
        return rewritten(begin, end);
    }

    static bool endsInNewline(std::string_view text) {
        for (std::size_t length = 1; length <= std::min<std::size_t>(text.size(), 3); ++length) {
            const std::size_t offset = text.size() - length;
            const DecodedScalar last = decodeScalar(text, offset);
            if (last.length == length && isNewline(last.scalar)) {
                return true;
            }
        }
        return false;
    }

    // A text is rewritten, becoming no longer, at its own place if that is in the memory for
    // decoded texts; else behind the texts that are there.
    char* startOfRewritten(std::string_view text) {
        char* const memory = m_decoded.get();
        const bool isDecoded = text.data() >= memory && text.data() < m_memory;
        return isDecoded ? memory + (text.data() - memory) : m_memory;
    }
    std::string_view rewritten(char* begin, char* end) {
        m_memory = end;
        return {begin, static_cast<std::size_t>(end - begin)};
    }

    std::string_view m_source;
    std::size_t m_position = 0;
    std::int64_t m_line = 1;
    std::size_t m_hashesEnd = 0; // of the last run of hash characters
    Token* m_result = nullptr;   // where the token goes that is read
    bool m_hasResult = false;
    std::unique_ptr<char[]> m_decoded;
    char* m_memory; // behind the decoded texts
};

SwiftLexer::Stream::Stream(std::string_view source) : m_reader(std::make_unique<Reader>(source)) {}
SwiftLexer::Stream::Stream(Stream&&) noexcept = default;
SwiftLexer::Stream::~Stream() = default;

bool SwiftLexer::Stream::next(Token& token) {
    return m_reader->next(token);
}

SwiftLexer::Tokens SwiftLexer::tokenize(std::string_view source) {
    Tokens tokens{{}, Stream(source)};
    tokens.list.reserve(source.size() / 6 + 16);
    for (Token token; tokens.stream.next(token);) {
        tokens.list.push_back(token);
    }
    return tokens;
}

} // namespace ombrel

#pragma once

#include "generable/SwiftLexer.h"
#include "platform/Text.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ombrel::test {

// The lexer in its plainest form: over an array of characters, with a copy of every text. Slow, and
// easy to hold against the rules; `SwiftLexer` has to give the same tokens.
class ReferenceLexer {
  public:
    struct Token {
        SwiftLexer::Kind kind;
        std::string text;
        std::int64_t line;
    };

    explicit ReferenceLexer(std::string_view source) {
        CharacterCursor cursor(source);
        for (std::string_view next = cursor.next(); !next.empty(); next = cursor.next()) {
            m_characters.emplace_back(next);
        }
    }

    std::vector<Token> run() {
        while (m_at < m_characters.size()) {
            step();
        }
        return m_tokens;
    }

  private:
    using Kind = SwiftLexer::Kind;

    std::string_view character(std::size_t i) const {
        return i < m_characters.size() ? std::string_view(m_characters[i]) : std::string_view();
    }
    bool is(std::size_t i, std::string_view text) const { return character(i) == text; }
    char32_t first(std::size_t i) const { return decodeScalar(m_characters[i], 0).scalar; }
    bool isNewlineAt(std::size_t i) const { return i < m_characters.size() && isNewline(first(i)); }
    bool isLetterAt(std::size_t i) const {
        return i < m_characters.size() && hasLetterCategory(first(i));
    }
    bool isNumberAt(std::size_t i) const {
        return i < m_characters.size() && hasNumberCategory(first(i));
    }
    std::string text(std::size_t from, std::size_t to) const {
        std::string all;
        for (std::size_t i = from; i < to; ++i) {
            all += m_characters[i];
        }
        return all;
    }
    void emit(Kind kind, std::string text) { emit(kind, std::move(text), m_line); }
    void emit(Kind kind, std::string text, std::int64_t line) {
        m_tokens.push_back({kind, std::move(text), line});
    }

    void step() {
        const std::size_t i = m_at;
        if (isNewlineAt(i)) {
            ++m_line;
            ++m_at;
        } else if (hasWhiteSpaceProperty(first(i))) {
            ++m_at;
        } else if (is(i, "/") && is(i + 1, "/")) {
            lineComment();
        } else if (is(i, "/") && is(i + 1, "*")) {
            blockComment();
        } else if (is(i, "\"") || is(i, "#")) {
            stringOrHash();
        } else if (is(i, "`")) {
            std::size_t end = i + 1;
            while (end < m_characters.size() && !is(end, "`") && !isNewlineAt(end)) {
                ++end;
            }
            emit(Kind::identifier, text(i + 1, end));
            m_at = end + 1;
        } else if (isLetterAt(i) || is(i, "_") || is(i, "$")) {
            std::size_t end = i;
            while (isLetterAt(end) || isNumberAt(end) || is(end, "_") || is(end, "$")) {
                ++end;
            }
            emit(Kind::identifier, text(i, end));
            m_at = end;
        } else if (isNumberAt(i)) {
            std::size_t end = i;
            while (isLetterAt(end) || isNumberAt(end) || is(end, "_") ||
                   (is(end, ".") && isNumberAt(end + 1))) {
                ++end;
            }
            emit(Kind::number, text(i, end));
            m_at = end;
        } else {
            std::size_t length = 1;
            if (is(i, ".") && is(i + 1, ".") && (is(i + 2, ".") || is(i + 2, "<"))) {
                length = 3;
            } else if (is(i, "-") && is(i + 1, ">")) {
                length = 2;
            }
            emit(Kind::punctuation, text(i, i + length));
            m_at += length;
        }
    }

    void lineComment() {
        const bool isDoc = is(m_at + 2, "/") && !is(m_at + 3, "/");
        const std::size_t start = m_at + (isDoc ? 3 : 2);
        m_at = start;
        while (m_at < m_characters.size() && !isNewlineAt(m_at)) {
            ++m_at;
        }
        if (isDoc) {
            emit(Kind::docComment, std::string(trimBlanksAndTabs(text(start, m_at))));
        }
    }

    void blockComment() {
        const bool isDoc = is(m_at + 2, "*") && !is(m_at + 3, "/");
        const std::int64_t line = m_line;
        std::vector<std::string> raw;
        std::size_t depth = 1;
        m_at += 2;
        while (m_at < m_characters.size() && depth > 0) {
            if (is(m_at, "/") && is(m_at + 1, "*")) {
                ++depth;
                m_at += 2;
            } else if (is(m_at, "*") && is(m_at + 1, "/")) {
                --depth;
                m_at += 2;
            } else {
                m_line += isNewlineAt(m_at);
                raw.push_back(m_characters[m_at++]);
            }
        }
        if (!isDoc) {
            return;
        }
        std::string joined;
        for (const std::string& character : raw) {
            joined += character;
        }
        std::string clean;
        for (std::string_view piece : splitNewlines(joined)) {
            piece = trimBlanksAndTabs(piece);
            while (firstCharacters(piece, 1) == "*") {
                piece.remove_prefix(1);
            }
            piece = trimBlanksAndTabs(piece);
            if (!piece.empty()) {
                clean += clean.empty() ? "" : " ";
                clean += piece;
            }
        }
        emit(Kind::docComment, clean, line);
    }

    void stringOrHash() {
        std::size_t hashes = 0;
        while (is(m_at + hashes, "#")) {
            ++hashes;
        }
        if (is(m_at + hashes, "\"")) {
            const std::int64_t line = m_line;
            m_at += hashes;
            emit(Kind::string, literal(hashes), line);
            return;
        }
        if (hashes != 1 || !isLetterAt(m_at + 1)) {
            emit(Kind::punctuation, "#");
            ++m_at;
            return;
        }
        std::size_t end = m_at + 1;
        while (isLetterAt(end) || isNumberAt(end) || is(end, "_")) {
            ++end;
        }
        const std::string word = text(m_at + 1, end);
        m_at = end;
        for (const char* dropped :
             {"if", "elseif", "else", "endif", "warning", "error", "sourceLocation"}) {
            if (word == dropped) {
                while (m_at < m_characters.size() && !isNewlineAt(m_at)) {
                    ++m_at;
                }
                return;
            }
        }
        emit(Kind::identifier, "#" + word);
    }

    bool hasHashes(std::size_t i, std::size_t hashes) const {
        for (std::size_t k = 0; k < hashes; ++k) {
            if (!is(i + k, "#")) {
                return false;
            }
        }
        return true;
    }

    std::string literal(std::size_t hashes) {
        const bool isMultiLine = is(m_at + 1, "\"") && is(m_at + 2, "\"");
        const std::size_t quotes = isMultiLine ? 3 : 1;
        m_at += quotes;
        std::string all;
        while (m_at < m_characters.size()) {
            if (is(m_at, "\"") && (!isMultiLine || (is(m_at + 1, "\"") && is(m_at + 2, "\""))) &&
                hasHashes(m_at + quotes, hashes)) {
                m_at += quotes + hashes;
                return isMultiLine ? dedented(all) : all;
            }
            if (isNewlineAt(m_at)) {
                if (!isMultiLine) {
                    return all;
                }
                ++m_line;
            } else if (is(m_at, "\\") && hasHashes(m_at + 1, hashes) &&
                       escape(all, m_at + 1 + hashes)) {
                continue;
            }
            all += m_characters[m_at++];
        }
        return all;
    }

    // Whether an escape goes on at `i`; if so, it has been read.
    bool escape(std::string& all, std::size_t i) {
        static constexpr std::pair<std::string_view, std::string_view> simple[] = {
            {"n", "\n"},  {"t", "\t"}, {"r", "\r"},  {"0", std::string_view("\0", 1)},
            {"\"", "\""}, {"'", "'"},  {"\\", "\\"},
        };
        for (const auto& [name, meaning] : simple) {
            if (is(i, name)) {
                all += meaning;
                m_at = i + 1;
                return true;
            }
        }
        if (isNewlineAt(i)) {
            ++m_line;
            m_at = i + 1;
            return true;
        }
        if (is(i, "u") && is(i + 1, "{")) {
            std::size_t end = i + 2;
            while (end < m_characters.size() && !is(end, "}")) {
                m_line += isNewlineAt(end);
                ++end;
            }
            addScalar(all, text(i + 2, end));
            m_at = std::min(end + 1, m_characters.size());
            return true;
        }
        if (is(i, "(")) {
            std::size_t depth = 1;
            std::size_t end = i + 1;
            for (; end < m_characters.size(); ++end) {
                m_line += isNewlineAt(end);
                depth += is(end, "(");
                depth -= is(end, ")");
                if (depth == 0) {
                    break;
                }
            }
            all += "\\(" + text(i + 1, end) + ")";
            m_at = std::min(end + 1, m_characters.size());
            return true;
        }
        return false;
    }

    static void addScalar(std::string& all, const std::string& digits) {
        if (digits.empty() || digits.find_first_not_of("0123456789abcdefABCDEF") != digits.npos) {
            return;
        }
        const std::size_t significant = std::min(digits.find_first_not_of('0'), digits.size());
        if (digits.size() - significant > 6) {
            return;
        }
        const auto scalar =
            static_cast<char32_t>(std::stoul("0" + digits.substr(significant), nullptr, 16));
        if (scalar <= 0x10ffff && (scalar < 0xd800 || scalar > 0xdfff)) {
            appendScalar(all, scalar);
        }
    }

    static std::string dedented(const std::string& all) {
        std::vector<std::string> pieces(1);
        CharacterCursor cursor(all);
        for (std::string_view next = cursor.next(); !next.empty(); next = cursor.next()) {
            if (isNewline(decodeScalar(next, 0).scalar)) {
                pieces.emplace_back();
            } else {
                pieces.back() += next;
            }
        }
        const auto isBlank = [](const std::string& piece) {
            return trimBlanksAndTabs(piece).empty();
        };
        if (isBlank(pieces.front())) {
            pieces.erase(pieces.begin());
        }
        std::size_t indentation = 0;
        if (!pieces.empty() && isBlank(pieces.back())) {
            indentation = characterCount(pieces.back());
            pieces.pop_back();
        }
        for (std::string& piece : pieces) {
            for (std::size_t k = 0; k < indentation; ++k) {
                const std::string_view start = firstCharacters(piece, 1);
                if (start != " " && start != "\t") {
                    break;
                }
                piece.erase(0, 1);
            }
        }
        return join(pieces, "\n");
    }

    std::vector<std::string> m_characters;
    std::size_t m_at = 0;
    std::int64_t m_line = 1;
    std::vector<Token> m_tokens;
};

} // namespace ombrel::test

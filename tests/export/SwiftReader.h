#pragma once

#include "core/IndexedChunks.h"
#include "platform/Base64.h"
#include "platform/Text.h"

#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

// Reads generated Swift source back, strictly: what the compiler would refuse throws.
namespace ombrel::test {

// A chunk as the package has it.
struct ReadChunk {
    std::string id;
    std::vector<std::string> breadcrumb;
    std::string text;
    std::int64_t tokenCount = 0;
    std::string searchText;
    std::string packText;
    std::int64_t packTokenCount = 0;
    std::vector<double> embedding;
};

class SwiftReader {
  public:
    explicit SwiftReader(std::string_view source) : m_rest(source) {}

    bool skip(std::string_view text) {
        const bool isThere = m_rest.starts_with(text);
        m_rest.remove_prefix(isThere ? text.size() : 0);
        return isThere;
    }
    void expect(std::string_view text) {
        if (!skip(text)) {
            throw std::runtime_error("expected " + std::string(text) + " before " +
                                     std::string(m_rest.substr(0, 40)));
        }
    }
    // Goes on behind the text.
    void find(std::string_view text) {
        const std::size_t place = m_rest.find(text);
        if (place == std::string_view::npos) {
            throw std::runtime_error("no " + std::string(text));
        }
        m_rest.remove_prefix(place + text.size());
    }

    // A literal in single quotation marks on one line.
    std::string string() {
        expect("\"");
        std::string value;
        while (!skip("\"")) {
            const char c = take();
            if (c == '\\') {
                value += escaped();
                continue;
            }
            const auto byte = static_cast<unsigned char>(c);
            if ((byte < 0x20 && byte != 0 && byte != '\t') || byte == 0x7f) {
                throw std::runtime_error("a control character in a literal");
            }
            value += c;
        }
        if (!isValidUtf8(value)) {
            throw std::runtime_error("invalid UTF-8");
        }
        return value;
    }

    // A literal of several lines whose line breaks all are escaped.
    std::string longString() {
        expect("\"\"\"\n");
        std::string value;
        while (!skip("\n\"\"\"")) {
            if (skip("\\\n")) {
                continue;
            }
            const char c = take();
            if (static_cast<unsigned char>(c) <= 0x20 || c == '\\' || c == '"') {
                throw std::runtime_error("not a plain character");
            }
            value += c;
        }
        return value;
    }

    std::int64_t integer() {
        std::int64_t value = 0;
        const auto end = std::from_chars(m_rest.data(), m_rest.data() + m_rest.size(), value);
        if (end.ec != std::errc()) {
            throw std::runtime_error("no integer");
        }
        m_rest.remove_prefix(static_cast<std::size_t>(end.ptr - m_rest.data()));
        return value;
    }

    double number() {
        const std::string text(m_rest.substr(0, m_rest.find_first_of(",]")));
        m_rest.remove_prefix(text.size());
        if (text == ".nan" || text.ends_with(".infinity")) {
            const double infinity = std::numeric_limits<double>::infinity();
            return text == ".nan" ? std::nan("") : text[0] == '-' ? -infinity : infinity;
        }
        // Without either the literal would be an integer's.
        if (text.find_first_of(".e") == std::string::npos) {
            throw std::runtime_error("no number of floating point");
        }
        return std::strtod(text.c_str(), nullptr);
    }

    template <class Read>
    auto list(Read read) {
        std::vector<decltype(read())> values;
        expect("[");
        while (!skip("]")) {
            if (!values.empty()) {
                expect(", ");
            }
            values.push_back(read());
        }
        return values;
    }

    bool atEnd() const { return m_rest.empty(); }

  private:
    char take() {
        if (m_rest.empty()) {
            throw std::runtime_error("the source ends in a literal");
        }
        const char c = m_rest.front();
        m_rest.remove_prefix(1);
        return c;
    }
    char escaped() {
        switch (const char c = take()) {
        case 'n':
            return '\n';
        case 'r':
            return '\r';
        case 't':
            return '\t';
        case '"':
        case '\\':
            return c;
        default:
            throw std::runtime_error("an escape that is not used here, such as an interpolation");
        }
    }

    std::string_view m_rest;
};

inline std::vector<ReadChunk> readArrayLiteral(std::string_view source) {
    std::vector<ReadChunk> chunks;
    SwiftReader reader(source);
    reader.find("\nlet ragChunks: [RAGChunk] = [\n");
    while (!reader.skip("]\n")) {
        ReadChunk& chunk = chunks.emplace_back();
        reader.expect("    RAGChunk(id: ");
        chunk.id = reader.string();
        reader.expect(", breadcrumb: ");
        chunk.breadcrumb = reader.list([&] { return reader.string(); });
        reader.expect(", text: ");
        chunk.text = reader.string();
        reader.expect(", tokenCount: ");
        chunk.tokenCount = reader.integer();
        reader.expect(", searchText: ");
        chunk.searchText = reader.string();
        reader.expect(", packText: ");
        chunk.packText = reader.string();
        reader.expect(", packTokenCount: ");
        chunk.packTokenCount = reader.integer();
        reader.expect(", embedding: ");
        chunk.embedding = reader.list([&] { return reader.number(); });
        reader.expect("),\n");
    }
    if (!reader.atEnd()) {
        throw std::runtime_error("more behind the array");
    }
    return chunks;
}

inline std::vector<ReadChunk> readCompact(std::string_view source) {
    SwiftReader reader(source);
    reader.find("\nprivate let packedChunks: StaticString = ");
    const auto decoded = bytesOfBase64(reader.longString());
    reader.expect("\n");
    if (!decoded || !reader.atEnd()) {
        throw std::runtime_error("no such literal");
    }
    std::string_view bytes = *decoded;
    const auto take = [&](std::size_t count) {
        if (count > bytes.size()) {
            throw std::runtime_error("the packed bytes end");
        }
        const std::string_view taken = bytes.substr(0, count);
        bytes.remove_prefix(count);
        return taken;
    };
    const auto number = [&](std::size_t size) {
        std::uint64_t value = 0;
        const std::string_view taken = take(size);
        for (std::size_t i = size; i > 0; --i) {
            value = value << 8 | static_cast<unsigned char>(taken[i - 1]);
        }
        return value;
    };
    const auto integer = [&] { return static_cast<std::int64_t>(number(8)); };

    std::vector<std::string> strings(number(8));
    for (std::string& text : strings) {
        text = take(number(8));
    }
    std::vector<ReadChunk> chunks(number(8));
    for (ReadChunk& chunk : chunks) {
        chunk.id = strings.at(number(8));
        chunk.breadcrumb.resize(number(8));
        for (std::string& part : chunk.breadcrumb) {
            part = strings.at(number(8));
        }
        chunk.text = strings.at(number(8));
        chunk.searchText = chunk.text + strings.at(number(8));
        chunk.tokenCount = integer();
        chunk.packText = strings.at(number(8));
        chunk.packTokenCount = integer();
        chunk.embedding.resize(number(8));
        const std::size_t size = number(8);
        for (double& value : chunk.embedding) {
            value = size == 4 ? std::bit_cast<float>(static_cast<std::uint32_t>(number(4)))
                              : std::bit_cast<double>(number(8));
        }
    }
    if (!bytes.empty()) {
        throw std::runtime_error("more packed bytes");
    }
    return chunks;
}

// Whether this is what the package is to hold of the chunk.
inline bool holds(const ReadChunk& read, const DocumentChunk& chunk) {
    const std::vector<double> embedding = chunk.embedding.value_or(std::vector<double>());
    bool isSame = read.embedding.size() == embedding.size();
    for (std::size_t i = 0; isSame && i < embedding.size(); ++i) {
        const double a = read.embedding[i];
        const double b = embedding[i];
        isSame = (std::isnan(a) && std::isnan(b)) ||
                 std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
    }
    return isSame && read.id == chunk.id.text() && read.breadcrumb == chunk.breadcrumb &&
           read.text == chunk.text && read.tokenCount == chunk.tokenCount &&
           read.searchText == chunk.searchText() && read.packText == chunk.packText();
}

} // namespace ombrel::test

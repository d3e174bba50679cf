#include "export/CompactChunks.h"

#include "export/ChunkFields.h"
#include "platform/Base64.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <limits>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace ombrel {

namespace {

// What stands around the literal. It holds, in base64: the number of distinct strings, each with
// its length before it; the number of chunks, and of each chunk the place of its id among the
// strings, the length of its breadcrumb and the places of its parts, then those of its text, of
// what its search text has beyond the text, and of its pack text, its two token counts, the length
// of its embedding, the size of one number of it, and the numbers. Integers have eight bytes, the
// lowest first.
constexpr std::string_view beforeLiteral = R"swift(
let ragChunks: [RAGChunk] = PackedReader.read(packedChunks)

/// The chunks as they are packed into `packedChunks`.
private struct PackedReader {
    private let bytes: UnsafeRawBufferPointer
    private var offset = 0

    private init(_ bytes: UnsafeRawBufferPointer) {
        self.bytes = bytes
    }

    static func read(_ packed: StaticString) -> [RAGChunk] {
        let text = Data(
            bytesNoCopy: UnsafeMutableRawPointer(mutating: packed.utf8Start),
            count: packed.utf8CodeUnitCount, deallocator: .none)
        guard let data = Data(base64Encoded: text) else {
            preconditionFailure("The packed chunks of this file were changed.")
        }
        return data.withUnsafeBytes { bytes in
            var reader = PackedReader(bytes)
            return reader.chunks()
        }
    }

    private mutating func chunks() -> [RAGChunk] {
        let strings = list { $0.string() }
        return list { reader in
            let id = strings[reader.integer()]
            let breadcrumb = reader.list { strings[$0.integer()] }
            let text = strings[reader.integer()]
            let added = strings[reader.integer()]
            return RAGChunk(
                id: id, breadcrumb: breadcrumb, text: text, tokenCount: reader.integer(),
                searchText: added.isEmpty ? text : text + added,
                packText: strings[reader.integer()], packTokenCount: reader.integer(),
                embedding: reader.numbers())
        }
    }

    private mutating func list<Element>(of element: (inout PackedReader) -> Element) -> [Element] {
        let count = integer()
        var elements: [Element] = []
        elements.reserveCapacity(count)
        for _ in 0..<count {
            elements.append(element(&self))
        }
        return elements
    }

    private mutating func integer() -> Int {
        defer { offset += 8 }
        return Int(Int64(littleEndian: bytes.loadUnaligned(fromByteOffset: offset, as: Int64.self)))
    }

    private mutating func string() -> String {
        let count = integer()
        defer { offset += count }
        return String(
            decoding: UnsafeRawBufferPointer(rebasing: bytes[offset..<offset + count]), as: UTF8.self)
    }

    private mutating func numbers() -> [Double] {
        let count = integer()
        let size = integer()
        let start = offset
        offset += count * size
        return [Double](unsafeUninitializedCapacity: count) { numbers, initializedCount in
            for i in 0..<count {
                let place = start + i * size
                let number =
                    size == 4
                    ? Double(Float(bitPattern: UInt32(
                        littleEndian: bytes.loadUnaligned(fromByteOffset: place, as: UInt32.self))))
                    : Double(bitPattern: UInt64(
                        littleEndian: bytes.loadUnaligned(fromByteOffset: place, as: UInt64.self)))
                numbers.initializeElement(at: i, to: number)
            }
            initializedCount = count
        }
    }
}

private let packedChunks: StaticString = """
)swift";
constexpr std::string_view afterLiteral = "\"\"\"\n";

// The strings of the chunks, each once, and the places of those that were added.
class StringTable {
  public:
    std::uint64_t add(std::string_view text) {
        const auto [entry, isNew] = m_places.try_emplace(text, m_strings.size());
        if (isNew) {
            m_strings.push_back(text);
        }
        return entry->second;
    }
    const std::vector<std::string_view>& strings() const { return m_strings; }

  private:
    std::vector<std::string_view> m_strings;
    std::unordered_map<std::string_view, std::uint64_t> m_places;
};

template <class Number>
void appendBytes(std::string& bytes, Number number) {
    char text[sizeof number];
    for (std::size_t i = 0; i < sizeof number; ++i) {
        text[i] = static_cast<char>(number >> (8 * i) & 0xff);
    }
    bytes.append(text, sizeof text);
}

void appendInteger(std::string& bytes, std::uint64_t number) {
    appendBytes(bytes, number);
}

bool isSinglePrecision(double number) {
    return std::bit_cast<std::uint64_t>(static_cast<double>(static_cast<float>(number))) ==
           std::bit_cast<std::uint64_t>(number);
}

void appendNumbers(std::string& bytes, const std::vector<double>& numbers) {
    const bool isSingle = std::ranges::all_of(numbers, isSinglePrecision);
    appendInteger(bytes, numbers.size());
    appendInteger(bytes, isSingle ? sizeof(float) : sizeof(double));
    for (const double number : numbers) {
        if (isSingle) {
            appendBytes(bytes, std::bit_cast<std::uint32_t>(static_cast<float>(number)));
        } else {
            appendBytes(bytes, std::bit_cast<std::uint64_t>(number));
        }
    }
}

// At least the size of what is written of the chunks beside their strings.
std::size_t recordBytes(const IndexedChunks& pairs) {
    constexpr std::size_t integers = 10;
    std::size_t numbers = 1;
    for (const IndexedDocument& entry : pairs) {
        for (const DocumentChunk& chunk : entry.chunks) {
            numbers += integers + chunk.breadcrumb.size();
            numbers += chunk.embedding ? chunk.embedding->size() : 0;
        }
    }
    return numbers * sizeof(std::uint64_t);
}

} // namespace

std::string compactChunksSource(const IndexedChunks& pairs) {
    StringTable table;
    std::vector<std::string> texts; // that are nowhere else; the table refers to them
    texts.reserve(2 * chunkCount(pairs));
    std::string chunks;
    chunks.reserve(recordBytes(pairs));
    appendInteger(chunks, chunkCount(pairs));
    for (const IndexedDocument& entry : pairs) {
        for (const DocumentChunk& chunk : entry.chunks) {
            appendInteger(chunks, table.add(texts.emplace_back(chunk.id.text())));
            appendInteger(chunks, chunk.breadcrumb.size());
            for (const std::string& part : chunk.breadcrumb) {
                appendInteger(chunks, table.add(part));
            }
            appendInteger(chunks, table.add(chunk.text));
            texts.push_back(chunk.searchText().substr(chunk.text.size()));
            appendInteger(chunks, table.add(texts.back()));
            appendInteger(chunks, static_cast<std::uint64_t>(chunk.tokenCount));
            appendInteger(chunks, table.add(chunk.packText()));
            appendInteger(chunks, static_cast<std::uint64_t>(packTokenCount(chunk)));
            static const std::vector<double> none;
            appendNumbers(chunks, chunk.embedding ? *chunk.embedding : none);
        }
    }
    std::string bytes;
    std::size_t size = chunks.size() + sizeof(std::uint64_t);
    for (const std::string_view text : table.strings()) {
        size += sizeof(std::uint64_t) + text.size();
    }
    bytes.reserve(size);
    appendInteger(bytes, table.strings().size());
    for (const std::string_view text : table.strings()) {
        appendInteger(bytes, text.size());
        bytes += text;
    }
    bytes += chunks;

    std::string source = "import Foundation\n\n";
    source += chunkDeclaration;
    source += beforeLiteral;
    // A backslash at the end of a line keeps the line break out of the literal.
    constexpr std::size_t lineLength = 120;
    const std::string packed = base64(bytes);
    source.reserve(source.size() + packed.size() + 2 * (packed.size() / lineLength + 1) +
                   afterLiteral.size());
    for (std::size_t i = 0; i < packed.size(); i += lineLength) {
        source.append(packed, i, lineLength);
        source += i + lineLength < packed.size() ? "\\\n" : "\n";
    }
    source += afterLiteral;
    return source;
}

} // namespace ombrel

#if canImport(FoundationEssentials)
    import FoundationEssentials
#else
    import Foundation
#endif

/// Where what stands in a knowledge file: a head with the sizes of its sections, then the records
/// of the chunks, the numbers of the embeddings, the keyword index, and the texts. All numbers are
/// little-endian, and every section but the last begins at a multiple of eight.
struct KnowledgeLayout: Sendable {
    static let magic: [UInt8] = Array("OMBRELK1".utf8)
    static let headSize = 48
    /// The id; the start and length in the texts of the breadcrumb, the search text and the text
    /// for the model; the start and count in the numbers of the embedding, with the sum of its
    /// squares.
    static let recordSize = 88
    /// The count of an embedding that is not there.
    static let none = UInt64.max

    let chunkCount: Int
    private let records: ByteSlice
    private let numbers: ByteSlice
    let keyword: ByteSlice
    private let texts: ByteSlice

    /// Nothing when the sections do not fill the bytes or a record points out of them.
    init?(_ bytes: ByteSlice) {
        guard bytes.count >= Self.headSize, bytes.buffer.prefix(8).elementsEqual(Self.magic) else {
            return nil
        }
        let sizes = (1..<6).map {
            UInt64(littleEndian: bytes.buffer.loadUnaligned(fromByteOffset: 8 * $0, as: UInt64.self))
        }
        guard sizes.allSatisfy({ $0 <= UInt64(bytes.count) }), sizes[2] % 8 == 0,
            sizes[0] * UInt64(Self.recordSize) == sizes[1]
        else { return nil }
        var start = UInt64(Self.headSize)
        var sections: [ByteSlice] = []
        for size in sizes[1...] {
            guard let section = bytes.slice(start, size) else { return nil }
            sections.append(section)
            start += size
            start += (8 - start % 8) % 8
        }
        guard UInt64(Self.headSize) + sizes[1...].dropLast().reduce(0, { $0 + ($1 + 7) / 8 * 8 })
            + sizes[4] == UInt64(bytes.count)
        else { return nil }
        chunkCount = Int(sizes[0])
        records = sections[0]
        numbers = sections[1]
        keyword = sections[2]
        texts = sections[3]
        let numberCount = UInt64(numbers.count / 8)
        for position in 0..<chunkCount {
            for offset in [16, 32, 48] {
                guard Self.isPart(
                    number(position, offset), number(position, offset + 8),
                    of: UInt64(texts.count))
                else { return nil }
            }
            let count = number(position, 72)
            guard count == Self.none || Self.isPart(number(position, 64), count, of: numberCount)
            else { return nil }
        }
    }

    private static func isPart(_ start: UInt64, _ count: UInt64, of whole: UInt64) -> Bool {
        start <= whole && count <= whole - start
    }

    @inline(__always)
    private func number(_ position: Int, _ offset: Int) -> UInt64 {
        UInt64(littleEndian: records.buffer.loadUnaligned(
            fromByteOffset: position * Self.recordSize + offset, as: UInt64.self))
    }

    private func text(_ position: Int, _ offset: Int) -> String {
        texts.text(number(position, offset), number(position, offset + 8))
    }

    func id(_ position: Int) -> UUID {
        UUID(uuid: records.buffer.loadUnaligned(
            fromByteOffset: position * Self.recordSize, as: uuid_t.self))
    }

    private func row(_ position: Int) -> VectorIndex.Row {
        let count = number(position, 72)
        guard count != Self.none else { return VectorIndex.Row(start: 0, count: 0, squares: 0) }
        return VectorIndex.Row(
            start: Int(number(position, 64)), count: Int(count),
            squares: Double(bitPattern: number(position, 80)))
    }

    func chunk(_ position: Int) -> RAGChunk {
        var embedding: [Double]?
        if number(position, 72) != Self.none {
            let row = row(position)
            embedding = numbers.withNumbers(Double.self) {
                Array($0[row.start..<row.start + row.count])
            }
        }
        return RAGChunk(
            id: id(position), breadcrumb: text(position, 16), searchText: text(position, 32),
            packText: text(position, 48), embedding: embedding)
    }

    var vectorIndex: VectorIndex {
        VectorIndex(rows: (0..<chunkCount).map(row), numbers: numbers)
    }
}

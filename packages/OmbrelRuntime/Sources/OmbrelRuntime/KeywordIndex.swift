import Synchronization

#if canImport(Darwin)
    import Darwin
#elseif canImport(Glibc)
    import Glibc
#elseif canImport(Musl)
    import Musl
#endif

/// A chunk that was found, by its place in the order of the chunks.
public struct Found: Sendable, Equatable {
    public var position: Int
    public var score: Double
}

/// Okapi BM25 (k1 = 1.5, b = 0.75) over the search texts of some chunks.
public struct KeywordIndex: Sendable {
    private let bytes: ByteSlice
    private let layout: KeywordLayout
    private let others = OtherTerms()

    /// The places of the terms that are not ASCII, once one of them has been looked for. They are
    /// found as strings are, by canonical equivalence, which no order of them does reliably:
    /// "한국어" and "한" in its three parts each come before the other.
    private final class OtherTerms: Sendable {
        let places = Mutex<[String: Int]?>(nil)
    }

    public init(chunks: [RAGChunk]) {
        var builder = KeywordIndexBuilder()
        for chunk in chunks {
            var text = chunk.searchText
            text.withUTF8 { builder.add($0) }
        }
        self.init(bytes: ByteSlice(builder.finish()))!
    }

    /// Nothing when the bytes are not those of an index.
    init?(bytes: ByteSlice) {
        guard let layout = KeywordLayout(bytes.buffer) else { return nil }
        self.bytes = bytes
        self.layout = layout
    }

    /// The number of chunks.
    public var count: Int { layout.chunkCount }

    /// The terms of a text in order: lower case, cut at every character that is neither a letter
    /// nor a number.
    public static func tokenize(_ text: String) -> [String] {
        TermReader.terms(of: text)
    }

    /// The best chunks first; at equal scores in their own order. At most `topK`.
    public func search(_ query: String, topK: Int) -> [Found] {
        guard topK > 0, count > 0 else { return [] }
        return withExtendedLifetime(bytes) { search(query, topK: topK, in: bytes.buffer) }
    }

    private func search(
        _ query: String, topK: Int, in memory: UnsafeRawBufferPointer
    ) -> [Found] {
        func number(_ offset: Int) -> Double {
            Double(UInt32(littleEndian: memory.loadUnaligned(fromByteOffset: offset, as: UInt32.self)))
        }
        let k1 = 1.5
        let b = 0.75
        let n = Double(count)
        let total = UInt64(littleEndian: memory.loadUnaligned(
            fromByteOffset: KeywordLayout.totalLength, as: UInt64.self))
        let average = max(Double(total) / n, 1)
        // Distinct terms in the order of the query: in this order their parts are added.
        var seen = Set<String>()
        var scores = [Double](repeating: 0, count: count)
        for query in Self.tokenize(query) where seen.insert(query).inserted {
            guard let term = find(query, in: memory), term.postingCount > 0 else { continue }
            let df = Double(term.postingCount)
            let idf = log((n - df + 0.5) / (df + 0.5) + 1)
            for i in term.postingsStart..<term.postingsStart + term.postingCount {
                let place = layout.postings + 8 * i
                let chunk = Int(UInt32(littleEndian: memory.loadUnaligned(
                    fromByteOffset: place, as: UInt32.self)))
                guard chunk < count else { continue }
                let tf = number(place + 4)
                let length = number(layout.lengths + 4 * chunk)
                let denominator = tf + k1 * (1 - b + b * length / average)
                scores[chunk] += idf * (tf * (k1 + 1)) / denominator
            }
        }
        var best = BestFound(topK: topK)
        for (position, score) in scores.enumerated() where score > 0 {
            best.offer(Found(position: position, score: score))
        }
        return best.found
    }

    private func find(_ text: String, in memory: UnsafeRawBufferPointer) -> KeywordLayout.Term? {
        func name(_ term: KeywordLayout.Term) -> Slice<UnsafeRawBufferPointer> {
            let start = layout.texts + term.textStart
            return memory[start..<start + term.textCount]
        }
        guard text.utf8.allSatisfy({ $0 < 0x80 }) else {
            let place = others.places.withLock { places in
                if let places {
                    return places[text]
                }
                var all: [String: Int] = [:]
                for place in layout.asciiTermCount..<layout.termCount {
                    guard let term = layout.term(place, in: memory) else { continue }
                    all[String(decoding: name(term), as: UTF8.self)] = place
                }
                places = all
                return all[text]
            }
            return place.flatMap { layout.term($0, in: memory) }
        }
        var low = 0
        var high = layout.asciiTermCount
        while low < high {
            let middle = (low + high) / 2
            guard let term = layout.term(middle, in: memory) else { return nil }
            let name = name(term)
            if name.elementsEqual(text.utf8) {
                return term
            }
            if name.lexicographicallyPrecedes(text.utf8) {
                low = middle + 1
            } else {
                high = middle
            }
        }
        return nil
    }
}

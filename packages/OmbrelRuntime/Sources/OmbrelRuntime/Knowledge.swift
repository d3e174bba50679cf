#if canImport(FoundationEssentials)
    import FoundationEssentials
#else
    import Foundation
#endif

/// A chunk that a search of knowledge found.
public struct Passage: Sendable, Equatable {
    public var id: UUID
    public var breadcrumb: String
    /// What reaches the model.
    public var text: String
    /// From 0 to 1, the best passage of a search has 1.
    public var score: Double
}

/// Chunks under an index kind, with how many passages a search gives and which are good enough.
public struct Knowledge: Sendable {
    public let indexKind: IndexKind
    public let topK: Int
    public let threshold: Double
    private let file: KnowledgeFile

    /// Knowledge in memory. Builds the indexes that the kind needs.
    public init(chunks: [RAGChunk], indexKind: IndexKind, topK: Int, threshold: Double) {
        self.init(
            KnowledgeFile(chunks: chunks), indexKind: indexKind, topK: topK,
            threshold: threshold)
    }

    /// Knowledge in a file that `KnowledgeFile.write` wrote.
    public init(
        contentsOf url: URL, indexKind: IndexKind, topK: Int, threshold: Double
    ) throws {
        self.init(
            try KnowledgeFile(contentsOf: url), indexKind: indexKind, topK: topK,
            threshold: threshold)
    }

    /// Chunks that others may search too, in other ways.
    public init(_ file: KnowledgeFile, indexKind: IndexKind, topK: Int, threshold: Double) {
        self.file = file
        self.indexKind = indexKind
        self.topK = topK
        self.threshold = threshold
    }

    /// The number of chunks.
    public var count: Int { file.count }

    /// The passages for a text, at most `topK` (but at least 1), best first, with a score of at
    /// least the threshold. Hybrid knowledge does with the words alone when the embedder fails;
    /// vector knowledge throws what it throws.
    public func search(_ text: String, embedder: any QueryEmbedder) async throws -> [Passage] {
        var vector: [Double]?
        if indexKind != .keyword, count > 0 {
            do {
                vector = try await embedder.vector(for: text, inLanguageOf: file.chunk(0).searchText)
            } catch {
                try Task.checkCancellation()
                if indexKind == .vector {
                    throw error
                }
            }
        }
        return search(text, vector: vector)
    }

    /// The same when the embedder gives this vector for the text.
    public func search(_ text: String, vector: [Double]?) -> [Passage] {
        let limit = max(topK, 1)
        let scored: [Found]
        switch indexKind {
        case .keyword:
            scored = Self.normalised(file.keywordIndex.search(text, topK: limit))
        case .vector:
            scored = Self.normalised(vector.map { file.vectorIndex.search($0, topK: limit) } ?? [])
        case .hybrid:
            let (wider, isTooWide) = limit.multipliedReportingOverflow(by: 3)
            let widerK = isTooWide ? Int.max : wider
            scored = fused(
                file.keywordIndex.search(text, topK: widerK),
                vector.map { file.vectorIndex.search($0, topK: widerK) } ?? [], topK: limit)
        }
        return scored.filter { $0.score >= threshold }.map {
            let chunk = file.chunk($0.position)
            return Passage(
                id: chunk.id, breadcrumb: chunk.breadcrumb, text: chunk.packText, score: $0.score)
        }
    }

    /// The scores divided by the best of them.
    private static func normalised(_ found: [Found]) -> [Found] {
        guard let best = found.first?.score, best > 0 else { return found }
        return found.map { Found(position: $0.position, score: $0.score / best) }
    }

    /// The two lists in one, by rank: a chunk gains 1 / (60 + rank) from each that it is in, and
    /// its score is the sum over the best sum. At equal sums the chunk that came first stays first.
    private func fused(_ keyword: [Found], _ vector: [Found], topK: Int) -> [Found] {
        struct Row {
            var position: Int
            var keywordWorth = 0.0
            var sum = 0.0
        }
        func worth(_ rank: Int) -> Double { 1 / (60 + Double(rank)) }
        var rows: [Row] = []
        var places: [UUID: Int] = [:]
        func place(_ position: Int) -> Int {
            let id = file.id(position)
            if let place = places[id] {
                return place
            }
            places[id] = rows.count
            rows.append(Row(position: position))
            return rows.count - 1
        }
        // Chunks with the same id count as one: the last that was found.
        for (index, found) in keyword.enumerated() {
            let place = place(found.position)
            rows[place].position = found.position
            rows[place].keywordWorth = worth(index + 1)
            rows[place].sum = rows[place].keywordWorth
        }
        for (index, found) in vector.enumerated() {
            let place = place(found.position)
            rows[place].position = found.position
            rows[place].sum = rows[place].keywordWorth + worth(index + 1)
        }
        let order = rows.indices.sorted {
            rows[$0].sum != rows[$1].sum ? rows[$0].sum > rows[$1].sum : $0 < $1
        }
        return order.prefix(topK).map {
            Found(position: rows[$0].position, score: rows[$0].sum / rows[order[0]].sum)
        }
    }
}

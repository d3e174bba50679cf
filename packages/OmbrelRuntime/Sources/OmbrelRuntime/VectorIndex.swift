/// Cosine similarity between a query's vector and the embeddings of some chunks.
public struct VectorIndex: Sendable {
    /// Where the embedding of a chunk stands in the numbers.
    struct Row: Sendable {
        var start: Int
        var count: Int
        /// The sum of the squares of the numbers.
        var squares: Double
    }

    private let rows: [Row]
    private let numbers: ByteSlice

    public init(chunks: [RAGChunk]) {
        var rows: [Row] = []
        var total = 0
        for chunk in chunks {
            let embedding = chunk.embedding ?? []
            rows.append(Row(
                start: total, count: embedding.count, squares: Self.squares(embedding)))
            total += embedding.count
        }
        let bytes = Bytes(count: total * MemoryLayout<Double>.size) { memory in
            let numbers = memory.bindMemory(to: Double.self)
            for (row, chunk) in zip(rows, chunks) {
                _ = numbers[row.start...].update(fromContentsOf: chunk.embedding ?? [])
            }
        }
        self.init(rows: rows, numbers: ByteSlice(bytes))
    }

    /// The rows lie in the numbers.
    init(rows: [Row], numbers: ByteSlice) {
        self.rows = rows
        self.numbers = numbers
    }

    /// The number of chunks.
    public var count: Int { rows.count }

    /// The chunks with a similarity above 0, the nearest first; at equal similarities in their own
    /// order. At most `topK`.
    public func search(_ vector: [Double], topK: Int) -> [Found] {
        let squares = Self.squares(vector)
        guard topK > 0, squares > 0 else { return [] }
        let norm = squares.squareRoot()
        var best = BestFound(topK: topK)
        numbers.withNumbers(Double.self) { numbers in
            vector.withUnsafeBufferPointer { query in
                for (position, row) in rows.enumerated()
                where row.count == query.count && row.squares > 0 {
                    var dot = 0.0
                    for i in 0..<query.count {
                        dot += query[i] * numbers[row.start + i]
                    }
                    let similarity = dot / (norm * row.squares.squareRoot())
                    if similarity > 0 {
                        best.offer(Found(position: position, score: similarity))
                    }
                }
            }
        }
        return best.found
    }

    static func squares(_ vector: [Double]) -> Double {
        var sum = 0.0
        for number in vector {
            sum += number * number
        }
        return sum
    }
}

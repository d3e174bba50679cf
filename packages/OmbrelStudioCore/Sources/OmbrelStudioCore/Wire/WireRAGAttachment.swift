/// Knowledge of an agent.
public struct WireRAGAttachment: Sendable, Equatable {
    public var indexKind: WireRAGIndexKind
    /// How many passages are looked for.
    public var topK: Int
    /// The score that a passage must reach.
    public var threshold: Double
    public var chunks: WireRAGChunks

    init(from reader: inout WireReader) throws {
        var indexKind: WireRAGIndexKind?
        var topK: Int?
        var threshold: Double?
        var chunks: WireRAGChunks?
        try reader.readRecord { key, reader in
            switch key {
            case "indexKind": indexKind = try reader.readRawValue()
            case "topK": topK = try reader.json.readInt()
            case "threshold": threshold = try reader.json.readDouble()
            case "chunks":
                chunks = WireRAGChunks(file: reader.file, range: try reader.json.skipValue())
            default: return false
            }
            return true
        }
        self.indexKind = try indexKind.required("indexKind")
        self.topK = try topK.required("topK")
        self.threshold = try threshold.required("threshold")
        self.chunks = try chunks.required("chunks")
    }
}

/// A piece of knowledge.
public struct WireRAGChunk: Sendable, Equatable {
    public var id: String
    /// The headings that lead to it, joined with " > ".
    public var breadcrumb: String
    /// What is searched.
    public var searchableText: String
    /// What a prompt is given.
    public var packableText: String
    public var embedding: [Double]?
}

extension WireRAGChunk {
    init(from json: inout JSONReader) throws {
        var id: String?
        var breadcrumb: String?
        var searchableText: String?
        var packableText: String?
        var embedding: [Double]?
        try json.readObject { key, json in
            switch key {
            case "id": id = try json.readUUID()
            case "breadcrumb": breadcrumb = try json.readString()
            case "searchableText": searchableText = try json.readString()
            case "packableText": packableText = try json.readString()
            case "embedding": embedding = json.readNull() ? nil : try json.readDoubles()
            default: try json.skipValue()
            }
        }
        self.id = try id.required("id")
        self.breadcrumb = try breadcrumb.required("breadcrumb")
        self.searchableText = try searchableText.required("searchableText")
        self.packableText = try packableText.required("packableText")
        self.embedding = embedding
    }
}

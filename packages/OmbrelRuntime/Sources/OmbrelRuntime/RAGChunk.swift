#if canImport(FoundationEssentials)
    import FoundationEssentials
#else
    import Foundation
#endif

/// A piece of knowledge.
public struct RAGChunk: Codable, Sendable, Equatable, Identifiable {
    public var id: UUID
    /// The heading path, its parts with " > " between.
    public var breadcrumb: String
    /// What is searched and embedded.
    public var searchText: String
    /// What reaches the model.
    public var packText: String
    /// The vector of `searchText`.
    public var embedding: [Double]?

    public init(
        id: UUID, breadcrumb: String, searchText: String, packText: String,
        embedding: [Double]? = nil
    ) {
        self.id = id
        self.breadcrumb = breadcrumb
        self.searchText = searchText
        self.packText = packText
        self.embedding = embedding
    }
}

import Foundation
import OmbrelRuntime

extension FlowSource.KnowledgeContent {
    /// Writes the file that the runtime reads.
    func write(to url: URL) throws {
        let chunks: [RAGChunk]
        do {
            chunks = try self.chunks.read().map { chunk in
                RAGChunk(
                    id: UUID(uuidString: chunk.id)!, breadcrumb: chunk.breadcrumb,
                    searchText: chunk.searchableText, packText: chunk.packableText,
                    embedding: chunk.embedding)
            }
        } catch let error as WireError {
            throw error.below("chunks")
        }
        try KnowledgeFile.write(chunks, to: url)
    }
}

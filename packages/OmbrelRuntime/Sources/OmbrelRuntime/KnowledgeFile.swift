import Synchronization
#if canImport(FoundationEssentials)
    import FoundationEssentials
#else
    import Foundation
#endif
#if canImport(Darwin)
    import Darwin
#elseif canImport(Glibc)
    import Glibc
#elseif canImport(Musl)
    import Musl
#endif

/// Chunks with their embeddings and their keyword index, in a file or in memory. A file is mapped:
/// opening it reads little more than a line a chunk.
public final class KnowledgeFile: Sendable {
    private enum Storage {
        case memory([RAGChunk])
        case file(KnowledgeLayout, ByteSlice)
    }

    private let storage: Storage
    private let indexes = Mutex<(keyword: KeywordIndex?, vector: VectorIndex?)>((nil, nil))

    /// The number of chunks.
    public let count: Int

    public init(chunks: [RAGChunk]) {
        storage = .memory(chunks)
        count = chunks.count
    }

    /// Opens a file that `write` wrote. Throws a `FlowError` when it can't be read or is damaged.
    public init(contentsOf url: URL) throws {
        let path = url.path
        let bytes = ByteSlice(try Bytes(contentsOf: path))
        guard let layout = KnowledgeLayout(bytes) else {
            throw FlowError("\(path) is not a knowledge file, or it is damaged.")
        }
        storage = .file(layout, bytes)
        count = layout.chunkCount
        let keyword = KeywordIndex(bytes: layout.keyword)
        guard let keyword, keyword.count == count else {
            throw FlowError("\(path) is not a knowledge file, or it is damaged.")
        }
        indexes.withLock { $0.keyword = keyword }
    }

    /// Writes chunks in the form that is read here, in place of a file that may be there. The same
    /// chunks give the same bytes.
    public static func write(_ chunks: [RAGChunk], to url: URL) throws {
        try KnowledgeWriter(chunks).write(to: url.path)
    }

    /// The chunk at a place.
    public func chunk(_ position: Int) -> RAGChunk {
        switch storage {
        case .memory(let chunks): chunks[position]
        case .file(let layout, _): layout.chunk(position)
        }
    }

    /// The id of the chunk at a place.
    public func id(_ position: Int) -> UUID {
        switch storage {
        case .memory(let chunks): chunks[position].id
        case .file(let layout, _): layout.id(position)
        }
    }

    /// Built when it is first asked for, unless the file holds it.
    public var keywordIndex: KeywordIndex {
        indexes.withLock { indexes in
            if let index = indexes.keyword {
                return index
            }
            guard case .memory(let chunks) = storage else { return KeywordIndex(chunks: []) }
            let index = KeywordIndex(chunks: chunks)
            indexes.keyword = index
            return index
        }
    }

    public var vectorIndex: VectorIndex {
        indexes.withLock { indexes in
            if let index = indexes.vector {
                return index
            }
            let index =
                switch storage {
                case .memory(let chunks): VectorIndex(chunks: chunks)
                case .file(let layout, _): layout.vectorIndex
                }
            indexes.vector = index
            return index
        }
    }
}

#if canImport(Darwin)
import Darwin
#else
import Glibc
#endif

/// The chunks of an attachment, still as JSON text: they are nearly all of a request, and a run
/// that has seen them before does not read them.
public struct WireRAGChunks: Sendable, Equatable {
    private let file: MappedFile
    private let range: Range<Int>

    init(file: MappedFile, range: Range<Int>) {
        self.file = file
        self.range = range
    }

    /// The JSON text.
    var bytes: UnsafeBufferPointer<UInt8> {
        UnsafeBufferPointer(rebasing: file.bytes[range])
    }

    /// Reads every chunk, in the order of the document.
    public func read() throws -> [WireRAGChunk] {
        defer { withExtendedLifetime(file) {} }
        var json = JSONReader(bytes)
        let chunks: [WireRAGChunk] = try json.readList { try WireRAGChunk(from: &$0) }
        try json.finish()
        return chunks
    }

    public static func == (one: WireRAGChunks, other: WireRAGChunks) -> Bool {
        one.bytes.count == other.bytes.count
            && (one.bytes.isEmpty
                || memcmp(one.bytes.baseAddress!, other.bytes.baseAddress!, one.bytes.count) == 0)
    }
}

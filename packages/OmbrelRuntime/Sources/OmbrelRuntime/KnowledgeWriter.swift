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

/// Writes knowledge files.
struct KnowledgeWriter {
    private let chunks: [RAGChunk]
    private let records: [UInt8]
    private let numberCount: UInt64
    private let keyword: Bytes
    private let texts: TextSection

    /// Of a chunk its search text, its text for the model unless that one begins with it, and its
    /// breadcrumb unless the chunk before has the same.
    private struct TextSection {
        private(set) var texts: [String] = []
        private(set) var byteCount: UInt64 = 0

        /// Gives its start and length.
        mutating func add(_ text: String) -> [UInt64] {
            let place = [byteCount, UInt64(text.utf8.count)]
            texts.append(text)
            byteCount += place[1]
            return place
        }
    }

    init(_ chunks: [RAGChunk]) {
        self.chunks = chunks
        var texts = TextSection()
        var records: [UInt8] = []
        var builder = KeywordIndexBuilder()
        var numberCount: UInt64 = 0
        records.reserveCapacity(chunks.count * KnowledgeLayout.recordSize)
        var breadcrumb: (text: String, place: [UInt64])?
        for chunk in chunks {
            withUnsafeBytes(of: chunk.id.uuid) { records.append(contentsOf: $0) }
            if breadcrumb == nil || !breadcrumb!.text.utf8.elementsEqual(chunk.breadcrumb.utf8) {
                breadcrumb = (chunk.breadcrumb, texts.add(chunk.breadcrumb))
            }
            var search = chunk.searchText
            search.withUTF8 { builder.add($0) }
            let searchPlace = texts.add(search)
            let isPart = search.utf8.starts(with: chunk.packText.utf8)
            let packPlace =
                isPart ? [searchPlace[0], UInt64(chunk.packText.utf8.count)] : texts.add(chunk.packText)
            let embedding = chunk.embedding
            let numbers =
                breadcrumb!.place + searchPlace + packPlace + [
                    numberCount, embedding.map { UInt64($0.count) } ?? KnowledgeLayout.none,
                    VectorIndex.squares(embedding ?? []).bitPattern,
                ]
            numberCount += UInt64(embedding?.count ?? 0)
            for number in numbers {
                withUnsafeBytes(of: number.littleEndian) { records.append(contentsOf: $0) }
            }
        }
        self.records = records
        self.numberCount = numberCount
        self.texts = texts
        keyword = builder.finish()
    }

    /// Writes beside the path and moves the file there when it is whole.
    func write(to path: String) throws {
        let beside = path + ".\(getpid()).part"
        func fault() -> FlowError {
            FlowError("\(path) can't be written: \(String(cString: strerror(errno))).")
        }
        let descriptor = open(beside, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0o600)
        guard descriptor >= 0 else { throw fault() }
        var output = Output(descriptor: descriptor)
        write(to: &output)
        output.flush()
        let isWritten = !output.hasFailed
        let failure = errno
        let isClosed = close(descriptor) == 0
        guard isWritten, isClosed, rename(beside, path) == 0 else {
            errno = isWritten ? errno : failure
            let error = fault()
            unlink(beside)
            throw error
        }
    }

    private func write(to output: inout Output) {
        output.write(KnowledgeLayout.magic)
        let sizes = [
            UInt64(chunks.count), UInt64(records.count), numberCount * 8,
            UInt64(keyword.buffer.count), texts.byteCount,
        ]
        for size in sizes {
            withUnsafeBytes(of: size.littleEndian) { output.write($0) }
        }
        records.withUnsafeBytes { output.write($0) }
        for chunk in chunks {
            chunk.embedding?.withUnsafeBytes { output.write($0) }
        }
        withExtendedLifetime(keyword) { output.write(keyword.buffer) }
        output.write([UInt8](repeating: 0, count: (8 - keyword.buffer.count % 8) % 8))
        for text in texts.texts {
            var text = text
            text.withUTF8 { output.write(UnsafeRawBufferPointer($0)) }
        }
    }

    private struct Output {
        let descriptor: Int32
        private(set) var hasFailed = false
        private var pending: [UInt8] = []

        init(descriptor: Int32) {
            self.descriptor = descriptor
        }

        mutating func write(_ bytes: [UInt8]) {
            bytes.withUnsafeBytes { write($0) }
        }

        mutating func write(_ bytes: UnsafeRawBufferPointer) {
            pending.append(contentsOf: bytes)
            if pending.count >= 1 << 20 {
                flush()
            }
        }

        mutating func flush() {
            pending.withUnsafeBytes { bytes in
                var rest = bytes[...]
                while !rest.isEmpty, !hasFailed {
                    let part = UnsafeRawBufferPointer(rebasing: rest)
                    #if canImport(Darwin)
                        let written = Darwin.write(descriptor, part.baseAddress, part.count)
                    #elseif canImport(Glibc)
                        let written = Glibc.write(descriptor, part.baseAddress, part.count)
                    #else
                        let written = Musl.write(descriptor, part.baseAddress, part.count)
                    #endif
                    if written > 0 {
                        rest = rest.dropFirst(written)
                    } else if written == 0 || errno != EINTR {
                        hasFailed = true
                    }
                }
            }
            pending.removeAll(keepingCapacity: true)
        }
    }
}

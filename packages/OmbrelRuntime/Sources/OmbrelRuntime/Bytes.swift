#if canImport(Darwin)
    import Darwin
#elseif canImport(Glibc)
    import Glibc
#elseif canImport(Musl)
    import Musl
#endif

/// Bytes that don't change and stay where they are: a mapped file or memory of our own.
final class Bytes: @unchecked Sendable {
    let buffer: UnsafeRawBufferPointer
    private let release: (UnsafeRawBufferPointer) -> Void

    /// Memory that `fill` writes all of.
    init(count: Int, fill: (UnsafeMutableRawBufferPointer) -> Void) {
        let memory = UnsafeMutableRawBufferPointer.allocate(byteCount: count, alignment: 16)
        fill(memory)
        buffer = UnsafeRawBufferPointer(memory)
        release = { $0.deallocate() }
    }

    /// A file. It may be replaced meanwhile, but not be cut.
    init(contentsOf path: String) throws {
        func fault() -> FlowError {
            FlowError("\(path) can't be read: \(String(cString: strerror(errno))).")
        }
        let descriptor = open(path, O_RDONLY | O_CLOEXEC)
        guard descriptor >= 0 else { throw fault() }
        defer { close(descriptor) }
        var status = stat()
        guard fstat(descriptor, &status) == 0 else { throw fault() }
        let count = Int(status.st_size)
        guard count > 0 else {
            buffer = UnsafeRawBufferPointer(start: nil, count: 0)
            release = { _ in }
            return
        }
        guard let start = mmap(nil, count, PROT_READ, MAP_PRIVATE, descriptor, 0),
            start != MAP_FAILED
        else { throw fault() }
        buffer = UnsafeRawBufferPointer(start: start, count: count)
        release = { munmap(UnsafeMutableRawPointer(mutating: $0.baseAddress!), $0.count) }
    }

    deinit {
        release(buffer)
    }
}

/// A stretch of bytes with what keeps them.
struct ByteSlice: Sendable {
    private let owner: Bytes
    private let range: Range<Int>

    init(_ owner: Bytes) {
        self.owner = owner
        range = 0..<owner.buffer.count
    }

    private init(owner: Bytes, range: Range<Int>) {
        self.owner = owner
        self.range = range
    }

    var count: Int { range.count }

    /// Good as long as the slice lives.
    var buffer: UnsafeRawBufferPointer { UnsafeRawBufferPointer(rebasing: owner.buffer[range]) }

    /// A part of the slice, nothing when it does not lie in it.
    func slice(_ start: UInt64, _ count: UInt64) -> ByteSlice? {
        guard start <= UInt64(range.count), count <= UInt64(range.count) - start else {
            return nil
        }
        let begin = range.lowerBound + Int(start)
        return ByteSlice(owner: owner, range: begin..<begin + Int(count))
    }

    /// Calls with the memory of numbers that lie in the slice from its start.
    func withNumbers<Number: BitwiseCopyable, Result>(
        _ type: Number.Type, _ body: (UnsafeBufferPointer<Number>) throws -> Result
    ) rethrows -> Result {
        try withExtendedLifetime(owner) { try body(buffer.bindMemory(to: type)) }
    }

    func text(_ start: UInt64, _ count: UInt64) -> String {
        guard let part = slice(start, count) else { return "" }
        return withExtendedLifetime(owner) { String(decoding: part.buffer, as: UTF8.self) }
    }
}

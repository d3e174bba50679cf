#if canImport(Darwin)
import Darwin
#else
import Glibc
#endif

/// The bytes of a file, mapped into memory as long as this lives. The file must not be cut short
/// meanwhile.
public final class MappedFile: @unchecked Sendable {
    public let bytes: UnsafeBufferPointer<UInt8>

    /// Throws a `WireError` that tells why the file can't be read.
    public init(path: String) throws {
        let file: Int32 = open(path, O_RDONLY | O_CLOEXEC)
        guard file >= 0 else { throw Self.failure(path) }
        defer { close(file) }
        var status = stat()
        guard fstat(file, &status) == 0 else { throw Self.failure(path) }
        let size = Int(status.st_size)
        guard size > 0 else {
            bytes = UnsafeBufferPointer(start: nil, count: 0)
            return
        }
        guard let address = mmap(nil, size, PROT_READ, MAP_PRIVATE, file, 0), address != MAP_FAILED
        else { throw Self.failure(path) }
        bytes = UnsafeBufferPointer(
            start: UnsafePointer(address.assumingMemoryBound(to: UInt8.self)), count: size)
    }

    /// A copy of the bytes.
    init(_ content: [UInt8]) {
        let copy = UnsafeMutableBufferPointer<UInt8>.allocate(capacity: content.count)
        _ = copy.initialize(from: content)
        bytes = UnsafeBufferPointer(copy)
        isMapped = false
    }

    private var isMapped = true

    deinit {
        if !isMapped {
            bytes.deallocate()
        } else if let address = bytes.baseAddress {
            munmap(UnsafeMutableRawPointer(mutating: address), bytes.count)
        }
    }

    private static func failure(_ path: String) -> WireError {
        WireError("“\(path)” can't be read: \(String(cString: strerror(errno))).")
    }
}

import Dispatch
import Synchronization
#if canImport(Darwin)
    import Darwin
#elseif canImport(Glibc)
    import Glibc
#elseif canImport(Musl)
    import Musl
#endif

/// What a server answered.
struct LoopbackResponse: Sendable {
    var status: Int
    var contentType: String
    var body: [UInt8]

    var text: String { String(decoding: body, as: UTF8.self) }
}

/// One POST of JSON to a server on this machine, over a connection of its own.
final class LoopbackRequest: Sendable {
    struct Limits: Sendable {
        var connect: Duration = .seconds(5)
        /// For everything.
        var total: Duration = .seconds(20 * 60)
        /// More bytes in a body are an error.
        var bodyBytes = 64 << 20
    }

    /// No connection could be made.
    struct Unreachable: Error {
        var error: FlowError
    }

    private struct State {
        var descriptor: Int32 = -1
        var isCancelled = false
    }

    private let address: LoopbackAddress
    private let head: [UInt8]
    private let body: [UInt8]
    private let limits: Limits
    private let state = Mutex(State())

    init(
        to address: LoopbackAddress, path: String, json: String, key: String,
        limits: Limits = Limits()
    ) throws {
        guard key.utf8.allSatisfy({ $0 > 0x20 && $0 < 0x7F }) else {
            throw FlowError("The key of the model server has characters that keys don't have.")
        }
        self.address = address
        self.limits = limits
        body = Array(json.utf8)
        var head = "POST \(address.path)\(path) HTTP/1.1\r\n"
        head += "Host: \(address.authority)\r\nConnection: close\r\nAccept: application/json\r\n"
        head += "Content-Type: application/json\r\nContent-Length: \(body.count)\r\n"
        head += key.isEmpty ? "\r\n" : "Authorization: Bearer \(key)\r\n\r\n"
        self.head = Array(head.utf8)
    }

    /// Sends the request and waits for the whole answer, whatever its status. Cancelling the task
    /// ends it.
    func send() async throws -> LoopbackResponse {
        try await withTaskCancellationHandler {
            try Task.checkCancellation()
            return try await withCheckedThrowingContinuation { continuation in
                DispatchQueue.global().async {
                    continuation.resume(with: Result { try self.exchange() })
                }
            }
        } onCancel: {
            state.withLock { state in
                state.isCancelled = true
                if state.descriptor >= 0 {
                    shutdown(state.descriptor, Int32(SHUT_RDWR))
                }
            }
        }
    }

    private var name: String { "The model server at http://\(address.authority)" }

    private func exchange() throws -> LoopbackResponse {
        let deadline = ContinuousClock.now + limits.total
        let descriptor = try connect()
        defer {
            state.withLock { $0.descriptor = -1 }
            close(descriptor)
        }
        try write(head, to: descriptor, until: deadline)
        try write(body, to: descriptor, until: deadline)
        var reader = LoopbackResponseReader(bodyLimit: limits.bodyBytes)
        var buffer = [UInt8](repeating: 0, count: 1 << 16)
        while true {
            try wait(for: Int16(POLLIN), on: descriptor, until: deadline)
            let count = recv(descriptor, &buffer, buffer.count, 0)
            if count < 0, errno == EINTR || errno == EAGAIN {
                continue
            }
            try checkCancellation()
            do {
                if count <= 0 {
                    return try reader.finish()
                }
                if let response = try reader.take(buffer[..<count]) {
                    return response
                }
            } catch let fault as LoopbackResponseReader.Fault {
                throw FlowError("\(name) \(fault.rawValue).")
            }
        }
    }

    private func checkCancellation() throws {
        if state.withLock({ $0.isCancelled }) {
            throw CancellationError()
        }
    }

    private func connect() throws -> Int32 {
        for host in address.hosts {
            guard let descriptor = try connect(to: host) else { continue }
            return descriptor
        }
        throw Unreachable(error: FlowError("Nothing answers at http://\(address.authority)."))
    }

    /// Nothing when nobody listens there.
    private func connect(to host: LoopbackAddress.Host) throws -> Int32? {
        let family: Int32
        switch host {
        case .v4: family = AF_INET
        case .v6: family = AF_INET6
        }
        #if canImport(Glibc)
            let descriptor = socket(family, Int32(SOCK_STREAM.rawValue), 0)
        #else
            let descriptor = socket(family, SOCK_STREAM, 0)
        #endif
        guard descriptor >= 0 else { return nil }
        _ = fcntl(descriptor, F_SETFD, FD_CLOEXEC)
        _ = fcntl(descriptor, F_SETFL, fcntl(descriptor, F_GETFL) | O_NONBLOCK)
        #if canImport(Darwin)
            var on: Int32 = 1
            setsockopt(descriptor, SOL_SOCKET, SO_NOSIGPIPE, &on, socklen_t(MemoryLayout<Int32>.size))
        #endif
        let isCancelled = state.withLock { state in
            state.descriptor = descriptor
            return state.isCancelled
        }
        var isConnected = false
        defer {
            if !isConnected {
                state.withLock { $0.descriptor = -1 }
                close(descriptor)
            }
        }
        if isCancelled {
            throw CancellationError()
        }
        guard start(descriptor, host) == 0 || errno == EINPROGRESS else { return nil }
        do {
            try wait(for: Int16(POLLOUT), on: descriptor, until: .now + limits.connect)
        } catch is FlowError {
            return nil
        }
        try checkCancellation()
        var failure: Int32 = 0
        var size = socklen_t(MemoryLayout<Int32>.size)
        guard getsockopt(descriptor, SOL_SOCKET, SO_ERROR, &failure, &size) == 0, failure == 0
        else { return nil }
        isConnected = true
        return descriptor
    }

    private func start(_ descriptor: Int32, _ host: LoopbackAddress.Host) -> Int32 {
        func call<Address>(_ address: Address) -> Int32 {
            withUnsafePointer(to: address) {
                $0.withMemoryRebound(to: sockaddr.self, capacity: 1) {
                    #if canImport(Darwin)
                        Darwin.connect(descriptor, $0, socklen_t(MemoryLayout<Address>.size))
                    #elseif canImport(Glibc)
                        Glibc.connect(descriptor, $0, socklen_t(MemoryLayout<Address>.size))
                    #else
                        Musl.connect(descriptor, $0, socklen_t(MemoryLayout<Address>.size))
                    #endif
                }
            }
        }
        switch host {
        case .v4(let number):
            var address = sockaddr_in()
            address.sin_family = sa_family_t(AF_INET)
            address.sin_port = networkPort
            address.sin_addr.s_addr = number.bigEndian
            return call(address)
        case .v6:
            var address = sockaddr_in6()
            address.sin6_family = sa_family_t(AF_INET6)
            address.sin6_port = networkPort
            withUnsafeMutableBytes(of: &address.sin6_addr) { $0[15] = 1 }
            return call(address)
        }
    }

    private var networkPort: in_port_t { address.port.bigEndian }

    private func write(
        _ bytes: [UInt8], to descriptor: Int32, until deadline: ContinuousClock.Instant
    ) throws {
        #if canImport(Darwin)
            let flags: Int32 = 0
        #else
            let flags = Int32(MSG_NOSIGNAL)
        #endif
        var offset = 0
        while offset < bytes.count {
            let count = bytes.withUnsafeBytes {
                #if canImport(Darwin)
                    Darwin.send(descriptor, $0.baseAddress! + offset, $0.count - offset, flags)
                #elseif canImport(Glibc)
                    Glibc.send(descriptor, $0.baseAddress! + offset, $0.count - offset, flags)
                #else
                    Musl.send(descriptor, $0.baseAddress! + offset, $0.count - offset, flags)
                #endif
            }
            if count > 0 {
                offset += count
            } else if errno == EAGAIN {
                try wait(for: Int16(POLLOUT), on: descriptor, until: deadline)
            } else if errno != EINTR {
                try checkCancellation()
                // It may have answered before it read everything.
                return
            }
        }
    }

    /// Waits until something can be done with the descriptor, or it has been shut down.
    private func wait(
        for events: Int16, on descriptor: Int32, until deadline: ContinuousClock.Instant
    ) throws {
        while true {
            let left = (deadline - .now).components
            guard left.seconds >= 0, left.attoseconds >= 0 else { break }
            let milliseconds = left.seconds * 1000 + left.attoseconds / 1_000_000_000_000_000 + 1
            var entry = pollfd(fd: descriptor, events: events, revents: 0)
            let count = poll(&entry, 1, Int32(clamping: milliseconds))
            if count > 0 {
                return
            }
            if count < 0, errno != EINTR {
                return
            }
        }
        throw FlowError("\(name) did not answer within \(limits.total.components.seconds) seconds.")
    }
}

import Dispatch
import Foundation
import Synchronization

@testable import OmbrelRuntime

/// A server on a free port of this machine. It gives each connection the next of its answers, byte
/// for byte, and remembers what it was sent.
final class ScriptedServer: Sendable {
    enum Answer {
        /// What is sent, in these pieces, before the connection is closed.
        case pieces([String])
        /// Nothing, until the other side closes the connection.
        case silence
    }

    let port: UInt16
    private let descriptor: Int32
    private let requests = Mutex<[String]>([])
    private let answers: Mutex<[Answer]>

    init(_ answers: [Answer]) throws {
        self.answers = Mutex(answers)
        #if canImport(Glibc)
            descriptor = socket(AF_INET, Int32(SOCK_STREAM.rawValue), 0)
        #else
            descriptor = socket(AF_INET, SOCK_STREAM, 0)
        #endif
        var address = sockaddr_in()
        address.sin_family = sa_family_t(AF_INET)
        address.sin_addr.s_addr = UInt32(0x7F00_0001).bigEndian
        var size = socklen_t(MemoryLayout<sockaddr_in>.size)
        let descriptor = descriptor
        let isReady = withUnsafeMutablePointer(to: &address) {
            $0.withMemoryRebound(to: sockaddr.self, capacity: 1) {
                bind(descriptor, $0, size) == 0 && listen(descriptor, 16) == 0
                    && getsockname(descriptor, $0, &size) == 0
            }
        }
        guard isReady else { throw FlowError("No port is free.") }
        port = UInt16(bigEndian: address.sin_port)
        Thread.detachNewThread { [self] in
            serve()
        }
    }

    /// A JSON answer with a length.
    static func json(_ body: String, status: String = "200 OK") -> Answer {
        .pieces([
            "HTTP/1.1 \(status)\r\nContent-Type: application/json\r\n"
                + "Content-Length: \(body.utf8.count)\r\n\r\n" + body
        ])
    }

    /// What a model answers.
    static func chat(_ text: String, finish: String = "stop") -> Answer {
        json(
            FlowValue.object([
                "choices": .array([
                    .object([
                        "message": .object(["role": "assistant", "content": .string(text)]),
                        "finish_reason": .string(finish),
                    ])
                ])
            ]).json)
    }

    var url: String { "http://127.0.0.1:\(port)/v1" }
    /// The requests so far, heads and bodies.
    var received: [String] { requests.withLock { $0 } }
    /// The body of a request.
    func body(_ index: Int) throws -> FlowValue {
        try FlowValue(json: String(received[index].components(separatedBy: "\r\n\r\n")[1]))
    }

    /// Ends with the last answer.
    private func serve() {
        while let answer = answers.withLock({ $0.isEmpty ? nil : $0.removeFirst() }) {
            let connection = accept(descriptor, nil, nil)
            guard connection >= 0 else { return }
            let request = read(from: connection)
            requests.withLock { $0.append(request) }
            switch answer {
            case .silence:
                var byte: UInt8 = 0
                _ = recv(connection, &byte, 1, 0)
            case .pieces(let pieces):
                for piece in pieces {
                    let bytes = Array(piece.utf8)
                    #if canImport(Glibc)
                        _ = send(connection, bytes, bytes.count, Int32(MSG_NOSIGNAL))
                    #else
                        _ = send(connection, bytes, bytes.count, 0)
                    #endif
                    usleep(2_000)
                }
            }
            close(connection)
        }
        close(descriptor)
    }

    /// One request with its body.
    private func read(from connection: Int32) -> String {
        var bytes: [UInt8] = []
        var buffer = [UInt8](repeating: 0, count: 1 << 16)
        while true {
            let text = String(decoding: bytes, as: UTF8.self)
            if let head = text.range(of: "\r\n\r\n"),
                let field = text.range(of: "Content-Length: "),
                let length = Int(text[field.upperBound...].prefix { $0.isNumber }),
                text[head.upperBound...].utf8.count >= length
            {
                return text
            }
            let count = recv(connection, &buffer, buffer.count, 0)
            guard count > 0 else { return text }
            bytes += buffer[..<count]
        }
    }
}

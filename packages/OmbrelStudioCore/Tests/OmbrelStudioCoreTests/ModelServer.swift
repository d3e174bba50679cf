import Foundation
import OmbrelRuntime

/// A model server on this machine whose answers a test writes.
///
/// One connection at a time, each closed after its answer.
final class ModelServer: @unchecked Sendable {
    /// What is asked: the instructions, the prompt, and the schema of the answer if there is one.
    struct Question: Sendable {
        var instructions: String
        var prompt: String
        var schema: FlowValue?
    }

    let port: UInt16
    private let socketFile: Int32
    private let answer: @Sendable (Question) -> String?
    private let lock = NSLock()
    private var asked: [Question] = []

    /// The questions so far.
    var questions: [Question] { lock.withLock { asked } }

    var environment: [String: String] {
        [
            "OMBREL_MODEL_URL": "http://127.0.0.1:\(port)/v1", "OMBREL_MODEL_KEY": "key",
            "OMBREL_MODEL_NAME": "scripted",
        ]
    }

    /// Without an answer the server fails.
    init(answer: @escaping @Sendable (Question) -> String?) throws {
        self.answer = answer
        #if canImport(Darwin)
        socketFile = socket(AF_INET, SOCK_STREAM, 0)
        #else
        socketFile = socket(AF_INET, Int32(SOCK_STREAM.rawValue), 0)
        #endif
        var address = sockaddr_in()
        address.sin_family = sa_family_t(AF_INET)
        address.sin_addr.s_addr = inet_addr("127.0.0.1")
        var length = socklen_t(MemoryLayout<sockaddr_in>.size)
        let file: Int32 = socketFile
        let bound: Int32 = withUnsafeMutablePointer(to: &address) { pointer in
            pointer.withMemoryRebound(to: sockaddr.self, capacity: 1) { pointer in
                guard bind(file, pointer, length) == 0, listen(file, 16) == 0 else { return -1 }
                return getsockname(file, pointer, &length)
            }
        }
        guard bound == 0 else { throw POSIXError(POSIXErrorCode(rawValue: errno) ?? .EIO) }
        port = UInt16(bigEndian: address.sin_port)
        Thread { [weak self] in
            while true {
                let connection: Int32 = accept(file, nil, nil)
                guard connection >= 0 else { return }
                self?.serve(connection)
                close(connection)
            }
        }.start()
    }

    deinit {
        shutdown(socketFile, Int32(SHUT_RDWR))
        close(socketFile)
    }

    private func serve(_ connection: Int32) {
        var request: [UInt8] = []
        var buffer = [UInt8](repeating: 0, count: 65_536)
        while true {
            let count: Int = recv(connection, &buffer, buffer.count, 0)
            guard count > 0 else { return }
            request.append(contentsOf: buffer[..<count])
            if let body = body(of: request) {
                reply(to: body, connection)
                return
            }
        }
    }

    /// The body of a request that is whole.
    private func body(of request: [UInt8]) -> String? {
        let text = String(decoding: request, as: UTF8.self)
        guard let head = text.range(of: "\r\n\r\n"),
            let length = text[..<head.lowerBound].split(separator: "\r\n").first(where: {
                $0.lowercased().hasPrefix("content-length:")
            }).flatMap({ Int($0.dropFirst(15).trimmingCharacters(in: .whitespaces)) })
        else { return nil }
        let body: Substring = text[head.upperBound...]
        return body.utf8.count >= length ? String(body) : nil
    }

    private func reply(to body: String, _ connection: Int32) {
        var status = "500 Internal Server Error"
        var content = "{\"error\":{\"message\":\"scripted failure\"}}"
        if let question = try? question(body) {
            lock.withLock { asked.append(question) }
            if let answer = answer(question) {
                status = "200 OK"
                let message: FlowValue = ["role": "assistant", "content": .string(answer)]
                let choice: FlowValue = ["message": message, "finish_reason": "stop"]
                content = FlowValue.object(["choices": .array([choice])]).json
            }
        }
        let response =
            "HTTP/1.1 \(status)\r\nContent-Type: application/json\r\n"
            + "Content-Length: \(content.utf8.count)\r\nConnection: close\r\n\r\n\(content)"
        var bytes: ArraySlice<UInt8> = Array(response.utf8)[...]
        while !bytes.isEmpty {
            let count: Int = bytes.withUnsafeBytes {
                send(connection, $0.baseAddress, $0.count, Int32(MSG_NOSIGNAL))
            }
            guard count > 0 else { return }
            bytes = bytes.dropFirst(count)
        }
    }

    private func question(_ body: String) throws -> Question {
        let json = try FlowValue(json: body)
        guard case .array(let messages)? = json["messages"] else { throw FlowError("no messages") }
        func content(_ role: String) -> String {
            messages.first { $0["role"]?.text == role }?["content"]?.text ?? ""
        }
        return Question(
            instructions: content("system"), prompt: content("user"),
            schema: json["response_format"]?["json_schema"]?["schema"])
    }
}

#if canImport(Darwin)
private let MSG_NOSIGNAL = 0
#endif

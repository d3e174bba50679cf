/// Puts an answer of HTTP/1.1 together from its bytes.
struct LoopbackResponseReader {
    /// What is wrong with the answer, as the end of a sentence.
    enum Fault: String, Error {
        case notHTTP = "answered with something that is not HTTP"
        case tooLarge = "answered with more than can be read"
        case endedEarly = "stopped in the middle of its answer"
    }

    private enum Form {
        case counted(Int)
        case chunked
        case untilTheEnd
    }

    private static let headLimit = 1 << 16

    private let bodyLimit: Int
    private var bytes: [UInt8] = []
    private var offset = 0  // of what has not been read
    private var response: LoopbackResponse?
    private var form = Form.untilTheEnd

    init(bodyLimit: Int) {
        self.bodyLimit = bodyLimit
    }

    /// The response once it is whole.
    mutating func take(_ new: some Collection<UInt8>) throws -> LoopbackResponse? {
        bytes.append(contentsOf: new)
        while response == nil {
            guard try readHead() else { return nil }
        }
        switch form {
        case .untilTheEnd:
            try moveToBody(bytes.count - offset)
            return nil
        case .counted(let count):
            try moveToBody(min(bytes.count - offset, count - response!.body.count))
            return response!.body.count == count ? response : nil
        case .chunked:
            return try readChunks() ? response : nil
        }
    }

    /// The response when there are no more bytes.
    func finish() throws -> LoopbackResponse {
        guard let response, case .untilTheEnd = form else { throw Fault.endedEarly }
        return response
    }

    private mutating func moveToBody(_ count: Int) throws {
        guard count <= bodyLimit - response!.body.count else { throw Fault.tooLarge }
        response!.body.append(contentsOf: bytes[offset..<offset + count])
        offset += count
        if offset == bytes.count {
            bytes.removeAll(keepingCapacity: true)
            offset = 0
        }
    }

    /// The next line without its end, when it is whole.
    private mutating func readLine() throws -> String? {
        guard let end = bytes[offset...].firstIndex(of: 0x0A) else {
            guard bytes.count - offset <= Self.headLimit else { throw Fault.notHTTP }
            return nil
        }
        var line = bytes[offset..<end]
        if line.last == 0x0D {
            line = line.dropLast()
        }
        offset = end + 1
        return String(decoding: line, as: UTF8.self)
    }

    /// Whether the head was whole. One that says to wait for another is dropped.
    private mutating func readHead() throws -> Bool {
        let start = offset
        guard let status = try readLine() else { return false }
        let parts = status.split(separator: " ", maxSplits: 2)
        guard parts.count >= 2, parts[0].hasPrefix("HTTP/1."), parts[1].count == 3,
            let code = Int(parts[1])
        else { throw Fault.notHTTP }
        var head = LoopbackResponse(status: code, contentType: "", body: [])
        var form = Form.untilTheEnd
        while true {
            guard offset - start <= Self.headLimit else { throw Fault.notHTTP }
            guard let line = try readLine() else {
                offset = start
                return false
            }
            if line.isEmpty {
                break
            }
            guard let colon = line.firstIndex(of: ":") else { throw Fault.notHTTP }
            let value = String(line[line.index(after: colon)...]).trimmed()
            switch line[..<colon].lowercased() {
            case "content-type": head.contentType = value
            case "transfer-encoding" where value.lowercased() == "chunked": form = .chunked
            case "content-length":
                guard let count = Int(value), count >= 0 else { throw Fault.notHTTP }
                guard count <= bodyLimit else { throw Fault.tooLarge }
                if case .untilTheEnd = form {
                    form = .counted(count)
                }
            default: break
            }
        }
        if code >= 200 {
            response = head
            self.form = code == 204 || code == 304 ? .counted(0) : form
        }
        return true
    }

    /// Whether the last chunk was read.
    private mutating func readChunks() throws -> Bool {
        while true {
            let start = offset
            guard let line = try readLine() else { return false }
            let digits = line.prefix { $0 != ";" }
            guard let count = Int(String(digits).trimmed(), radix: 16), count >= 0 else {
                throw Fault.notHTTP
            }
            guard count <= bodyLimit else { throw Fault.tooLarge }
            if count == 0 {
                return true
            }
            // With the line feed after it.
            guard bytes.count - offset >= count + 2 else {
                offset = start
                return false
            }
            try moveToBody(count)
            guard let rest = try readLine(), rest.isEmpty else { throw Fault.notHTTP }
        }
    }
}

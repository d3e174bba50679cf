/// The base address of a server on this machine.
struct LoopbackAddress: Sendable, Equatable {
    enum Host: Sendable, Equatable {
        case v4(UInt32)  // in the order of the host
        case v6
    }

    /// What to try, in this order.
    let hosts: [Host]
    let port: UInt16
    /// Up to and without a slash at the end.
    let path: String
    /// What stands in the request's head.
    let authority: String

    /// Throws a `FlowError` for every other address than http on "localhost", 127.0.0.0/8 or ::1.
    /// Nothing is resolved.
    init(_ text: String) throws {
        func fault(_ what: String) -> FlowError {
            FlowError("The address of the model server, “\(text)”, \(what).")
        }
        let scheme = "http://"
        guard text.lowercased().hasPrefix(scheme) else { throw fault("does not begin with http://") }
        // Nothing that could begin another line or part of a request.
        guard text.utf8.allSatisfy({ $0 > 0x20 && $0 < 0x7F }) else {
            throw fault("has characters that addresses don't have")
        }
        let rest = text.dropFirst(scheme.count)
        let end = rest.firstIndex { "/?#".contains($0) } ?? rest.endIndex
        let authority = rest[..<end]
        var path = rest[end...]
        guard !path.contains("?"), !path.contains("#") else {
            throw fault("has more than a path")
        }
        while path.last == "/" {
            path = path.dropLast()
        }
        guard !authority.contains("@") else { throw fault("has a user in it") }
        var name = authority
        var portText: Substring = "80"
        if let colon = authority.lastIndex(of: ":"), !authority[colon...].contains("]") {
            name = authority[..<colon]
            portText = authority[authority.index(after: colon)...]
        }
        guard let port = UInt16(portText), port > 0, portText.first != "+" else {
            throw fault("has no port that there can be")
        }
        let loopback: UInt32 = 127 << 24
        switch name.lowercased() {
        case "localhost": hosts = [.v4(loopback | 1), .v6]
        case "[::1]": hosts = [.v6]
        default:
            let parts = name.split(separator: ".", omittingEmptySubsequences: false)
            let numbers = parts.compactMap { part in
                part.allSatisfy { $0.isASCII && $0.isNumber } && (part.count == 1 || part.first != "0")
                    ? UInt8(part) : nil
            }
            guard parts.count == 4, numbers.count == 4, numbers[0] == 127 else {
                throw fault("is not on this machine: only localhost, 127.0.0.1 and ::1 are")
            }
            hosts = [.v4(numbers.reduce(0) { $0 << 8 | UInt32($1) })]
        }
        self.port = port
        self.path = String(path)
        self.authority = String(authority)
    }
}

/// A request that does not say what it should: where in it, and what is wrong there.
public struct WireError: Error, Equatable, CustomStringConvertible {
    /// The keys and positions that lead there, such as `["flow", "startInput", "2", "name"]`.
    public var path: [String] = []
    public var message: String

    public init(_ message: String) {
        self.message = message
    }

    public var description: String {
        path.isEmpty ? message : "\(path.joined(separator: ".")): \(message)"
    }

    /// The same seen from one level further out.
    func below(_ step: String) -> WireError {
        var outer = self
        outer.path.insert(step, at: 0)
        return outer
    }
}

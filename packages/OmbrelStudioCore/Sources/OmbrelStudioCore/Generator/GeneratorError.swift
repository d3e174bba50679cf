/// Why no package can be made of a request, in a sentence for the user.
public struct GeneratorError: Error, Equatable, CustomStringConvertible {
    public var description: String

    public init(_ description: String) {
        self.description = description
    }
}

#if canImport(FoundationEssentials)
    import FoundationEssentials
#else
    import Foundation
#endif

/// What went wrong in a flow, in a sentence for the user.
public struct FlowError: LocalizedError, Sendable, Equatable, CustomStringConvertible {
    public var message: String
    /// The name of the agent or tool where it went wrong, when it is known.
    public var node: String?

    public init(_ message: String, node: String? = nil) {
        self.message = message
        self.node = node
    }

    public var description: String { message }
    public var errorDescription: String? { message }

    /// The words of any error.
    public static func message(of error: any Error) -> String {
        if let error = error as? FlowError {
            return error.message
        }
        if error is CancellationError {
            return "The run was cancelled."
        }
        if let described = (error as? any LocalizedError)?.errorDescription {
            return described
        }
        #if canImport(Darwin)
            return error.localizedDescription
        #else
            return String(describing: error)
        #endif
    }
}

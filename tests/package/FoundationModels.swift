// Stands in for the framework: what generated packages use of it. The test sets what it answers.
import Foundation

public final class SystemLanguageModel: Sendable {
    public enum Availability: Sendable {
        public enum UnavailableReason: Sendable {
            case deviceNotEligible, appleIntelligenceNotEnabled, modelNotReady
        }
        case available
        case unavailable(UnavailableReason)
    }

    public static let `default` = SystemLanguageModel()
    public var availability: Availability { StandInModel.availability }
}

public final class LanguageModelSession: @unchecked Sendable {
    public struct Response<Content> {
        public let content: Content
    }

    private let instructions: String?

    public init(model: SystemLanguageModel = .default, instructions: String? = nil) {
        self.instructions = instructions
    }

    public func respond(to prompt: String) async throws -> Response<String> {
        StandInModel.prompts.append((instructions ?? "", prompt))
        if let error = StandInModel.error {
            throw error
        }
        return Response(content: StandInModel.reply)
    }
}

public enum StandInModel {
    nonisolated(unsafe) public static var availability = SystemLanguageModel.Availability.available
    nonisolated(unsafe) public static var reply = ""
    nonisolated(unsafe) public static var error: (any Error)?
    nonisolated(unsafe) public static var prompts: [(instructions: String, prompt: String)] = []
}

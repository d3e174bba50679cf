// Stands in for the framework: what the runtime of compiled flows uses of it. It answers with what
// it was asked.
import Foundation

public final class SystemLanguageModel: Sendable {
    public enum Availability: Sendable {
        public enum UnavailableReason: Sendable {
            case deviceNotEligible, appleIntelligenceNotEnabled, modelNotReady
        }
        case available
        case unavailable(UnavailableReason)
    }

    private let asked = NSLock()
    nonisolated(unsafe) private var count = 0

    public static let `default` = SystemLanguageModel()
    /// Ready for the first two sessions.
    public var availability: Availability {
        asked.withLock {
            count += 1
            return count <= 2 ? .available : .unavailable(.modelNotReady)
        }
    }
}

public struct GenerationOptions: Sendable {
    public init() {}
}

public protocol Generable {}
extension String: Generable {}
extension Int: Generable {}
extension Double: Generable {}
extension Bool: Generable {}

public struct GenerationGuide<Value> {}

public struct DynamicGenerationSchema: Sendable {
    public struct Property: Sendable {
        let text: String
        public init(
            name: String, description: String? = nil, schema: DynamicGenerationSchema,
            isOptional: Bool = false
        ) {
            text = "\(name)\(isOptional ? "?" : "")(\(description ?? "")): \(schema.text)"
        }
    }

    let text: String
    public init(name: String, description: String? = nil, properties: [Property]) {
        text = "\(name){\(properties.map(\.text).joined(separator: "; "))}"
    }
    public init(name: String, description: String? = nil, anyOf choices: [String]) {
        text = "\(name)<\(choices.joined(separator: "|"))>"
    }
    public init(
        arrayOf itemSchema: DynamicGenerationSchema, minimumElements: Int? = nil,
        maximumElements: Int? = nil
    ) {
        text = "[\(itemSchema.text)]"
    }
    public init<Value: Generable>(type: Value.Type, guides: [GenerationGuide<Value>] = []) {
        text = "\(type)"
    }
}

public struct GenerationSchema: Sendable {
    let text: String
    public init(root: DynamicGenerationSchema, dependencies: [DynamicGenerationSchema]) throws {
        text = root.text
    }
}

public struct GeneratedContent: Sendable {
    public let jsonString: String
}

public final class LanguageModelSession: @unchecked Sendable {
    public struct Response<Content> {
        public let content: Content
    }

    private let instructions: String?

    public init(model: SystemLanguageModel = .default, instructions: String? = nil) {
        self.instructions = instructions
    }

    public func respond(
        to prompt: String, options: GenerationOptions = GenerationOptions()
    ) async throws -> Response<String> {
        Response(content: "\(instructions ?? "")/\(prompt)")
    }

    public func respond(
        to prompt: String, schema: GenerationSchema, includeSchemaInPrompt: Bool = true,
        options: GenerationOptions = GenerationOptions()
    ) async throws -> Response<GeneratedContent> {
        let title = "\(schema.text) \(includeSchemaInPrompt)"
        let json = "{\"inner\":{\"open\":true},\"kind\":\"b\",\"prices\":[1,2.5],\"title\":\"\(title)\"}"
        return Response(content: GeneratedContent(jsonString: json))
    }
}

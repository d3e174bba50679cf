#if canImport(FoundationModels)
    import Foundation
    import FoundationModels

    /// The system's language model.
    struct SystemModel: LanguageModel {
        func respond(instructions: String, prompt: String) async throws -> String {
            try await session(instructions).respond(to: prompt).content
        }

        func respond(instructions: String, prompt: String, schema: ValueSchema) async throws
            -> FlowValue
        {
            let root = try GenerationSchema(root: schema.dynamic(name: "Output"), dependencies: [])
            let response = try await session(instructions).respond(
                to: prompt, schema: root, includeSchemaInPrompt: true, options: GenerationOptions())
            return try valueInAnswer(response.content.jsonString, schema: schema)
        }

        private func session(_ instructions: String) throws -> LanguageModelSession {
            switch SystemLanguageModel.default.availability {
            case .available:
                return LanguageModelSession(instructions: instructions)
            case .unavailable(let reason):
                throw FlowError(
                    "The on-device model is unavailable (\(String(describing: reason))) — enable "
                        + "Apple Intelligence.")
            }
        }
    }

    extension ValueSchema {
        fileprivate func dynamic(name: String) -> DynamicGenerationSchema {
            switch self {
            case .string: DynamicGenerationSchema(type: String.self)
            case .int: DynamicGenerationSchema(type: Int.self)
            case .double: DynamicGenerationSchema(type: Double.self)
            case .bool: DynamicGenerationSchema(type: Bool.self)
            case .array(let element):
                DynamicGenerationSchema(arrayOf: element.dynamic(name: name))
            case .choice(let name, let cases):
                DynamicGenerationSchema(name: name, anyOf: cases)
            case .object(let name, let properties):
                DynamicGenerationSchema(
                    name: name,
                    properties: properties.map {
                        DynamicGenerationSchema.Property(
                            name: $0.name, description: $0.description,
                            schema: $0.schema.dynamic(name: $0.name), isOptional: $0.isOptional)
                    })
            }
        }
    }
#endif

/// A model that answers prompts. Every call is a conversation of its own.
public protocol LanguageModel: Sendable {
    /// The answer as text.
    func respond(instructions: String, prompt: String) async throws -> String
    /// An answer that fits the schema, objects with their keys in the declared order. A model that
    /// can't be held to a schema may answer a choice with a string that is none of its cases.
    func respond(instructions: String, prompt: String, schema: ValueSchema) async throws
        -> FlowValue
}

/// Turns texts into the vectors that the studio's embeddings are compared with.
public protocol QueryEmbedder: Sendable {
    /// The vector of a text that is searched for, nothing when there is none for it. `sample` is
    /// a text of what is searched: its language decides where there is one embedding a language.
    func vector(for text: String, inLanguageOf sample: String) async throws -> [Double]?
}

/// The model that environment variables name, or the reason why there is none.
struct EnvironmentModel: LanguageModel {
    private let server: Result<ServerModel, FlowError>

    init(environment: [String: String]) {
        if let reason = environment["OMBREL_MODEL_ERROR"], !reason.isEmpty {
            server = .failure(FlowError(reason))
            return
        }
        guard let url = environment["OMBREL_MODEL_URL"], !url.isEmpty else {
            server = .failure(FlowError(
                "There is no language model. Set OMBREL_MODEL_URL to the address of a server on "
                    + "this machine with the OpenAI protocol, such as http://127.0.0.1:8080/v1."))
            return
        }
        server = Result {
            try ServerModel(
                url: url, key: environment["OMBREL_MODEL_KEY"] ?? "",
                name: environment["OMBREL_MODEL_NAME"] ?? "")
        }.mapError { $0 as? FlowError ?? FlowError(FlowError.message(of: $0)) }
    }

    func respond(instructions: String, prompt: String) async throws -> String {
        try await server.get().respond(instructions: instructions, prompt: prompt)
    }

    func respond(instructions: String, prompt: String, schema: ValueSchema) async throws
        -> FlowValue
    {
        try await server.get().respond(instructions: instructions, prompt: prompt, schema: schema)
    }
}

/// The embedding that environment variables name, or the reason why there is none.
struct EnvironmentEmbedder: QueryEmbedder {
    private let server: Result<ServerEmbedder, FlowError>

    init(environment: [String: String]) {
        guard let url = environment["OMBREL_EMBEDDING_URL"], !url.isEmpty else {
            server = .failure(FlowError(
                "There is no embedding model to search with. Set OMBREL_EMBEDDING_URL to the "
                    + "address of a server on this machine with the OpenAI protocol, such as "
                    + "http://127.0.0.1:8081/v1."))
            return
        }
        server = Result {
            try ServerEmbedder(
                url: url, key: environment["OMBREL_EMBEDDING_KEY"] ?? "",
                name: environment["OMBREL_EMBEDDING_NAME"] ?? "")
        }.mapError { $0 as? FlowError ?? FlowError(FlowError.message(of: $0)) }
    }

    func vector(for text: String, inLanguageOf sample: String) async throws -> [Double]? {
        try await server.get().vector(for: text, inLanguageOf: sample)
    }
}

import Synchronization

/// A language model behind a server on this machine with the OpenAI protocol.
final class ServerModel: LanguageModel {
    /// Tokens of one answer: a model may never stop by itself.
    static let answerTokens = 800

    private let address: LoopbackAddress
    private let key: String
    private let name: String
    private let limits: LoopbackRequest.Limits
    /// Whether the server holds answers to a schema, as far as is known.
    private let isConstraining = Atomic(true)

    /// `url` is the base address, which ends with "/v1" as a rule.
    init(
        url: String, key: String, name: String,
        limits: LoopbackRequest.Limits = LoopbackRequest.Limits(bodyBytes: 16 << 20)
    ) throws {
        address = try LoopbackAddress(url)
        self.key = key
        self.name = name
        self.limits = limits
    }

    func respond(instructions: String, prompt: String) async throws -> String {
        do {
            return try await ask(instructions, prompt, schema: nil).text
        } catch let error as ServerError {
            throw error.error
        }
    }

    func respond(instructions: String, prompt: String, schema: ValueSchema) async throws
        -> FlowValue
    {
        let schemaText = schema.jsonSchema
        let prompt =
            prompt + "\n\nAnswer with nothing but JSON that fits this JSON schema:\n" + schemaText
        var isConstrained = isConstraining.load(ordering: .relaxed)
        var isDoubtful = false  // whether this server holds anything to a schema
        while true {
            let answer: Answer
            do {
                answer = try await ask(
                    instructions, prompt, schema: isConstrained ? schemaText : nil)
            } catch let error as ServerError {
                guard isConstrained, error.kind == .refused else { throw error.error }
                isConstrained = false
                isDoubtful = true
                continue
            }
            do {
                let value = try valueInAnswer(answer.text, schema: schema)
                if isDoubtful {
                    isConstraining.store(false, ordering: .relaxed)  // Asking alone helped.
                }
                return value
            } catch {
                if answer.isCutOff {
                    throw FlowError(
                        "The model's answer was cut off before it was complete, by the limit of "
                            + "\(Self.answerTokens) tokens or by the end of the model's context.")
                }
                guard isConstrained else {
                    if case .choice = schema {
                        return .string(answer.text.trimmed())
                    }
                    throw FlowError(
                        "The model's answer does not fit what was asked for. "
                            + FlowError.message(of: error))
                }
                isConstrained = false
                isDoubtful = (try? FlowValue(json: answer.text)) == nil
            }
        }
    }

    private struct Answer {
        var text: String
        var isCutOff: Bool
    }

    private func ask(_ instructions: String, _ prompt: String, schema: String?) async throws
        -> Answer
    {
        let json = body(instructions, prompt, schema: schema)
        let response = try await reached {
            try await LoopbackRequest(
                to: address, path: "/chat/completions", json: json, key: key, limits: limits
            ).send()
        }
        guard response.status < 400 else { throw ServerError(response) }
        let document: FlowValue
        do {
            document = try FlowValue(json: response.text)
        } catch {
            throw FlowError(
                response.body.isEmpty
                    ? "The model server gave an empty answer."
                    : "The model server answered with something that is not JSON.")
        }
        if let reported = document["error"], !reported.isNull {
            throw ServerError(LoopbackResponse(
                status: response.status, contentType: "", body: response.body))
        }
        guard case .array(let choices)? = document["choices"], let choice = choices.first,
            let message = choice["message"]
        else {
            throw FlowError(
                "The model server answered with something that is not a chat answer.")
        }
        let text = message["content"]?.text ?? ""
        let isCutOff = choice["finish_reason"] == "length"
        let thoughts = message["reasoning_content"] ?? message["reasoning"] ?? .null
        if isCutOff, text.isEmpty, !thoughts.text.isEmpty {
            throw FlowError("The model used all the tokens of its answer for thinking.")
        }
        return Answer(text: text, isCutOff: isCutOff)
    }

    private func body(_ instructions: String, _ prompt: String, schema: String?) -> String {
        func message(_ role: String, _ content: String) -> FlowValue {
            .object(["role": .string(role), "content": .string(content)])
        }
        var members: FlowValue.Members = [:]
        if !name.isEmpty {
            members["model"] = .string(name)
        }
        members["messages"] = .array(
            (instructions.isEmpty ? [] : [message("system", instructions)])
                + [message("user", prompt)])
        if let schema = schema.flatMap({ try? FlowValue(json: $0) }) {
            members["response_format"] = .object([
                "type": "json_schema",
                "json_schema": .object([
                    "name": "answer", "strict": .bool(true), "schema": schema,
                ]),
            ])
        }
        members["max_tokens"] = .int(Self.answerTokens)
        members["stream"] = .bool(false)
        return FlowValue.object(members).json
    }
}

/// Tries a second time when no connection could be made: a server may just be starting again.
func reached<Value>(_ send: () async throws -> Value) async throws -> Value {
    do {
        return try await send()
    } catch is LoopbackRequest.Unreachable {
        try await Task.sleep(for: .milliseconds(300))
    }
    do {
        return try await send()
    } catch let unreachable as LoopbackRequest.Unreachable {
        throw unreachable.error
    }
}

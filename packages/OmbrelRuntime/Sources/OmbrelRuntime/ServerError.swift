/// What a model server says that does not do what it is asked.
struct ServerError: Error {
    enum Kind {
        case refused  // an error to this request
        case tooLong  // more than the model takes
        case notAllowed
    }

    var kind: Kind
    var error: FlowError

    /// What an answer with an error status says.
    init(_ response: LoopbackResponse) {
        let document = try? FlowValue(json: response.text)
        // {"error": {"message": …}}, {"error": "…"}, or the message at the top.
        let reported = document?["error"] ?? document ?? .null
        func text(_ value: FlowValue?) -> String? {
            if case .string(let text)? = value, !text.isEmpty { text } else { nil }
        }
        var message = text(reported) ?? text(reported["message"]) ?? text(reported["detail"]) ?? ""
        // A page for people, of a proxy or another kind of server, says nothing that belongs here.
        if document == nil, !response.contentType.hasPrefix("text/html") {
            message = response.text
        }
        if response.status == 401 || response.status == 403 {
            self.init(.notAllowed, "The model server does not accept the key.")
            return
        }
        let lower = message.lowercased()
        let signs = [
            "context size", "context length", "context window", "maximum context",
            "too large to process",
        ]
        if response.status == 413 || text(reported["type"]) == "exceed_context_size_error"
            || text(reported["code"]) == "context_length_exceeded"
            || signs.contains(where: { lower.firstRange(of: $0) != nil })
        {
            if case .int(let asked)? = reported["n_prompt_tokens"],
                case .int(let possible)? = reported["n_ctx"]
            {
                self.init(
                    .tooLong,
                    "The text is too long for the model: it has \(asked) tokens, and the model "
                        + "takes \(possible).")
            } else {
                self.init(.tooLong, "The text is too long for the model.")
            }
            return
        }
        message = String(message.trimmed().prefix(500))
        self.init(
            .refused,
            message.isEmpty
                ? "The model server answered with status \(response.status)."
                : "The model server answered with an error: \(message)")
    }

    private init(_ kind: Kind, _ message: String) {
        self.kind = kind
        error = FlowError(message)
    }
}

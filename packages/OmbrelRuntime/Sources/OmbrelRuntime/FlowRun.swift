/// How a turn of a flow ended.
public struct FlowOutcome: Sendable, Equatable {
    /// The name of the End that was reached.
    public var caseName: String
    /// The output of the last agent as text, of an End that carries it.
    public var output: String?

    public init(caseName: String, output: String?) {
        self.caseName = caseName
        self.output = output
    }

    /// The case, and what it carries.
    public var text: String { "." + caseName + (output.map { ": " + $0 } ?? "") }
    /// What the user of a conversation is told: what the case carries, or else its name.
    public var reply: String { output ?? "." + caseName }
}

/// One turn of a flow: the agents that are entered, what they are asked, and what came of it.
/// Generated code calls its functions along the path. Each tells the trace what happens; one that
/// throws, a `FlowError` or a `CancellationError`, has told the error. Not for several tasks at once.
public final class FlowRun {
    public let data: FlowData
    private let model: any LanguageModel
    private let embedder: any QueryEmbedder
    private let context: FlowValue.Members
    private let history: String
    private let trace: TraceHandler
    private let begun: ContinuousClock.Instant

    private var start: FlowValue.Members = [:]
    private var message: String?
    private var steps: [Step] = []
    private var hops = 0
    private var reportedError: (any Error)?

    /// How the turn ended, once it has.
    public private(set) var outcome: FlowOutcome?

    private struct Step {
        var name: String
        var output: String
        /// What gives context fields.
        var members: FlowValue.Members?
        var isAgent = false
        var isRoute = false
    }

    /// - Parameters:
    ///   - context: values of context fields that the caller hands in.
    ///   - history: the turns before this one, of a conversational flow.
    ///   - begun: what the times of the events count from.
    public init(
        data: FlowData, model: any LanguageModel = OnDeviceModel.default,
        embedder: any QueryEmbedder = OnDeviceEmbedder.default, context: FlowValue.Members = [:],
        history: [ConversationTurn] = [], begun: ContinuousClock.Instant = .now,
        trace: @escaping TraceHandler = { _ in }
    ) {
        self.data = data
        self.model = model
        self.embedder = embedder
        self.context = context
        self.history = trimmedHistory(turns: history, maxTokens: data.maxHistoryTokens)
        self.trace = trace
        self.begun = begun
    }

    // MARK: - The path

    /// Begins a turn of a single-shot flow. The members are all Start fields in their order; of an
    /// optional one without a value the value is null.
    public func begin(_ input: FlowValue.Members) {
        start = input
        emit("flowStarted", prompt(ofStart: input.keys))
    }

    /// Begins a turn of a conversational flow.
    public func begin(message: String) {
        self.message = message
        emit("flowStarted", message)
    }

    /// Asks an agent, by its place in the data, for text.
    public func ask(_ agent: Int) async throws -> String {
        let entered = try await enter(agent)
        let answer = try await told(entered.name) {
            try await model.respond(instructions: entered.instructions, prompt: entered.prompt)
        }
        emit("outputReceived", answer)
        steps.append(Step(name: entered.name, output: answer, isAgent: true))
        return answer
    }

    /// Asks an agent for an object of the schema.
    public func ask(_ agent: Int, schema: ValueSchema) async throws -> FlowValue {
        let entered = try await enter(agent)
        let answer = try await told(entered.name) {
            try await respond(to: entered, schema: schema)
        }
        let output = answer.promptText
        emit("outputReceived", output)
        var members: FlowValue.Members?
        if case .object(let own) = answer {
            members = own
        }
        steps.append(Step(name: entered.name, output: output, members: members, isAgent: true))
        return answer
    }

    /// Asks an agent for one of the names. Throws when it answers with another.
    public func ask(_ agent: Int, cases: [String]) async throws -> String {
        let entered = try await enter(agent)
        let answer = try await told(entered.name) {
            try await respond(to: entered, schema: .choice(name: "Output", cases: cases)).text
        }
        emit("outputReceived", answer)
        guard cases.contains(answer) else {
            throw tell(
                FlowError(
                    "“\(entered.name)” answered “\(answer.prefix(500))”, which is none of its "
                        + "cases."),
                node: entered.name)
        }
        emit("routeTaken", answer)
        steps.append(Step(name: entered.name, output: answer, isAgent: true, isRoute: true))
        return answer
    }

    /// Asks an agent for an object of a type.
    public func ask<Output: FlowObject>(_ agent: Int, as type: Output.Type) async throws -> Output {
        let answer = try await ask(agent, schema: Output.schema)
        return try await told(data.agents[agent].name) { try Output(flowValue: answer) }
    }

    /// Asks an agent for one of the cases of a type.
    public func ask<Output: FlowChoice>(_ agent: Int, as type: Output.Type) async throws -> Output {
        let answer = try await ask(agent, cases: Output.allCases.map(\.rawValue))
        return try await told(data.agents[agent].name) {
            try Output(flowValue: .string(answer))
        }
    }

    /// Which way a branch goes on for a property of the nearest agent above. `index` is the place
    /// of what it compares with in the data's `branchValues`.
    public func branch(
        _ index: Int, field: String, _ comparison: BranchOperator,
        _ value: (some FlowConvertible)?
    ) throws -> Bool {
        let text = try element(index, of: data.branchValues, "branch value")
        let decision = comparison.holds(value?.flowValue, against: text)
        let test = "\(field) \(comparison.symbol)" + (comparison == .isEmpty ? "" : " " + text)
        emit("branch", "\(test) -> \(decision)")
        return decision
    }

    /// Calls a tool, by its place in the data, with what the step before it gave. Without `call` it
    /// gives the mock response.
    @discardableResult
    public func tool(
        _ index: Int, _ call: ((String) async throws -> String)? = nil
    ) async throws -> String {
        let tool = try element(index, of: data.tools, "tool")
        let result = try await told(tool.name) {
            try Task.checkCancellation()
            return try await call?(payload) ?? tool.mockResponseJSON
        }
        emit("toolCalled", result, node: tool.name)
        var members: FlowValue.Members?
        if case .object(let own)? = try? FlowValue(json: result) {
            members = own
        }
        steps.append(Step(name: tool.name, output: result, members: members))
        return result
    }

    /// Ends the turn. An End that carries output carries that of the last agent.
    @discardableResult
    public func finish(_ caseName: String, carriesOutput: Bool) -> FlowOutcome {
        let outcome = FlowOutcome(
            caseName: caseName,
            output: carriesOutput ? steps.last { $0.isAgent }?.output ?? "" : nil)
        self.outcome = outcome
        emit("flowFinished", outcome.text)
        return outcome
    }

    /// Tells the trace of an error that did not come from here. An error is told once.
    public func fail(_ error: any Error) {
        _ = tell(error, node: nil)
    }

    /// What a tool is called with: the output of the last step that was not only a route, or the
    /// Start input.
    public var payload: String {
        steps.last { !$0.isRoute }?.output ?? startPrompt(for: start.keys)
    }

    // MARK: - Prompts

    private func startPrompt(for fields: [String]) -> String {
        message ?? prompt(ofStart: fields)
    }

    private func prompt(ofStart fields: [String]) -> String {
        if fields.count == 1 {
            return start[fields[0]]?.text ?? ""
        }
        return FlowValue.Members(fields.map { (key: $0, value: start[$0] ?? .null) }).promptLines
    }

    private func prompt(of agent: AgentData) -> String {
        var seen = Set<String>()
        let declared = agent.input.filter { start[$0] != nil && seen.insert($0).inserted }
        var parts = [startPrompt(for: declared.isEmpty ? start.keys : declared)]
        if parts == [""] {
            parts = []
        }
        parts += steps.map { "\($0.name):\n\($0.output)" }
        return parts.joined(separator: "\n\n")
    }

    private func contextValue(_ field: String) -> String? {
        if field == "history", data.kind == .conversational {
            return history
        }
        for step in steps.reversed() {
            if let value = step.members?[field], !value.isNull {
                return value.text
            }
        }
        return (context[field] ?? start[field])?.text
    }

    // MARK: - Agents

    private struct Entered {
        var name: String
        var instructions: String
        var prompt: String
    }

    private func enter(_ index: Int) async throws -> Entered {
        let agent = try element(index, of: data.agents, "agent")
        guard hops < data.maxHops else {
            throw tell(
                FlowError("The flow stopped after \(data.maxHops) agents (its limit of hops)."),
                node: nil)
        }
        hops += 1
        let prompt = prompt(of: agent)
        emit("nodeEntered", "input: " + prompt, node: agent.name)
        var instructions = filledInstructions(
            agent.instructions, fields: agent.contextFields, value: contextValue)
        if !agent.knowledge.isEmpty {
            let passages = try await told(agent.name) { try await search(agent, for: prompt) }
            emit("ragRetrieved", Self.listing(passages))
            instructions = instructionsWithContext(instructions, passages: passages)
        }
        let whole = instructions + "\n\n" + prompt
        emit("promptBuilt", whole, tokenEstimate: estimateTokens(whole))
        return Entered(name: agent.name, instructions: instructions, prompt: prompt)
    }

    private func search(_ agent: AgentData, for prompt: String) async throws -> [Passage] {
        guard !prompt.trimmed().isEmpty else { return [] }
        var passages: [Passage] = []
        for knowledge in try data.knowledge(of: agent) {
            passages += try await knowledge.search(prompt, embedder: embedder)
        }
        return passages
    }

    private static func listing(_ passages: [Passage]) -> String {
        if passages.isEmpty {
            return "No passage cleared the threshold"
        }
        var lines = [passages.count == 1 ? "1 passage" : "\(passages.count) passages"]
        for (index, passage) in passages.enumerated() {
            lines.append("[\(index + 1)] \(passage.breadcrumb) · \(twoDecimals(passage.score))")
        }
        return lines.joined(separator: "\n")
    }

    private func respond(to entered: Entered, schema: ValueSchema) async throws -> FlowValue {
        if let objection = schema.objection {
            throw FlowError(objection)
        }
        return try await model.respond(
            instructions: entered.instructions, prompt: entered.prompt, schema: schema)
    }

    private func element<Element>(
        _ index: Int, of elements: [Element], _ what: String
    ) throws -> Element {
        guard elements.indices.contains(index) else {
            throw tell(FlowError("The data of the flow has no \(what) \(index)."), node: nil)
        }
        return elements[index]
    }

    // MARK: - The trace

    private func emit(
        _ kind: String, _ detail: String, node: String? = nil, tokenEstimate: Int? = nil
    ) {
        let elapsed = (ContinuousClock.now - begun).components
        let milliseconds = elapsed.seconds * 1000 + elapsed.attoseconds / 1_000_000_000_000_000
        trace(TraceEvent(
            kind: kind, detail: detail, elapsedMS: Int(milliseconds), node: node,
            tokenEstimate: tokenEstimate))
    }

    /// Gives what is to be thrown: a `FlowError`, but a cancellation stays one.
    private func tell(_ error: any Error, node: String?) -> any Error {
        if let reportedError {
            return reportedError
        }
        var flowError = error as? FlowError ?? FlowError(FlowError.message(of: error))
        flowError.node = flowError.node ?? node
        reportedError = error is CancellationError ? error : flowError
        emit("error", flowError.message, node: flowError.node)
        return reportedError ?? flowError
    }

    /// What goes wrong in there is told.
    private func told<Value>(
        _ node: String, _ body: () async throws -> Value
    ) async throws -> Value {
        do {
            return try await body()
        } catch {
            throw tell(error, node: node)
        }
    }
}

extension FlowValue {
    /// How an agent's output reads in a prompt: of an object a line a property.
    var promptText: String {
        if case .object(let members) = self { members.promptLines } else { text }
    }
}

extension FlowValue.Members {
    /// "name: value" lines, without those that have no value.
    var promptLines: String {
        filter { !$0.value.isNull }.map { "\($0.key): \($0.value.text)" }.joined(separator: "\n")
    }
}

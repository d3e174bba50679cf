import OmbrelRuntime

/// Writes the type of one flow.
///
/// The code has what makes the flow's form: the types of what agents take and give, one function
/// an agent, the way from each to the next. What agents are told, what branches compare with and
/// what tools answer is in the data, so that changing it compiles nothing.
final class FlowGenerator {
    /// What an agent gives.
    private enum Output {
        case text
        case record(RecordSource)
        case choice(ChoiceSource)
        /// A choice among nothing, of which there is no type.
        case nothing

        var type: String {
            switch self {
            case .text, .nothing: "String"
            case .record(let record): record.typeName
            case .choice(let choice): choice.typeName
            }
        }
    }

    private struct Agent {
        var index: Int
        var spec: WireAgentSpec
        var function: String
        var output: Output
    }

    /// The agent that branches and ends below it read, and where its answer is.
    private struct Above {
        var agent: Agent
        var variable: String
    }

    /// What a caller can tell beside the input.
    struct ContextField {
        var member: RecordSource.Member
        var type: String
    }

    /// A case of the flow's output.
    private struct Ending {
        var caseName: String
        var payload: String?
        var identifier: String
    }

    private let spec: WireFlowSpec
    private let typeName: String
    private let purpose: FlowSource.Purpose
    private let toolSources: [ToolSource]
    private let knowledgeFolder: String
    private let knowledgeSalt: String

    let input: RecordSource
    let contextFields: [ContextField]
    private(set) var data: FlowData
    private(set) var knowledge: [FlowSource.KnowledgeContent] = []
    private(set) var usedTools: [ToolSource] = []

    /// Everything within the flow's type has a name of its own, local variables too.
    private var scope: NameScope
    private var agents: [Agent] = []
    private var agentIndexes: [String: [Int]] = [:]
    private var endings: [Ending] = []
    private var endingScope = NameScope(reserved: [])
    private var branchCount = 0
    /// Parts of the way that are functions of their own.
    private var parts: [(inout SourceWriter) throws -> Void] = []

    /// Forks within forks beyond this become functions.
    private static let deepestFork = 3

    init(
        _ spec: WireFlowSpec, typeName: String, purpose: FlowSource.Purpose,
        knowledgeFolder: String, knowledgeSalt: String,
        tools: [ToolSource]
    ) throws {
        self.spec = spec
        self.typeName = typeName
        self.purpose = purpose
        toolSources = tools
        self.knowledgeFolder = knowledgeFolder
        self.knowledgeSalt = knowledgeSalt
        scope = NameScope(
            reserved: SwiftNames.inScope.union(ToolSource.reservedIdentifiers)
                .union(tools.map(\.identifier)).union(tools.map(\.protocolName)).union([typeName]))
        input = try RecordSource(
            typeName: "Input", comment: "What the flow starts with.", schemaName: "Input",
            properties: spec.kind == .conversational ? [] : spec.startInput)
        contextFields = try Self.contextFields(of: spec)
        data = FlowData(
            name: spec.name, kind: spec.kind == .conversational ? .conversational : .singleShot,
            maxHops: spec.maxHops, maxHistoryTokens: spec.maxHistoryTokens, agents: [])
        try addAgent(spec.firstAgent)
        try addNodes(spec.routing)
    }

    // MARK: What there is

    /// The transcript of a conversation is made here and not handed in.
    private static func contextFields(of spec: WireFlowSpec) throws -> [ContextField] {
        let fields: [AgentProperty] = spec.contextFields.filter {
            spec.kind != .conversational || $0.name != "history"
        }
        let context = try RecordSource(
            typeName: "Context", comment: "", schemaName: "", properties: fields)
        return context.members.map { member in
            ContextField(member: member, type: contextType(member.property.kind))
        }
    }

    /// A value of the context may come from any agent, so it is held to less than an input is.
    private static func contextType(_ kind: PropertyKind) -> String {
        switch kind {
        case .string, .enumeration: "String"
        case .int: "Int"
        case .double: "Double"
        case .bool: "Bool"
        case .array(let element): "[\(contextType(element))]"
        case .object: "FlowValue"
        }
    }

    private func addNodes(_ routing: WireFlowRouting) throws {
        for destination in routing.destinations {
            try addNodes(destination)
        }
    }

    private func addNodes(_ destination: WireFlowDestination) throws {
        switch destination {
        case .agent(let agent, let next):
            try addAgent(agent)
            try addNodes(next)
        case .branch(let branch):
            try addNodes(branch.then)
            try addNodes(branch.otherwise)
        case .tool(let tool, let next):
            if !usedTools.contains(where: { $0.name == tool.name }),
                let source = toolSources.first(where: { $0.name == tool.name })
            {
                usedTools.append(source)
            }
            try addNodes(next)
        case .end:
            break
        }
    }

    private func addAgent(_ spec: WireAgentSpec) throws {
        guard index(of: spec) == nil else { return }
        let name: String = SwiftIdentifier.upperCamel(spec.name, fallback: "Agent")
        let output: Output
        switch spec.output {
        case .text:
            output = .text
        case .enumeration(let cases):
            output = cases.isEmpty ? .nothing
                : .choice(
                    ChoiceSource(
                        typeName: scope.claim(name + "Output"),
                        comment: "What “\(spec.name)” chooses.", cases: cases))
        case .object(let properties):
            output = .record(
                try RecordSource(
                    typeName: scope.claim(name + "Output"),
                    comment: "What “\(spec.name)” answers.", schemaName: "Output",
                    properties: properties))
        }
        let index: Int = agents.count
        agentIndexes[spec.name, default: []].append(index)
        agents.append(
            Agent(index: index, spec: spec, function: scope.claim("ask" + name), output: output))
        data.agents.append(
            AgentData(
                name: spec.name, instructions: spec.instructions, input: spec.input.map(\.name),
                contextFields: spec.contextFields,
                knowledge: spec.ragAttachments.map { addKnowledge($0) }))
    }

    private func addKnowledge(_ attachment: WireRAGAttachment) -> KnowledgeData {
        let name: String = attachment.chunks.fileName(salt: knowledgeSalt)
        if !knowledge.contains(where: { $0.name == name }) {
            knowledge.append(FlowSource.KnowledgeContent(name: name, chunks: attachment.chunks))
        }
        let kind: IndexKind =
            switch attachment.indexKind {
            case .keyword: .keyword
            case .vector: .vector
            case .hybrid: .hybrid
            }
        return KnowledgeData(
            file: knowledgeFolder + name, indexKind: kind, topK: attachment.topK,
            threshold: attachment.threshold)
    }

    /// An agent that stands at several places of the flow is there once.
    private func index(of spec: WireAgentSpec) -> Int? {
        agentIndexes[spec.name]?.first { agents[$0].spec == spec }
    }

    private func toolIndex(_ tool: WireToolSpec) -> Int {
        // What tools answer in the studio stays in the studio.
        let response: String = if case .studio = purpose { tool.mockResponseJSON } else { "" }
        let entry = ToolData(name: tool.name, mockResponseJSON: response)
        if let index = data.tools.firstIndex(of: entry) {
            return index
        }
        data.tools.append(entry)
        return data.tools.count - 1
    }

    // MARK: The type

    func source() throws -> String {
        // The way tells what else there must be, so it is written first.
        var way = SourceWriter()
        try way.block("private func follow(_ run: FlowRun) async throws -> Output") { source in
            try write(spec.firstAgent, next: spec.routing, depth: 0, to: &source)
        }
        while !parts.isEmpty {
            let part = parts.removeFirst()
            way.line()
            try part(&way)
        }

        var source = SourceWriter()
        source.line("// Made by Ombrel Studio from the flow “\(SwiftLiteral.comment(spec.name))”.")
        source.line()
        switch purpose {
        case .studio: source.line("import OmbrelRuntime")
        case .package(let runtime, _): source.line("import \(runtime)")
        }
        if spec.kind == .conversational {
            source.line("import Synchronization")
        }
        source.line()
        source.line("/// The flow “\(SwiftLiteral.comment(spec.name))”.")
        let head: String = spec.kind == .conversational ? "final class" : "struct"
        source.block("public \(head) \(typeName): Sendable") { source in
            writeTypes(to: &source)
            writeState(to: &source)
            writeEntry(to: &source)
            source.line()
            source.line("// MARK: - The way through the flow")
            source.line()
            source.lines(way)
            source.line()
            source.line("// MARK: - Agents")
            for agent in agents {
                source.line()
                write(agent, to: &source)
            }
        }
        for agent in agents {
            switch agent.output {
            case .text, .nothing: break
            case .record(let record):
                source.line()
                source.block("extension \(typeName)") { record.write(to: &$0) }
            case .choice(let choice):
                source.line()
                source.block("extension \(typeName)") { choice.write(to: &$0) }
            }
        }
        return source.text
    }

    private func writeTypes(to source: inout SourceWriter) {
        if spec.kind == .singleShot {
            input.write(to: &source)
            source.line()
        }
        if !contextFields.isEmpty {
            writeContext(to: &source)
            source.line()
        }
        source.line("/// Where the flow ends.")
        source.block("public enum Output: Sendable, Equatable") { source in
            for ending in endings {
                let payload: String = ending.payload.map { "(\($0))" } ?? ""
                source.line("case \(SwiftIdentifier.escaped(ending.identifier))\(payload)")
            }
        }
        source.line()
        if spec.kind == .conversational {
            source.line("/// The answer to a message.")
            source.block("public struct Reply: Sendable, Equatable") { source in
                source.line("/// What the user is told.")
                source.line("public let text: String")
                source.line("/// Where the flow ended.")
                source.line("public let output: Output")
            }
            source.line()
        }
    }

    private func writeContext(to source: inout SourceWriter) {
        source.line("/// What the application knows beside the input.")
        source.block("public struct Context: Sendable, Equatable") { source in
            for field in contextFields {
                source.comment(field.member.property.description ?? "")
                source.line("public var \(field.member.identifier): \(field.type)?")
            }
            source.line()
            let parameters: String = contextFields.map { field in
                "\(field.member.identifier): \(field.type)? = nil"
            }.joined(separator: ", ")
            source.block("public init(\(parameters))") { source in
                for field in contextFields {
                    let identifier: String = field.member.identifier
                    source.line("self.\(identifier) = \(identifier)")
                }
            }
            source.line()
            source.block("var members: FlowValue.Members") { source in
                source.line("var members: FlowValue.Members = [:]")
                for field in contextFields {
                    let name: String = SwiftLiteral.string(field.member.name)
                    source.line("members[\(name)] = self.\(field.member.identifier)?.flowValue")
                }
                source.line("return members")
            }
        }
    }

    private func writeState(to source: inout SourceWriter) {
        source.line("private let data: FlowData")
        source.line("private let model: any LanguageModel")
        source.line("private let embedder: any QueryEmbedder")
        source.line("private let trace: TraceHandler")
        for tool in usedTools {
            source.line("private let \(SwiftIdentifier.escaped(tool.identifier)): any \(tool.protocolName)")
        }
        if spec.kind == .conversational {
            source.line("private let conversation: Mutex<[ConversationTurn]>")
        }
        source.line()

        var parameters: [String] = usedTools.map { tool in
            "\(SwiftIdentifier.escaped(tool.identifier)): any \(tool.protocolName)"
        }
        parameters += [
            "model: any LanguageModel = OnDeviceModel.default",
            "embedder: any QueryEmbedder = OnDeviceEmbedder.default",
        ]
        if spec.kind == .conversational {
            parameters.append("turns: [ConversationTurn] = []")
        }
        parameters.append("trace: @escaping TraceHandler = { _ in }")

        let access: String
        let data: String
        switch purpose {
        case .studio:
            parameters.insert("data: FlowData", at: 0)
            access = ""
            data = "data"
        case .package(_, let folder):
            if !usedTools.isEmpty {
                source.line("/// The tools are the application's.")
            }
            if spec.kind == .conversational {
                source.line("/// `turns` are those that were had before.")
            }
            access = "public "
            data = "try FlowData.bundled(\(SwiftLiteral.string(folder)))"
        }
        source.line("\(access)init(")
        source.indented { source in
            for (index, parameter) in parameters.enumerated() {
                source.line(parameter + (index + 1 < parameters.count ? "," : ""))
            }
        }
        let effect: String = if case .package = purpose { " throws" } else { "" }
        source.block(")\(effect)") { source in
            source.line("self.data = \(data)")
            source.line("self.model = model")
            source.line("self.embedder = embedder")
            source.line("self.trace = trace")
            for tool in usedTools {
                let identifier: String = SwiftIdentifier.escaped(tool.identifier)
                source.line("self.\(identifier) = \(identifier)")
            }
            if spec.kind == .conversational {
                source.line("conversation = Mutex(turns)")
            }
        }
        source.line()
    }

    private func writeEntry(to source: inout SourceWriter) {
        let context: String = contextFields.isEmpty ? "" : ", context: Context = Context()"
        let members: String = contextFields.isEmpty ? "" : ", context: context.members"
        guard spec.kind == .conversational else {
            source.line("/// Runs the flow once. Throws a `FlowError`.")
            source.block(
                "public func run(_ input: Input\(context)) async throws -> Output"
            ) { source in
                source.line("let run = FlowRun(")
                source.indented {
                    $0.line("data: data, model: model, embedder: embedder\(members), trace: trace)")
                }
                source.line("run.begin(input.members)")
                source.line("return try await follow(run)")
            }
            return
        }
        source.line("/// What was said so far.")
        source.block("public var turns: [ConversationTurn]") { source in
            source.line("conversation.withLock { $0 }")
        }
        source.line()
        source.line("/// Answers a message. Send the next one when this is answered. Throws a")
        source.line("/// `FlowError`, and the message then is no part of the conversation.")
        source.block(
            "public func send(_ message: String\(context)) async throws -> Reply"
        ) { source in
            source.line("let run = FlowRun(")
            source.indented {
                $0.line("data: data, model: model, embedder: embedder\(members),")
                $0.line("history: turns, trace: trace)")
            }
            source.line("run.begin(message: message)")
            source.line("let output = try await follow(run)")
            source.line("let reply = Reply(text: run.outcome?.reply ?? \"\", output: output)")
            source.line(
                "let turn = ConversationTurn(user: message, assistant: reply.text)")
            source.line("conversation.withLock { $0.append(turn) }")
            source.line("return reply")
        }
    }

    private func write(_ agent: Agent, to source: inout SourceWriter) {
        source.line("/// The agent “\(SwiftLiteral.comment(agent.spec.name))”.")
        source.block(
            "private func \(agent.function)(_ run: FlowRun) async throws -> \(agent.output.type)"
        ) { source in
            switch agent.output {
            case .text: source.line("try await run.ask(\(agent.index))")
            case .nothing: source.line("try await run.ask(\(agent.index), cases: [])")
            case .record, .choice:
                source.line("try await run.ask(\(agent.index), as: \(agent.output.type).self)")
            }
        }
    }

    // MARK: The way

    private func write(
        _ spec: WireAgentSpec, next: WireFlowRouting, depth: Int, to source: inout SourceWriter
    ) throws {
        let agent: Agent = agents[index(of: spec)!]
        let call = "try await \(agent.function)(run)"
        let isRead: Bool = next.destinations.contains { reads($0, agent) }
        let variable: String =
            isRead ? scope.claim(SwiftIdentifier.lowerCamel(spec.name, fallback: "answer")) : "_"
        let above = Above(agent: agent, variable: SwiftIdentifier.escaped(variable))

        switch next {
        case .single(let destination):
            source.line(isRead ? "let \(above.variable) = \(call)" : "_ = \(call)")
            try write(destination, above: above, depth: depth, to: &source)
        case .byCase(let ways):
            switch agent.output {
            case .choice(let choice):
                if isRead {
                    source.line("let \(above.variable) = \(call)")
                }
                source.line("switch \(isRead ? above.variable : call) {")
                for (name, identifier) in choice.cases {
                    source.line("case .\(identifier):")
                    let way: WireFlowDestination =
                        ways.first { $0.name == name }?.destination
                        ?? .end(caseName: name, carriesOutput: false)
                    try source.indented { source in
                        try writeFork(way, above: above, depth: depth + 1, to: &source)
                    }
                }
                source.line("}")
            case .nothing:
                source.line("_ = \(call)")
                source.line(
                    "throw run.fail(FlowError(\(SwiftLiteral.string("“\(spec.name)” has no cases."))))")
            case .text, .record:
                throw GeneratorError("“\(spec.name)” has no cases to route by.")
            }
        }
    }

    private func write(
        _ destination: WireFlowDestination, above: Above, depth: Int, to source: inout SourceWriter
    ) throws {
        switch destination {
        case .agent(let spec, let next):
            try write(spec, next: next, depth: depth, to: &source)
        case .branch(let branch):
            let index: Int = branchCount
            branchCount += 1
            data.branchValues.append(branch.value)
            let value: String =
                property(branch.field, of: above.agent).map { "\(above.variable).\($0.identifier)" }
                ?? "FlowValue.null"
            let field: String = SwiftLiteral.string(branch.field)
            if case .package = purpose {
                // In the studio the value changes and the code does not.
                source.line("// \(Self.words(of: branch))")
            }
            let condition =
                "run.branch(\(index), field: \(field), .\(branch.operator.rawValue), \(value))"
            try source.block("if try \(condition)") { source in
                try writeFork(branch.then, above: above, depth: depth + 1, to: &source)
            }
            try write(branch.otherwise, above: above, depth: depth, to: &source)
        case .tool(let tool, let next):
            var arguments = String(toolIndex(tool))
            if let used = usedTools.first(where: { $0.name == tool.name }) {
                arguments += ", \(SwiftIdentifier.escaped(used.identifier)).call"
            }
            source.line("try await run.tool(\(arguments))")
            try write(next, above: above, depth: depth, to: &source)
        case .end(let caseName, let carriesOutput):
            let ending: Ending = ending(
                caseName, payload: carriesOutput ? above.agent.output.type : nil)
            let name: String = SwiftLiteral.string(caseName)
            source.line("run.finish(\(name), carriesOutput: \(carriesOutput))")
            source.line(
                "return .\(ending.identifier)\(carriesOutput ? "(\(above.variable))" : "")")
        }
    }

    /// A branch in plain words.
    private static func words(of branch: WireBranch) -> String {
        let field = "“\(SwiftLiteral.comment(branch.field))”"
        let value = "“\(SwiftLiteral.comment(branch.value))”"
        return switch branch.operator {
        case .equals: "\(field) is \(value)?"
        case .contains: "\(field) contains \(value)?"
        case .isEmpty: "\(field) is empty?"
        case .greaterThan: "\(field) is greater than \(value)?"
        case .lessThan: "\(field) is less than \(value)?"
        }
    }

    /// One side of a fork: in place, or as a function when forks lie too deep in each other.
    private func writeFork(
        _ destination: WireFlowDestination, above: Above, depth: Int, to source: inout SourceWriter
    ) throws {
        if depth <= Self.deepestFork || destination.isEnd {
            return try write(destination, above: above, depth: depth, to: &source)
        }
        let name: String = scope.claim(
            "after" + SwiftIdentifier.upperCamel(above.agent.spec.name, fallback: "Agent"))
        let isRead: Bool = reads(destination, above.agent)
        source.line("return try await \(name)(run\(isRead ? ", " + above.variable : ""))")
        parts.append { [self] source in
            let parameter: String =
                isRead ? ", _ \(above.variable): \(above.agent.output.type)" : ""
            try source.block(
                "private func \(name)(_ run: FlowRun\(parameter)) async throws -> Output"
            ) { source in
                try write(destination, above: above, depth: 0, to: &source)
            }
        }
    }

    /// The case of the flow's output for an End.
    private func ending(_ caseName: String, payload: String?) -> Ending {
        if let known = endings.first(where: { $0.caseName == caseName && $0.payload == payload }) {
            return known
        }
        let identifier = endingScope.claim(SwiftIdentifier.lowerCamel(caseName, fallback: "end"))
        let new = Ending(caseName: caseName, payload: payload, identifier: identifier)
        endings.append(new)
        return new
    }

    /// Whether something reads the agent's answer before the next agent.
    private func reads(_ destination: WireFlowDestination, _ agent: Agent) -> Bool {
        switch destination {
        case .agent: false
        case .branch(let branch):
            property(branch.field, of: agent) != nil || reads(branch.then, agent)
                || reads(branch.otherwise, agent)
        case .tool(_, let next): reads(next, agent)
        case .end(_, let carriesOutput): carriesOutput
        }
    }

    private func property(_ name: String, of agent: Agent) -> RecordSource.Member? {
        guard case .record(let record) = agent.output else { return nil }
        return record.members.first { $0.name == name }
    }
}

extension WireFlowDestination {
    fileprivate var isEnd: Bool {
        if case .end = self { true } else { false }
    }
}

extension WireRAGChunks {
    /// The name of the file with these chunks: the same for the same chunks and salt.
    fileprivate func fileName(salt: String) -> String {
        var hash = ContentHash()
        hash.add(salt)
        hash.add(UnsafeRawBufferPointer(bytes))
        return "\(hash.hexadecimal).knowledge"
    }
}

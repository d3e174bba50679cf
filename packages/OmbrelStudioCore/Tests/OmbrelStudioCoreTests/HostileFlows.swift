import OmbrelRuntime

@testable import OmbrelStudioCore

/// Flows with names and texts that are as bad as they can be: the same ones for the same seed.
struct HostileFlows {
    private var random: SeededGenerator

    init(seed: UInt64) {
        random = SeededGenerator(seed: seed)
    }

    private static let pieces: [String] = [
        "\"", "\\", "\n", "\r\n", "\t", "\\(", "\\(exit(1))", "\"\"\"", "#\"", "\"#", "//", "/*",
        "*/", "`", "$0", ";", "{", "}", "(", ")", ":", "?", "!", "@main", "#if", "#error(\"x\")",
        "\u{0}", "\u{1}", "\u{1B}", "\u{7F}", "\u{85}", "\u{2028}", "\u{2029}", "\u{202E}",
        "\u{2066}", "\u{200B}", "\u{200D}", "\u{FEFF}", "\u{301}", "\u{E000}", "\u{FFFF}",
        "\u{10FFFF}", "👨‍👩‍👧", "🇩🇪", "🎉", "שלום", "مرحبا", "退款", "é", "e\u{301}", "İ", "ß", "ﬁ", "ŉ",
        "self", "Self", "init", "Type", "Protocol", "Any", "super", "class", "struct", "func",
        "default", "case", "in", "is", "as", "nil", "true", "try", "throws", "await", "async",
        "actor", "some", "any", "none", "let", "var", "inout", "operator", "import", "where", "_",
        "String", "Int", "Double", "Bool", "Array", "Optional", "Never", "Error", "Result", "Set",
        "Output", "Input", "Context", "Reply", "FlowRun", "FlowValue", "FlowObject", "ValueSchema",
        "FlowData", "LanguageModel", "ask", "Agent", "agent", "run", "data", "model", "embedder",
        "trace", "follow", "send", "turns", "message", "conversation", "input", "context", "tools",
        "rawValue", "allCases", "hash", "hashValue", "schema", "flowValue", "members", "property",
        "description", "begin", "branch", "tool", "finish", "after", "afterA", "askA", "a", "A",
        "a2", "a ", "a_", "-a", "1", "2nd", "%s", "${x}", "{{context.a}}", "../../a", "NaN",
        String(repeating: "long", count: 80),
    ]

    private mutating func pick<Value>(_ values: [Value]) -> Value {
        values[Int.random(in: 0..<values.count, using: &random)]
    }

    private mutating func chance(_ percent: Int) -> Bool {
        Int.random(in: 0..<100, using: &random) < percent
    }

    private mutating func text() -> String {
        var text = ""
        for _ in 0..<Int.random(in: 0...3, using: &random) {
            text += pick(Self.pieces)
        }
        return text
    }

    /// Names repeat often, so that they collide.
    private mutating func name() -> String {
        chance(30) ? pick(["a", "A", "", "self", "String", "a ", "é", "e\u{301}", "退款"]) : text()
    }

    private mutating func list<Value>(
        _ counts: ClosedRange<Int>, _ element: (inout Self) -> Value
    ) -> [Value] {
        (0..<Int.random(in: counts, using: &random)).map { _ in element(&self) }
    }

    private mutating func cases(_ counts: ClosedRange<Int>) -> [FlowValue] {
        list(counts) { flows in
            Wire.one(flows.name(), description: flows.chance(30) ? flows.text() : nil)
        }
    }

    private mutating func kind(depth: Int) -> FlowValue {
        switch Int.random(in: 0..<(depth > 0 ? 8 : 4), using: &random) {
        case 0: ["string": [:]]
        case 1: Wire.int
        case 2: Wire.double
        case 3: Wire.bool
        case 4: Wire.object(properties(0...3, depth: depth - 1))
        case 5: Wire.array(kind(depth: depth - 1))
        default: Wire.enumeration(cases(0...4))
        }
    }

    private mutating func properties(_ counts: ClosedRange<Int>, depth: Int) -> [FlowValue] {
        list(counts) { flows in
            Wire.property(
                flows.name(), flows.kind(depth: depth), isOptional: flows.chance(30),
                description: flows.chance(40) ? flows.text() : nil)
        }
    }

    private mutating func agent(_ output: FlowValue) -> FlowValue {
        Wire.agent(
            name(), text(), input: properties(0...2, depth: 1), output: output,
            contextFields: list(0...2) { $0.name() },
            knowledge: chance(15) ? [Wire.knowledge(list(0...2) { Wire.chunk($0.text()) })] : [])
    }

    /// An agent and what follows it.
    private mutating func part(depth: Int) -> (agent: FlowValue, routing: FlowValue) {
        switch Int.random(in: 0..<3, using: &random) {
        case 0:
            return (
                agent(["text": [:]]), Wire.single(destination(depth: depth - 1, properties: []))
            )
        case 1:
            let properties: [FlowValue] = properties(0...5, depth: 2)
            return (
                agent(Wire.object(properties)),
                Wire.single(destination(depth: depth - 1, properties: properties))
            )
        default:
            let cases: [FlowValue] = cases(1...4)
            let ways: [(String, FlowValue)] = cases.map { one in
                (one["name"]!.text, destination(depth: depth - 1, properties: []))
            }
            return (agent(Wire.enumeration(cases)), Wire.byCase(ways))
        }
    }

    private mutating func destination(depth: Int, properties: [FlowValue]) -> FlowValue {
        guard depth > 0 else { return Wire.end(name(), carriesOutput: chance(50)) }
        switch Int.random(in: 0..<6, using: &random) {
        case 0: return Wire.end(name(), carriesOutput: chance(50))
        case 1: return Wire.tool(name(), text(), destination(depth: depth, properties: properties))
        case 2, 3:
            let field: String =
                properties.isEmpty || chance(10) ? name() : pick(properties)["name"]!.text
            return Wire.branch(
                field, pick(["equals", "contains", "isEmpty", "greaterThan", "lessThan"]),
                chance(50) ? "7" : text(),
                then: destination(depth: depth - 1, properties: properties),
                otherwise: destination(depth: depth - 1, properties: properties))
        default:
            let next: (agent: FlowValue, routing: FlowValue) = part(depth: depth)
            return Wire.next(next.agent, next.routing)
        }
    }

    mutating func flow(kind: String) -> FlowValue {
        let first: (agent: FlowValue, routing: FlowValue) = part(depth: 7)
        return Wire.flow(
            name(), kind: kind, startInput: properties(0...4, depth: 2),
            contextFields: properties(0...3, depth: 1), first: first.agent, first.routing)
    }

    // MARK: What the model answers

    static let textAnswer = "An \"answer\" with \\(nothing)\nand {{context.a}}"

    /// The last of the choices, and numbers that branches like.
    static func answer(to schema: ValueSchema) -> FlowValue {
        switch schema {
        case .string: .string(textAnswer)
        case .int: .int(7)
        case .double: .double(7.5)
        case .bool: .bool(true)
        case .array(let element): .array([answer(to: element)])
        case .choice(_, let cases): .string(cases.last ?? "")
        case .object(_, let properties):
            .object(
                FlowValue.Members(
                    properties.map { (key: $0.name, value: answer(to: $0.schema)) }))
        }
    }

    /// The same for a schema as a server gets it.
    static func answer(jsonSchema schema: FlowValue) -> FlowValue {
        if case .array(let names)? = schema["enum"] {
            return names.last { !$0.isNull } ?? .null
        }
        if case .array(let ways)? = schema["anyOf"] {
            return answer(jsonSchema: ways[0])
        }
        switch schema["type"]?.text {
        case "string": return .string(textAnswer)
        case "integer": return .int(7)
        case "number": return .double(7.5)
        case "boolean": return .bool(true)
        case "array": return .array([answer(jsonSchema: schema["items"] ?? .null)])
        default:
            guard case .object(let properties)? = schema["properties"] else { return [:] }
            return .object(
                FlowValue.Members(
                    properties.map { (key: $0.key, value: answer(jsonSchema: $0.value)) }))
        }
    }

    /// An input that the flow takes, as the studio sends it.
    static func input(of spec: WireFlowSpec) -> FlowValue {
        .object(
            FlowValue.Members(
                spec.startInput.map { property in
                    let value: FlowValue = answer(to: ExpectedPath.schema(of: property.kind))
                    if case .object = value { return (property.name, .string(value.json)) }
                    if case .array = value { return (property.name, .string(value.json)) }
                    return (property.name, value)
                }))
    }
}

/// What of an event of the trace a flow's form decides.
struct TraceStep: Equatable, CustomStringConvertible {
    var kind: String
    var text: String

    var description: String { "\(kind) \(text.debugDescription)" }

    init(_ kind: String, _ text: String = "") {
        self.kind = kind
        self.text = text
    }

    init(json: String) throws {
        let event = try FlowValue(json: json)
        kind = event["kind"]?.text ?? ""
        switch kind {
        case "nodeEntered", "toolCalled": text = event["node"]?.text ?? ""
        case "routeTaken", "branch", "flowFinished", "error": text = event["detail"]?.text ?? ""
        default: text = ""
        }
    }

    static func == (one: TraceStep, other: TraceStep) -> Bool {
        // Byte for byte: text that only looks the same has not come through.
        one.kind == other.kind && one.text.utf8.elementsEqual(other.text.utf8)
    }
}

/// The way through a flow when the model answers as `HostileFlows` does, found by walking the tree.
struct ExpectedPath {
    private(set) var steps: [TraceStep] = []

    init(_ spec: WireFlowSpec) {
        steps.append(TraceStep("flowStarted"))
        walk(spec.firstAgent, spec.routing)
    }

    private mutating func walk(_ agent: WireAgentSpec, _ routing: WireFlowRouting) {
        steps.append(TraceStep("nodeEntered", agent.name))
        if !agent.ragAttachments.isEmpty {
            steps.append(TraceStep("ragRetrieved"))
        }
        steps += [TraceStep("promptBuilt"), TraceStep("outputReceived")]
        switch (agent.output, routing) {
        case (.enumeration(let cases), .byCase(let ways)):
            let schema: ValueSchema = Self.schema(of: .enumeration(cases))
            let name: String = HostileFlows.answer(to: schema).text
            steps.append(TraceStep("routeTaken", name))
            walk(ways.first { $0.name == name }!.destination, below: .string(name))
        case (.object(let properties), .single(let destination)):
            let answer: FlowValue = HostileFlows.answer(to: Self.schema(of: .object(properties)))
            walk(destination, below: answer)
        case (_, .single(let destination)):
            walk(destination, below: .string(HostileFlows.textAnswer))
        default:
            break
        }
    }

    private mutating func walk(_ destination: WireFlowDestination, below answer: FlowValue) {
        switch destination {
        case .agent(let agent, let next):
            walk(agent, next)
        case .tool(let tool, let next):
            steps.append(TraceStep("toolCalled", tool.name))
            walk(next, below: answer)
        case .branch(let branch):
            let comparison = BranchOperator(rawValue: branch.operator.rawValue)!
            let decision: Bool = comparison.holds(answer[branch.field], against: branch.value)
            let compared: String = comparison == .isEmpty ? "" : " " + branch.value
            steps.append(
                TraceStep("branch", "\(branch.field) \(comparison.symbol)\(compared) -> \(decision)"))
            walk(decision ? branch.then : branch.otherwise, below: answer)
        case .end(let caseName, let carriesOutput):
            var text = ".\(caseName)"
            if carriesOutput {
                text += ": " + Self.text(answer)
            }
            steps.append(TraceStep("flowFinished", text))
        }
    }

    /// How an answer reads.
    private static func text(_ answer: FlowValue) -> String {
        guard case .object(let members) = answer else { return answer.text }
        return members.map { "\($0.key): \($0.value.text)" }.joined(separator: "\n")
    }

    /// The schema of a field; of names that are there twice the first counts.
    static func schema(of kind: PropertyKind) -> ValueSchema {
        switch kind {
        case .string: return .string
        case .int: return .int
        case .double: return .double
        case .bool: return .bool
        case .array(let element): return .array(schema(of: element))
        case .enumeration(let cases):
            var seen = Set<String>()
            let names: [String] = cases.map(\.name).filter { seen.insert($0).inserted }
            return names.isEmpty ? .string : .choice(name: "", cases: names)
        case .object(let properties):
            var seen = Set<String>()
            let distinct: [AgentProperty] = properties.filter { seen.insert($0.name).inserted }
            return .object(
                name: "",
                properties: distinct.map {
                    ValueSchema.Property(
                        name: $0.name, schema: schema(of: $0.kind), isOptional: $0.isOptional)
                })
        }
    }
}

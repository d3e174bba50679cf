import Foundation
import Synchronization
import Testing

@testable import OmbrelRuntime

/// Answers what it is told to, in order, and remembers what it was asked.
private final class ScriptedModel: LanguageModel {
    struct Asked: Equatable {
        var instructions: String
        var prompt: String
        var schema: ValueSchema?
    }

    private let answers: Mutex<[Result<FlowValue, FlowError>]>
    private let log = Mutex<[Asked]>([])

    init(_ answers: [Result<FlowValue, FlowError>]) {
        self.answers = Mutex(answers)
    }
    convenience init(_ answers: FlowValue...) {
        self.init(answers.map { .success($0) })
    }

    var asked: [Asked] { log.withLock { $0 } }

    private func next(_ asked: Asked) throws -> FlowValue {
        log.withLock { $0.append(asked) }
        return try answers.withLock { try $0.removeFirst().get() }
    }

    func respond(instructions: String, prompt: String) async throws -> String {
        try next(Asked(instructions: instructions, prompt: prompt)).text
    }

    func respond(instructions: String, prompt: String, schema: ValueSchema) async throws
        -> FlowValue
    {
        try next(Asked(instructions: instructions, prompt: prompt, schema: schema))
    }
}

private struct NoEmbedder: QueryEmbedder {
    func vector(for text: String, inLanguageOf sample: String) async throws -> [Double]? {
        throw FlowError("No embedding here.")
    }
}

private final class Trace: Sendable {
    private let log = Mutex<[TraceEvent]>([])
    var events: [TraceEvent] { log.withLock { $0 } }
    var lines: [String] {
        events.map { "\($0.kind)\($0.node.map { "(\($0))" } ?? ""): \($0.detail)" }
    }
    var handler: TraceHandler { { event in self.log.withLock { $0.append(event) } } }
}

private enum Route: String, FlowChoice {
    case refund, other
}

private struct Ticket: FlowObject {
    var title: String
    var urgent: Bool
    var note: String?

    static let schema = ValueSchema.object(
        name: "Output",
        properties: [
            .init(name: "title", schema: .string), .init(name: "urgent", schema: .bool),
            .init(name: "note", schema: .string, isOptional: true),
        ])

    init(flowValue: FlowValue) throws {
        title = try flowValue.property("title")
        urgent = try flowValue.property("urgent")
        note = try flowValue.property("note")
    }
    var flowValue: FlowValue {
        .object(["title": title.flowValue, "urgent": urgent.flowValue, "note": note.flowValue])
    }
}

@Suite struct FlowRunTests {
    private let trace = Trace()

    private func data(
        _ agents: [AgentData], kind: FlowKind = .singleShot, maxHops: Int = 8,
        tools: [ToolData] = [], branchValues: [String] = [], directory: URL? = nil
    ) -> FlowData {
        FlowData(
            name: "Desk", kind: kind, maxHops: maxHops, maxHistoryTokens: 100, agents: agents,
            tools: tools, branchValues: branchValues, directory: directory)
    }

    private func run(
        _ data: FlowData, _ model: ScriptedModel, context: FlowValue.Members = [:],
        history: [ConversationTurn] = []
    ) -> FlowRun {
        FlowRun(
            data: data, model: model, embedder: NoEmbedder(), context: context, history: history,
            trace: trace.handler)
    }

    private func kinds() -> [String] { trace.events.map(\.kind) }

    @Test func tellsEveryStepInItsOrder() async throws {
        let model = ScriptedModel(
            "refund", .object(["title": "Late", "urgent": .bool(true)]), "Sorry.")
        let run = run(
            data(
                [
                    AgentData(name: "Triage", instructions: "Sort."),
                    AgentData(name: "Reader", instructions: "Read."),
                    AgentData(name: "Writer", instructions: "Write."),
                ],
                tools: [ToolData(name: "Orders", mockResponseJSON: "{\"status\":\"sent\"}")],
                branchValues: ["true"]), model)
        run.begin(["question": "Where is it?"])
        let route = try await run.ask(0, as: Route.self)
        #expect(route == .refund)
        let ticket = try await run.ask(1, as: Ticket.self)
        #expect(ticket.note == nil)
        #expect(try run.branch(0, field: "urgent", .equals, ticket.urgent))
        let result = try await run.tool(0)
        #expect(result == "{\"status\":\"sent\"}")
        let text = try await run.ask(2)
        #expect(text == "Sorry.")
        let outcome = run.finish("done", carriesOutput: true)
        #expect(outcome == FlowOutcome(caseName: "done", output: "Sorry."))
        #expect(outcome.text == ".done: Sorry.")

        let second = "Where is it?\n\nTriage:\nrefund"
        let third =
            second + "\n\nReader:\ntitle: Late\nurgent: true\n\nOrders:\n{\"status\":\"sent\"}"
        #expect(
            trace.lines == [
                "flowStarted: Where is it?",
                "nodeEntered(Triage): input: Where is it?",
                "promptBuilt: Sort.\n\nWhere is it?",
                "outputReceived: refund",
                "routeTaken: refund",
                "nodeEntered(Reader): input: \(second)",
                "promptBuilt: Read.\n\n\(second)",
                "outputReceived: title: Late\nurgent: true",
                "branch: urgent = true -> true",
                "toolCalled(Orders): {\"status\":\"sent\"}",
                "nodeEntered(Writer): input: \(third)",
                "promptBuilt: Write.\n\n\(third)",
                "outputReceived: Sorry.",
                "flowFinished: .done: Sorry.",
            ])
        for event in trace.events {
            #expect(
                event.tokenEstimate
                    == (event.kind == "promptBuilt" ? estimateTokens(event.detail) : nil))
            #expect(event.elapsedMS >= 0)
        }
        #expect(
            model.asked.map(\.schema) == [
                .choice(name: "Output", cases: ["refund", "other"]), Ticket.schema, nil,
            ])
        #expect(model.asked.last?.prompt == third)
    }

    @Test func eventsAreLinesOfJSON() throws {
        let event = TraceEvent(
            kind: "nodeEntered", detail: "a\n\"b\"\u{2028}", elapsedMS: 3, node: "N",
            tokenEstimate: 5)
        #expect(
            event.jsonLine
                == "{\"kind\":\"nodeEntered\",\"detail\":\"a\\n\\\"b\\\"\u{2028}\",\"elapsedMS\":3,"
                + "\"node\":\"N\",\"tokenEstimate\":5}")
        #expect(
            TraceEvent(kind: "error", detail: "", elapsedMS: 0).jsonLine
                == "{\"kind\":\"error\",\"detail\":\"\",\"elapsedMS\":0}")
    }

    @Test func agentsReadTheStartFieldsThatTheyDeclare() async throws {
        let model = ScriptedModel("1", "2", "3", "4")
        let run = run(
            data([
                AgentData(name: "A", instructions: "", input: ["b", "a"]),
                AgentData(name: "B", instructions: "", input: ["b"]),
                AgentData(name: "C", instructions: "", input: ["other"]),
                AgentData(name: "D", instructions: ""),
            ]), model)
        run.begin(["a": "x", "b": .array([1, 2]), "c": .null])
        for agent in 0..<4 {
            _ = try await run.ask(agent)
        }
        #expect(
            model.asked.map(\.prompt) == [
                "b: [1,2]\na: x",
                "[1,2]\n\nA:\n1",
                "a: x\nb: [1,2]\n\nA:\n1\n\nB:\n2",
                "a: x\nb: [1,2]\n\nA:\n1\n\nB:\n2\n\nC:\n3",
            ])
        #expect(trace.lines.first == "flowStarted: a: x\nb: [1,2]")
    }

    @Test func aMessageIsTheStartOfAConversation() async throws {
        let model = ScriptedModel("Hello.")
        let run = run(
            data(
                [
                    AgentData(
                        name: "A", instructions: "Before:\n{{context.history}}", input: ["message"],
                        contextFields: ["history"])
                ], kind: .conversational), model,
            history: [ConversationTurn(user: "One", assistant: "1")])
        run.begin(message: "Hi")
        _ = try await run.ask(0)
        #expect(
            model.asked == [
                .init(instructions: "Before:\nUser: One\nAssistant: 1", prompt: "Hi")
            ])
    }

    @Test func aStartWithoutFieldsGivesAnEmptyPrompt() async throws {
        let model = ScriptedModel("1", "2")
        let run = run(
            data([AgentData(name: "A", instructions: ""), AgentData(name: "B", instructions: "")]),
            model)
        run.begin([:])
        _ = try await run.ask(0)
        _ = try await run.ask(1)
        #expect(model.asked.map(\.prompt) == ["", "A:\n1"])
    }

    @Test func contextComesFromTheNearestStep() async throws {
        let model = ScriptedModel(
            .object(["title": "T", "urgent": .bool(false)]), "1", "2")
        let fields = ["title", "status", "given", "typed"]
        let agent = AgentData(
            name: "W", instructions: "{{context.title}}|{{context.status}}|{{context.given}}|{{context.typed}}",
            contextFields: fields)
        let run = run(
            data(
                [AgentData(name: "R", instructions: ""), agent],
                tools: [ToolData(name: "Tool", mockResponseJSON: "{\"title\":\"new\",\"status\":2}")]),
            model, context: ["given": "g", "title": "old"])
        run.begin(["typed": "t", "given": "start"])
        _ = try await run.ask(0, as: Ticket.self)
        _ = try await run.ask(1)
        try await run.tool(0)
        _ = try await run.ask(1)
        #expect(model.asked.dropFirst().map(\.instructions) == ["T||g|t", "new|2|g|t"])
    }

    @Test func toolsAreCalledWithTheOutputBefore() async throws {
        let model = ScriptedModel("refund", "Text.")
        let run = run(
            data(
                [AgentData(name: "A", instructions: ""), AgentData(name: "B", instructions: "")],
                tools: [ToolData(name: "T", mockResponseJSON: "mock, no JSON")]), model)
        run.begin(["a": "x", "b": "y"])
        var payloads: [String] = []
        func called(_ payload: String) -> String {
            payloads.append(payload)
            return "result \(payloads.count)"
        }
        try await run.tool(0) { called($0) }
        _ = try await run.ask(0, as: Route.self)
        try await run.tool(0) { called($0) }
        _ = try await run.ask(1)
        try await run.tool(0) { called($0) }
        #expect(payloads == ["a: x\nb: y", "result 1", "Text."])
        let result = try await run.tool(0)
        #expect(result == "mock, no JSON")
    }

    @Test func anEndCarriesTheOutputOfTheLastAgent() async throws {
        let model = ScriptedModel("refund")
        let run = run(
            data(
                [AgentData(name: "A", instructions: "")],
                tools: [ToolData(name: "T", mockResponseJSON: "{}")]), model)
        run.begin(["a": "x"])
        _ = try await run.ask(0, as: Route.self)
        try await run.tool(0)
        #expect(run.finish("end", carriesOutput: true).text == ".end: refund")
        #expect(run.finish("end", carriesOutput: false).text == ".end")
    }

    @Test func oneAgentTooManyStopsTheFlow() async throws {
        let run = run(
            data([AgentData(name: "A", instructions: "")], maxHops: 2), ScriptedModel("1", "2", "3"))
        run.begin(["a": "x"])
        _ = try await run.ask(0)
        _ = try await run.ask(0)
        let error = await #expect(throws: FlowError.self) { try await run.ask(0) }
        #expect(error?.message == "The flow stopped after 2 agents (its limit of hops).")
        #expect(trace.lines.last == "error: The flow stopped after 2 agents (its limit of hops).")
        #expect(kinds().filter { $0 == "nodeEntered" }.count == 2)
    }

    @Test func anAnswerThatIsNoCaseIsAnError() async throws {
        let run = run(data([AgentData(name: "A", instructions: "")]), ScriptedModel("Refund"))
        run.begin(["a": "x"])
        let error = await #expect(throws: FlowError.self) { try await run.ask(0, as: Route.self) }
        #expect(error?.message == "“A” answered “Refund”, which is none of its cases.")
        #expect(error?.node == "A")
        #expect(
            trace.lines.suffix(2) == [
                "outputReceived: Refund",
                "error(A): “A” answered “Refund”, which is none of its cases.",
            ])
    }

    @Test func aWrongPropertyIsAnErrorOfItsAgent() async throws {
        let run = run(
            data([AgentData(name: "A", instructions: "")]),
            ScriptedModel(.object(["title": "x", "urgent": "yes"])))
        run.begin(["a": "x"])
        let error = await #expect(throws: FlowError.self) { try await run.ask(0, as: Ticket.self) }
        #expect(
            error == FlowError("The property “urgent” is wrong: It is not true or false.", node: "A"))
        #expect(kinds().last == "error")
    }

    @Test func aFailingModelIsToldOnce() async throws {
        let model = ScriptedModel([.failure(FlowError("The model sleeps."))])
        let run = run(data([AgentData(name: "A", instructions: "")]), model)
        run.begin(["a": "x"])
        let error = await #expect(throws: FlowError.self) { try await run.ask(0) }
        run.fail(error!)
        run.fail(FlowError("Something else."))
        #expect(kinds() == ["flowStarted", "nodeEntered", "promptBuilt", "error"])
        #expect(trace.lines.last == "error(A): The model sleeps.")
    }

    @Test func aFailingToolIsToldWithItsName() async throws {
        struct Lost: Error, LocalizedError {
            var errorDescription: String? { "The line is dead." }
        }
        let run = run(
            data([], tools: [ToolData(name: "T", mockResponseJSON: "{}")]), ScriptedModel())
        run.begin(["a": "x"])
        let error = await #expect(throws: FlowError.self) { try await run.tool(0) { _ in throw Lost() } }
        #expect(error == FlowError("The line is dead.", node: "T"))
        #expect(trace.lines.last == "error(T): The line is dead.")
    }

    @Test func dataThatLacksAnAgentIsAnError() async throws {
        let run = run(data([]), ScriptedModel())
        run.begin(["a": "x"])
        await #expect(throws: FlowError("The data of the flow has no agent 0.")) { try await run.ask(0) }
        #expect(throws: FlowError.self) { try run.branch(3, field: "a", .equals, "x") }
        await #expect(throws: FlowError.self) { try await run.tool(-1) }
    }

    @Test func aCancelledRunStaysACancellation() async throws {
        let model = ScriptedModel("1")
        let flow = data([], tools: [ToolData(name: "T", mockResponseJSON: "{}")])
        let trace = trace
        let task = Task {
            try await Task.sleep(for: .seconds(60))
            _ = model
        }
        task.cancel()
        await #expect(throws: CancellationError.self) {
            let run = FlowRun(data: flow, model: model, trace: trace.handler)
            run.begin(["a": "x"])
            try await run.tool(0) { _ in
                try await task.value
                return ""
            }
        }
        #expect(trace.lines.last == "error(T): The run was cancelled.")
    }

    @Test func knowledgeIsSearchedWithThePromptAndNumberedOn() async throws {
        let folder = FileManager.default.temporaryDirectory.appending(path: UUID().uuidString)
        try FileManager.default.createDirectory(at: folder, withIntermediateDirectories: true)
        defer { try? FileManager.default.removeItem(at: folder) }
        func chunk(_ text: String, _ breadcrumb: String) -> RAGChunk {
            RAGChunk(id: UUID(), breadcrumb: breadcrumb, searchText: text, packText: "<\(text)>")
        }
        try KnowledgeFile.write(
            [chunk("red pump", "P > 1"), chunk("green pump pump", "P > 2"), chunk("hose", "P > 3")],
            to: folder.appending(path: "one"))
        try KnowledgeFile.write([chunk("pump oil", "Q")], to: folder.appending(path: "two"))
        let agent = AgentData(
            name: "A", instructions: "Help.",
            knowledge: [
                KnowledgeData(file: "one", indexKind: .keyword, topK: 5, threshold: 0),
                KnowledgeData(file: "two", indexKind: .hybrid, topK: 0, threshold: 1),
                KnowledgeData(file: "two", indexKind: .keyword, topK: 1, threshold: 1.01),
            ])
        let model = ScriptedModel("1", "2", "3")
        let flow = data([agent], directory: folder)
        var flowRun = run(flow, model)
        flowRun.begin(["q": "Which PUMP?"])
        _ = try await flowRun.ask(0)
        let score = twoDecimals(
            Knowledge(
                chunks: [chunk("red pump", ""), chunk("green pump pump", ""), chunk("hose", "")],
                indexKind: .keyword, topK: 5, threshold: 0
            ).search("Which PUMP?", vector: nil)[1].score)
        #expect(
            trace.lines[2]
                == "ragRetrieved: 3 passages\n[1] P > 2 · 1.00\n[2] P > 1 · \(score)\n[3] Q · 1.00")
        #expect(
            model.asked[0]
                == .init(
                    instructions: "Help.\n\nContext:\n[1] P > 2: <green pump pump>\n\n"
                        + "[2] P > 1: <red pump>\n\n[3] Q: <pump oil>", prompt: "Which PUMP?"))
        #expect(trace.lines[3] == "promptBuilt: \(model.asked[0].instructions)\n\nWhich PUMP?")

        flowRun = run(flow, model)
        flowRun.begin(["q": "zebra"])
        _ = try await flowRun.ask(0)
        #expect(model.asked[1].instructions == "Help.")
        #expect(trace.lines.contains("ragRetrieved: No passage cleared the threshold"))

        flowRun = run(flow, model)
        flowRun.begin(["q": "hose"])
        _ = try await flowRun.ask(0)
        #expect(trace.lines.contains("ragRetrieved: 1 passage\n[1] P > 3 · 1.00"))
    }

    @Test func missingKnowledgeIsAnErrorOfTheAgent() async throws {
        let agent = AgentData(
            name: "A", instructions: "",
            knowledge: [KnowledgeData(file: "none", indexKind: .keyword, topK: 1, threshold: 0)])
        let run = run(
            data([agent], directory: URL(filePath: "/nowhere")), ScriptedModel("1"))
        run.begin(["q": "x"])
        let error = await #expect(throws: FlowError.self) { try await run.ask(0) }
        #expect(error?.message == "/nowhere/none can't be read: No such file or directory.")
        #expect(error?.node == "A")
    }

    @Test func flowDataIsReadFromItsFolder() throws {
        let folder = FileManager.default.temporaryDirectory.appending(path: UUID().uuidString)
        try FileManager.default.createDirectory(at: folder, withIntermediateDirectories: true)
        defer { try? FileManager.default.removeItem(at: folder) }
        let url = folder.appending(path: "flow.json")
        let written = data(
            [
                AgentData(
                    name: "é\"\n\0", instructions: "/", input: ["a"], contextFields: ["b"],
                    knowledge: [
                        KnowledgeData(file: "k", indexKind: .hybrid, topK: 3, threshold: 0.25)
                    ])
            ], kind: .conversational, tools: [ToolData(name: "T", mockResponseJSON: "{")],
            branchValues: ["v"])
        let bytes = try written.encoded()
        #expect(try written.encoded() == bytes)
        try bytes.write(to: url)
        let read = try FlowData(directory: folder)
        #expect(read.agents == written.agents)
        #expect(read.tools == written.tools)
        #expect(read.branchValues == ["v"])
        #expect(read.kind == .conversational)
        try Data("{\"name\":1}".utf8).write(to: url)
        #expect(throws: FlowError.self) { try FlowData(directory: folder) }
        try FileManager.default.removeItem(at: url)
        #expect(throws: FlowError.self) { try FlowData(directory: folder) }
    }
}

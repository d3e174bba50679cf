import Foundation
import OmbrelRuntime
import Testing

@testable import OmbrelStudioCore

@Suite struct WireTests {
    private func property(_ kind: FlowValue) throws -> AgentProperty {
        try Wire.decoded(
            Wire.flow(
                "f", startInput: [Wire.property("p", kind)], first: Wire.agent("a"),
                Wire.single(Wire.end("e")))
        ).startInput[0]
    }

    /// The request with one piece of its text replaced, and the error that it is refused with.
    private func error(replacing piece: String, with other: String) -> WireError? {
        let text: String = Wire.runRequest(Samples.triage).json
        #expect(text.contains(piece))
        do {
            _ = try WireFlowRunRequest(json: text.replacingOccurrences(of: piece, with: other))
            return nil
        } catch {
            return error as? WireError
        }
    }

    @Test func everyPartOfARequestArrives() throws {
        let request = try WireFlowRunRequest(
            json: Wire.runRequest(Samples.triage, packageDirectory: "/a b", input: "{\"x\":1}").json)
        #expect(request.packageDirectory == "/a b")
        #expect(request.runtimePath == Folders.runtime)
        #expect(request.inputJSON == "{\"x\":1}")
        let flow: WireFlowSpec = request.flow
        #expect(flow.name == "Support Triage")
        #expect(flow.kind == .singleShot)
        #expect(flow.maxHops == 20)
        #expect(flow.maxHistoryTokens == 1000)
        #expect(flow.startInput.map(\.name) == ["question", "tags"])
        #expect(flow.startInput[0].description == "What the customer wants")
        #expect(flow.startInput[1].description == nil)
        #expect(flow.startInput[1].kind == .array(.string))
        #expect(flow.contextFields.map(\.name) == ["tone"])
        #expect(flow.firstAgent.instructions == "Sort the question.")
        #expect(flow.firstAgent.input.map(\.name) == ["question"])
        guard case .byCase(let ways) = flow.routing else {
            Issue.record("The routing is none by case.")
            return
        }
        #expect(ways.map(\.name) == ["refund", "in progress", "default"])
        guard case .agent(let refund, .single(.branch(let branch))) = ways[0].destination else {
            Issue.record("No agent with a branch behind it.")
            return
        }
        #expect(refund.contextFields == ["tone"])
        #expect(branch.field == "amount")
        #expect(branch.operator == .greaterThan)
        #expect(branch.value == "100")
        guard case .tool(let tool, .agent(_, .single(.end(let name, let carries)))) = branch.then
        else {
            Issue.record("No tool with an agent behind it.")
            return
        }
        #expect(tool.name == "lookupOrder")
        #expect(tool.mockResponseJSON == #"{"status":"shipped"}"#)
        #expect(name == "escalated")
        #expect(carries)
    }

    @Test func everyKindOfPropertyArrives() throws {
        #expect(try property(["string": [:]]).kind == .string)
        #expect(try property(Wire.int).kind == .int)
        #expect(try property(Wire.double).kind == .double)
        #expect(try property(Wire.bool).kind == .bool)
        guard case .object(let fields) = try property(Wire.object([Wire.property("x")])).kind else {
            Issue.record("No object.")
            return
        }
        #expect(fields.map(\.name) == ["x"])
        guard case .array(.array(.enumeration(let cases))) = try property(
            Wire.array(Wire.array(Wire.enumeration("y")))).kind
        else {
            Issue.record("No array of arrays of an enumeration.")
            return
        }
        #expect(cases.map(\.name) == ["y"])
    }

    @Test func conversationalFlowsAndEmptyRoutings() throws {
        #expect(try Wire.decoded(Samples.chat).kind == .conversational)
        let flow: WireFlowSpec = try Wire.decoded(
            Wire.flow("f", first: Wire.agent("a", output: Wire.enumeration()), Wire.byCase([])))
        guard case .byCase(let ways) = flow.routing else {
            Issue.record("The routing is none by case.")
            return
        }
        #expect(ways.isEmpty)
    }

    @Test func chunksComeWithAndWithoutEmbedding() throws {
        let knowledge: FlowValue = Wire.knowledge(
            [
                Wire.chunk("one", breadcrumb: "A > B", packable: "wide", embedding: [0.5, -1e-9]),
                Wire.chunk("two"), Wire.chunk("three", embedding: []),
            ], kind: "hybrid", topK: 4, threshold: 0.25)
        let attachment: WireRAGAttachment = try Wire.decoded(
            Wire.flow(
                "f", first: Wire.agent("a", knowledge: [knowledge]), Wire.single(Wire.end("e")))
        ).firstAgent.ragAttachments[0]
        #expect(attachment.indexKind == .hybrid)
        #expect(attachment.topK == 4)
        #expect(attachment.threshold == 0.25)
        let chunks: [WireRAGChunk] = try attachment.chunks.read()
        #expect(chunks.map(\.searchableText) == ["one", "two", "three"])
        #expect(chunks[0].breadcrumb == "A > B")
        #expect(chunks[0].packableText == "wide")
        #expect(chunks.map(\.embedding) == [[0.5, -1e-9], nil, []])
    }

    @Test func unknownKeysAreSkipped() {
        #expect(error(replacing: "\"maxHops\":", with: "\"new\":[{\"a\":\"]\"}],\"maxHops\":") == nil)
    }

    @Test func aMissingKeyIsNamedWithItsPlace() {
        #expect(
            error(replacing: "\"maxHops\":20,", with: "")?.description
                == "flow: the key “maxHops” is missing.")
        #expect(
            error(replacing: "\"isOptional\":false,\"description\"", with: "\"description\"")?
                .description == "flow.startInput.0: the key “isOptional” is missing.")
    }

    @Test func aCaseWithOtherThanOneKeyIsRefused() {
        let message = "Invalid number of keys found, expected one."
        #expect(error(replacing: "{\"int\":{}}", with: "{}")?.message == message)
        #expect(
            error(replacing: "{\"int\":{}}", with: "{\"int\":{},\"bool\":{}}")?.message == message)
    }

    @Test func whatIsUnknownIsRefused() {
        #expect(error(replacing: "{\"int\":{}}", with: "{\"date\":{}}") != nil)
        #expect(error(replacing: "\"greaterThan\"", with: "\"near\"") != nil)
        #expect(error(replacing: "\"Single-shot\"", with: "\"Twice\"") != nil)
        #expect(error(replacing: "\"keyword\"", with: "\"spotlight\"") != nil)
    }

    @Test func valuesOfAnotherTypeAreRefused() {
        #expect(error(replacing: "\"maxHops\":20", with: "\"maxHops\":\"20\"")?.path == ["flow", "maxHops"])
        #expect(error(replacing: "\"carriesOutput\":true", with: "\"carriesOutput\":1") != nil)
        #expect(error(replacing: "\"topK\":3", with: "\"topK\":2.5") != nil)
    }

    @Test func aFileThatIsCutOffIsRefused() {
        let text: String = Wire.runRequest(Samples.triage).json
        for length in stride(from: 0, to: text.utf8.count, by: 7) {
            let cut = String(decoding: text.utf8.prefix(length), as: UTF8.self)
            #expect(throws: WireError.self) { try WireFlowRunRequest(json: cut) }
        }
    }

    @Test func aFileThatIsNotThereIsNamed() {
        #expect(throws: WireError("“/nowhere/at all” can't be read: No such file or directory.")) {
            try WireFlowRunRequest(contentsOf: "/nowhere/at all")
        }
    }
}

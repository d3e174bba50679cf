import Foundation
import OmbrelRuntime
import Testing

@testable import OmbrelStudioCore

@Suite struct GeneratorTests {
    /// Compares with the file of that name. Set OMBREL_WRITE_GOLDEN to write it instead, and read
    /// the difference.
    private func expectGolden(_ source: String, _ name: String) throws {
        let file: URL = Folders.sources.appending(path: "Golden/\(name).swift")
        if ProcessInfo.processInfo.environment["OMBREL_WRITE_GOLDEN"] != nil {
            try Data(source.utf8).write(to: file)
        }
        #expect(try String(contentsOf: file, encoding: .utf8) == source)
    }

    @Test func aFlowWithEverythingReadsWell() throws {
        let flow = try FlowSource(
            Wire.decoded(Samples.triage), typeName: "SupportTriage", purpose: .studio)
        try expectGolden(flow.source, "SupportTriage")
        #expect(flow.data.branchValues == ["100"])
        #expect(flow.data.agents.map(\.name) == ["Triage", "Refund Agent", "Writer"])
        #expect(flow.data.tools.map(\.mockResponseJSON) == [#"{"status":"shipped"}"#])
    }

    @Test func aFlowOfAPackageTakesTools() throws {
        let spec: WireFlowSpec = try Wire.decoded(Samples.triage)
        var scope = NameScope(reserved: SwiftNames.inScope)
        let tools: [ToolSource] = ToolSource.all(in: [spec], scope: &scope)
        #expect(tools.map(\.protocolName) == ["LookupOrderTool"])
        let flow = try FlowSource(
            spec, typeName: "SupportTriage",
            purpose: .package(runtime: "DemoRuntime", folder: "SupportTriage"), tools: tools)
        try expectGolden(flow.source, "PackagedSupportTriage")
        #expect(flow.data.tools.map(\.mockResponseJSON) == [""])
    }

    @Test func aConversationReadsWell() throws {
        let flow = try FlowSource(
            Wire.decoded(Samples.chat), typeName: "SmallTalk", purpose: .studio)
        try expectGolden(flow.source, "SmallTalk")
    }

    @Test func whatIsDataIsNoCode() throws {
        let one: FlowValue = Samples.triage
        let text: String = one.json
            .replacingOccurrences(of: "Sort the question.", with: "Other \\\" instructions")
            .replacingOccurrences(of: "\"value\":\"100\"", with: "\"value\":\"7\"")
            .replacingOccurrences(of: "shipped", with: "lost")
            .replacingOccurrences(of: "We ship worldwide.", with: "We ship nowhere.")
            .replacingOccurrences(of: "\"maxHops\":20", with: "\"maxHops\":1")
        let other = try FlowValue(json: text)
        let sources: [FlowSource] = try [one, other].map {
            try FlowSource(Wire.decoded($0), typeName: "F", purpose: .studio)
        }
        #expect(sources[0].source == sources[1].source)
        let data: [Data] = try sources.map { try $0.data.encoded() }
        #expect(data[0] != data[1])
        #expect(sources[0].knowledge[0].name != sources[1].knowledge[0].name)
    }

    @Test func theSameKnowledgeIsWrittenOnce() throws {
        let knowledge: FlowValue = Wire.knowledge([Wire.chunk("one")])
        let flow = try FlowSource(
            Wire.decoded(
                Wire.flow(
                    "f", first: Wire.agent("a", knowledge: [knowledge, knowledge]),
                    Wire.single(
                        Wire.next(
                            Wire.agent("b", knowledge: [knowledge]), Wire.single(Wire.end("e")))))),
            typeName: "F", purpose: .studio)
        #expect(flow.knowledge.count == 1)
        #expect(flow.data.agents.map(\.knowledge.count) == [2, 1])
    }

    @Test func anAgentAtTwoPlacesIsOneFunction() throws {
        let again: FlowValue = Wire.next(Wire.agent("Again"), Wire.single(Wire.end("e")))
        let flow = try FlowSource(
            Wire.decoded(
                Wire.flow(
                    "f", first: Wire.agent("a", output: Wire.enumeration("x", "y")),
                    Wire.byCase([("x", again), ("y", again)]))),
            typeName: "F", purpose: .studio)
        #expect(flow.data.agents.map(\.name) == ["a", "Again"])
        #expect(flow.source.components(separatedBy: "func askAgain").count == 2)
    }

    @Test func endsOfOneNameAndOnePayloadAreOneCase() throws {
        func way(_ output: FlowValue, carriesOutput: Bool) -> FlowValue {
            Wire.next(
                Wire.agent("b", output: output),
                Wire.single(Wire.end("done", carriesOutput: carriesOutput)))
        }
        let text: FlowValue = ["text": [:]]
        let flow = try FlowSource(
            Wire.decoded(
                Wire.flow(
                    "f", first: Wire.agent("a", output: Wire.enumeration("w", "x", "y", "z")),
                    Wire.byCase([
                        ("w", way(text, carriesOutput: true)),
                        ("x", way(text, carriesOutput: true)),
                        ("y", way(text, carriesOutput: false)),
                        ("z", way(Wire.object([]), carriesOutput: true)),
                    ]))),
            typeName: "F", purpose: .studio)
        #expect(flow.source.contains("        case done(String)\n"))
        #expect(flow.source.contains("        case done2\n"))
        #expect(flow.source.contains("        case done3(BOutput)\n"))
        #expect(!flow.source.contains("done4"))
    }

    @Test func contextFieldsOfEveryKindCanBeHandedIn() throws {
        let flow = try FlowSource(
            Wire.decoded(
                Wire.flow(
                    "f",
                    contextFields: [
                        Wire.property("tone", Wire.enumeration("kind", "short")),
                        Wire.property("tags", Wire.array(["string": [:]])),
                        Wire.property("user", Wire.object([])),
                        Wire.property("history"),
                    ], first: Wire.agent("a"), Wire.single(Wire.end("e")))),
            typeName: "F", purpose: .studio)
        for field in ["tone: String?", "tags: [String]?", "user: FlowValue?", "history: String?"] {
            #expect(flow.source.contains("        public var \(field)\n"))
        }
    }

    @Test func flowsOfThousandsOfNodesAreNoDanger() throws {
        // The text is put together by hand, since writing such a value would need the same care.
        let count = 3000
        let agent: String = Wire.agent("a").json
        let end: String = Wire.end("e").json
        let head = "{\"agent\":{\"_0\":\(agent),\"next\":{\"single\":{\"_0\":"
        let branch: String = Wire.branch(
            "f", "isEmpty", "", then: "THEN", otherwise: Wire.end("e")
        ).json.replacingOccurrences(of: "\"THEN\"", with: "THEN")
        let parts: [String] = branch.components(separatedBy: "THEN")
        for (before, after) in [(head, "}}}}"), (parts[0], parts[1])] {
            let tree: String =
                String(repeating: before, count: count) + end + String(repeating: after, count: count)
            let flow: String = Wire.flow(
                "f", first: Wire.agent("first"), Wire.single("TREE")
            ).json.replacingOccurrences(of: "\"TREE\"", with: tree)
            let request: String = Wire.runRequest("FLOW").json
                .replacingOccurrences(of: "\"FLOW\"", with: flow)
            let lines: Int = try withLargeStack {
                let spec: WireFlowSpec = try WireFlowRunRequest(json: request).flow
                let source: String = try FlowSource(spec, typeName: "F", purpose: .studio).source
                // The compiler takes no more than 256 levels.
                #expect(!source.contains(String(repeating: " ", count: 100)))
                // Taken apart here, where the stack is large.
                _ = consume spec
                return source.split(separator: "\n").count
            }
            #expect(lines > count)
        }
    }

    @Test func routingByCasesThatAnAgentLacksIsRefused() throws {
        let spec: WireFlowSpec = try Wire.decoded(
            Wire.flow("f", first: Wire.agent("a"), Wire.byCase([("x", Wire.end("e"))])))
        #expect(throws: GeneratorError("“a” has no cases to route by.")) {
            try FlowSource(spec, typeName: "F", purpose: .studio)
        }
    }

    @Test func typesThatNestTooDeeplyAreRefused() throws {
        var kind: FlowValue = ["string": [:]]
        for _ in 0..<70 {
            kind = Wire.array(kind)
        }
        let spec: WireFlowSpec = try Wire.decoded(
            Wire.flow(
                "f", first: Wire.agent("a", output: Wire.object([Wire.property("deep", kind)])),
                Wire.single(Wire.end("e"))))
        #expect(throws: GeneratorError("The field “deep” nests objects and lists too deeply.")) {
            try FlowSource(spec, typeName: "F", purpose: .studio)
        }
    }

    @Test(arguments: ["plain", "\"\\(x)\"", "a\nb\r\n\t", "\u{0}\u{7F}\u{85}\u{2028}", "\u{301}e",
        "\u{202E}abc\u{200B}\u{FEFF}", "👨‍👩‍👧", ""])
    func literalsHaveNothingThatIsNotSeen(text: String) throws {
        let literal: String = SwiftLiteral.string(text)
        #expect(literal.first == "\"")
        #expect(literal.last == "\"")
        #expect(literal.allSatisfy { !$0.isNewline })
        for scalar in literal.unicodeScalars {
            #expect(![.control, .format].contains(scalar.properties.generalCategory))
        }
    }

    @Test func commentsStayOnTheirLine() {
        #expect(SwiftLiteral.comment("a\nb\u{2028}c\u{202E}d") == "a b c d")
        #expect(SwiftLiteral.comment(String(repeating: "x", count: 500)).count == 81)
    }
}

import Foundation
import OmbrelRuntime
import Testing

@testable import OmbrelStudioCore

/// Runs `StudioCLI` with the real tool chain and a model that a test scripts.
@Suite(.serialized) struct StudioRunTests {
    /// One folder for all tests, so that the runtime is compiled once.
    private func run(
        _ flow: FlowValue, input: String, _ environment: [String: String]
    ) throws -> Finished {
        try Self.run(flow, input: input, environment)
    }

    private static func run(
        _ flow: FlowValue, input: String, _ environment: [String: String]
    ) throws -> Finished {
        let folder: URL = try Folders.kept("Flow")
        return try Folders.withNew { new in
            let file: URL = new.appending(path: "request.json")
            let request: FlowValue = Wire.runRequest(
                flow, packageDirectory: folder.path, input: input)
            try Data(request.json.utf8).write(to: file)
            return try Finished.run(
                Folders.programs.appending(path: "StudioCLI").path, [file.path],
                environment: environment)
        }
    }

    /// The kinds of the events, with their node or, for routes and branches, their detail; results
    /// as they are.
    private func story(_ output: String) throws -> [String] {
        try output.split(separator: "\n").map { line in
            if line.hasPrefix("RESULT: ") { return String(line) }
            let event = try FlowValue(json: String(line))
            let kind: String = try #require(event["kind"]?.text)
            #expect(event["detail"] != nil)
            guard case .int? = event["elapsedMS"] else {
                throw FlowError("\(line) tells no time.")
            }
            switch kind {
            case "routeTaken", "branch", "error": return "\(kind) \(event["detail"]!.text)"
            default: return event["node"].map { "\(kind) \($0.text)" } ?? kind
            }
        }
    }

    private func detail(_ kind: String, _ output: String, at place: Int = 0) throws -> String {
        let events: [FlowValue] = try output.split(separator: "\n")
            .filter { !$0.hasPrefix("RESULT: ") }.map { try FlowValue(json: String($0)) }
            .filter { $0["kind"]?.text == kind }
        return try #require(events[place]["detail"]).text
    }

    private static let refund = #"{"order id":"A-1","amount":250,"status":"open"}"#

    private func triageServer(amount: String = "250") throws -> ModelServer {
        try ModelServer { question in
            if question.instructions.hasPrefix("Sort") { return "\"refund\"" }
            if question.instructions.hasPrefix("Handle") {
                return Self.refund.replacingOccurrences(of: "250", with: amount)
            }
            return "Dear customer,\nit is done."
        }
    }

    private static let input = #"{"question":"Money\nback?","tags":"[\"a\"]"}"#

    @Test func aSingleShotFlowTellsEveryStepInOrder() throws {
        let server = try triageServer()
        let run: Finished = try run(Samples.triage, input: Self.input, server.environment)
        #expect(run.status == 0, "\(run.errors)")
        #expect(
            try story(run.output) == [
                "flowStarted", "nodeEntered Triage", "promptBuilt", "outputReceived",
                "routeTaken refund", "nodeEntered Refund Agent", "ragRetrieved", "promptBuilt",
                "outputReceived", "branch amount > 100 -> true", "toolCalled lookupOrder",
                "nodeEntered Writer", "promptBuilt", "outputReceived", "flowFinished",
                "RESULT: .escalated: Dear customer,\u{2028}it is done.",
            ])
        #expect(try detail("flowStarted", run.output) == "question: Money\nback?\ntags: [\"a\"]")
        #expect(try detail("nodeEntered", run.output) == "input: Money\nback?")
        #expect(try detail("toolCalled", run.output) == #"{"status":"shipped"}"#)
        #expect(try detail("ragRetrieved", run.output).hasPrefix("1 passage\n[1] Guide · "))
        #expect(try detail("promptBuilt", run.output, at: 1).contains("A refund is given within"))
        let phases: [String] = run.errors.split(separator: "\n").map(String.init)
            .filter { $0.hasPrefix("▸ ") }
        #expect(phases.first == "▸ Generating Swift code…")
        #expect(phases.last == "▸ Running…")
    }

    @Test func changesOfDataCompileNothing() throws {
        let server = try triageServer(amount: "7")
        _ = try run(Samples.triage, input: Self.input, server.environment)
        let program: URL = try Folders.kept("Flow").appending(path: ".build/debug/FlowProgram")
        func built() throws -> Date {
            try #require(
                FileManager.default.attributesOfItem(
                    atPath: program.resolvingSymlinksInPath().path)[.modificationDate] as? Date)
        }
        let before: Date = try built()
        let changed: String = Samples.triage.json
            .replacingOccurrences(of: "\"value\":\"100\"", with: "\"value\":\"1\"")
            .replacingOccurrences(of: "Sort the question.", with: "Sort it.")
            .replacingOccurrences(of: "shipped", with: "lost")
        let run: Finished = try run(
            FlowValue(json: changed), input: Self.input, server.environment)
        #expect(run.status == 0)
        #expect(!run.errors.contains("▸ Compiling the flow…"))
        #expect(try built() == before)
        #expect(try detail("branch", run.output) == "amount > 1 -> true")
        #expect(try detail("toolCalled", run.output) == #"{"status":"lost"}"#)
        #expect(try detail("promptBuilt", run.output).hasPrefix("Sort it.\n\n"))
    }

    @Test func aModelThatFailsInTheThirdStepIsToldAtItsAgent() throws {
        let server = try ModelServer { question in
            if question.instructions.hasPrefix("Sort") { return "\"refund\"" }
            if question.instructions.hasPrefix("Handle") { return Self.refund }
            return nil
        }
        let run: Finished = try run(Samples.triage, input: Self.input, server.environment)
        #expect(run.status == 1)
        let last: Substring = try #require(run.output.split(separator: "\n").last)
        let event = try FlowValue(json: String(last))
        #expect(event["kind"] == "error")
        #expect(event["node"] == "Writer")
        let message: String = try #require(event["detail"]).text
        #expect(run.errors.hasSuffix("✗ \(message)\n"))
        #expect(!run.output.contains("RESULT:"))
    }

    @Test func withoutAModelTheReasonIsTold() throws {
        let run: Finished = try run(
            Samples.triage, input: Self.input,
            ["OMBREL_MODEL_ERROR": "There is no model yet.", "OMBREL_MODEL_URL": ""])
        #expect(run.status == 1)
        #expect(try story(run.output).last == "error There is no model yet.")
        #expect(run.errors.hasSuffix("✗ There is no model yet.\n"))
    }

    @Test func anInputThatDoesNotFitIsToldBeforeTheFlowStarts() throws {
        let server = try triageServer()
        let run: Finished = try run(
            Samples.triage, input: #"{"question":"x","tags":"no list"}"#, server.environment)
        #expect(run.status == 1)
        let story: [String] = try story(run.output)
        #expect(story.count == 1)
        #expect(story[0].hasPrefix("error The input doesn't fit: "))
        #expect(story[0].contains("tags"))
        #expect(server.questions.isEmpty)
    }

    @Test func onlyTheNewMessageOfAConversationAsksTheModel() throws {
        let server = try ModelServer { question in "You said:\n" + question.prompt }
        let first: Finished = try run(Samples.chat, input: #"["one"]"#, server.environment)
        #expect(first.status == 0, "\(first.errors)")
        #expect(server.questions.count == 1)
        let third: Finished = try run(
            Samples.chat, input: #"["one","two","three"]"#, server.environment)
        #expect(server.questions.map(\.prompt) == ["one", "two", "three"])
        #expect(third.output.hasPrefix(first.output))
        #expect(
            try story(third.output).filter { $0.hasPrefix("RESULT") } == [
                "RESULT: You said:\u{2028}one", "RESULT: You said:\u{2028}two",
                "RESULT: You said:\u{2028}three",
            ])
        #expect(try story(third.output).filter { $0 == "promptBuilt" }.count == 3)
        let instructions: String = server.questions[2].instructions
        #expect(instructions.contains("User: one\nAssistant: You said:\none\nUser: two"))
        let cache: URL = try Folders.kept("Flow").appending(path: "turns.json")
        let mode = try FileManager.default.attributesOfItem(atPath: cache.path)[.posixPermissions]
        #expect(mode as? Int == 0o600)

        // Another message at the second place: what follows is another conversation.
        _ = try run(Samples.chat, input: #"["one","zwei"]"#, server.environment)
        #expect(server.questions.map(\.prompt) == ["one", "two", "three", "zwei"])
        // Other instructions: nothing is as it was.
        let changed: String = Samples.chat.json.replacingOccurrences(of: "Talk.", with: "Sing.")
        _ = try run(FlowValue(json: changed), input: #"["one"]"#, server.environment)
        #expect(server.questions.count == 5)
        // Another model.
        var environment: [String: String] = server.environment
        environment["OMBREL_MODEL_NAME"] = "another"
        _ = try run(FlowValue(json: changed), input: #"["one"]"#, environment)
        #expect(server.questions.count == 6)
    }

    @Test func aMessageThatFailedIsAskedAgain() throws {
        let failing = try ModelServer { $0.prompt == "two" ? nil : "Yes." }
        let flow: FlowValue = try FlowValue(
            json: Samples.chat.json.replacingOccurrences(of: "Talk.", with: "Agree."))
        let failed: Finished = try run(flow, input: #"["one","two"]"#, failing.environment)
        #expect(failed.status == 1)
        #expect(failed.output.contains("RESULT: Yes."))
        let mended = try ModelServer { _ in "Yes, again." }
        let run: Finished = try run(flow, input: #"["one","two","three"]"#, mended.environment)
        #expect(run.status == 0)
        #expect(mended.questions.map(\.prompt) == ["two", "three"])
    }

    @Test func aLoopOfHopsEnds() throws {
        let flow: FlowValue = try FlowValue(
            json: Samples.triage.json.replacingOccurrences(
                of: "\"maxHops\":20", with: "\"maxHops\":2"))
        let server = try triageServer()
        let run: Finished = try run(flow, input: Self.input, server.environment)
        #expect(run.status == 1)
        #expect(
            try story(run.output).last == "error The flow stopped after 2 agents (its limit of hops).")
    }

    @Test func hostileTextRunsInTheStudio() throws {
        for seed: UInt64 in [101, 102] {
            var hostile = HostileFlows(seed: seed)
            let flow: FlowValue = hostile.flow(kind: "Single-shot")
            let spec: WireFlowSpec = try Wire.decoded(flow)
            let server = try ModelServer { question in
                guard let schema = question.schema else { return HostileFlows.textAnswer }
                return HostileFlows.answer(jsonSchema: schema).json
            }
            let run: Finished = try run(
                flow, input: HostileFlows.input(of: spec).json, server.environment)
            #expect(run.status == 0, "seed \(seed): \(run.errors)")
            let lines: [Substring] = run.output.split(separator: "\n")
                .filter { !$0.hasPrefix("RESULT: ") }
            let events: [TraceStep] = try lines.map { try TraceStep(json: String($0)) }
            #expect(events == ExpectedPath(spec).steps, "seed \(seed)")
        }
    }

    @Test func twoRunsOfOneFlowWaitForEachOther() throws {
        let server = try ModelServer { _ in "Fine." }
        // Each is another conversation, so each writes all of the folder.
        let runs: [Running] = try (1...3).map { number in
            let flow = try FlowValue(
                json: Samples.chat.json.replacingOccurrences(of: "Talk.", with: "Talk \(number)."))
            return try Running(flow, input: "[\"\(number)\"]", server.environment)
        }
        for run in runs {
            run.process.waitUntilExit()
            #expect(run.process.terminationStatus == 0)
        }
        #expect(
            Set(server.questions.map { "\($0.instructions) \($0.prompt)" })
                == ["Talk 1. 1", "Talk 2. 2", "Talk 3. 3"])
    }

    #if os(Linux)
    @Test(arguments: [SIGTERM, SIGKILL]) func theProgramEndsWithTheTool(signal: Int32) throws {
        let asked = DispatchSemaphore(value: 0)
        let goOn = DispatchSemaphore(value: 0)
        let server = try ModelServer { _ in
            asked.signal()
            goOn.wait()
            return "Late."
        }
        let flow = try FlowValue(
            json: Samples.chat.json.replacingOccurrences(of: "Talk.", with: "Wait \(signal)."))
        let run = try Running(flow, input: #"["one"]"#, server.environment)
        asked.wait()
        #expect(try programs().count == 1)
        kill(run.process.processIdentifier, signal)
        run.process.waitUntilExit()
        for _ in 0..<1000 where try !programs().isEmpty {
            usleep(10_000)
        }
        #expect(try programs().isEmpty)
        goOn.signal()
    }

    /// The processes of the flow's program.
    private func programs() throws -> [String] {
        let folder: String = try Folders.kept("Flow").path
        return try FileManager.default.contentsOfDirectory(atPath: "/proc").filter { process in
            let line = try? String(contentsOfFile: "/proc/\(process)/cmdline", encoding: .utf8)
            return line?.hasPrefix(folder) ?? false
        }
    }
    #endif

    /// `StudioCLI` while it runs.
    private struct Running {
        let process = Process()

        init(_ flow: FlowValue, input: String, _ environment: [String: String]) throws {
            let folder: URL = try Folders.kept("Flow")
            let file: URL = folder.appending(path: "request-\(UUID().uuidString).json")
            let request: FlowValue = Wire.runRequest(
                flow, packageDirectory: folder.path, input: input)
            try Data(request.json.utf8).write(to: file)
            process.executableURL = Folders.programs.appending(path: "StudioCLI")
            process.arguments = [file.path]
            process.environment = ProcessInfo.processInfo.environment.merging(environment) { $1 }
            process.standardOutput = FileHandle.nullDevice
            process.standardError = FileHandle.nullDevice
            process.terminationHandler = { _ in
                try? FileManager.default.removeItem(at: file)
            }
            try process.run()
        }
    }

    @Test func aRequestThatIsBrokenIsRefused() throws {
        try Folders.withNew { folder in
            let file: URL = folder.appending(path: "request.json")
            try Data("{\"flow\":".utf8).write(to: file)
            let program: String = Folders.programs.appending(path: "StudioCLI").path
            let run: Finished = try Finished.run(program, [file.path])
            #expect(run.status == 1)
            #expect(run.output.isEmpty)
            #expect(run.errors.hasPrefix("✗ flow: "))
            #expect(try Finished.run(program, []).status == 2)
        }
    }

    @Test func withoutAToolChainThatIsSaid() throws {
        let run: Finished = try run(
            Samples.triage, input: Self.input, ["PATH": "/nowhere"])
        #expect(run.status == 1)
        #expect(run.errors == "✗ There is no Swift tool chain: no “swift” on the PATH.\n")
    }
}

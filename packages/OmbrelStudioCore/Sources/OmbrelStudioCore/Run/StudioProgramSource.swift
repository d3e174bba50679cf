/// The program around a flow's type that the studio runs:
/// `FlowProgram DATA INPUT CACHE KEY`.
enum StudioProgramSource {
    static let product = "FlowProgram"

    static func manifest(runtimePath: String) -> String {
        """
        // swift-tools-version: 6.2
        import PackageDescription

        let package = Package(
            name: "\(product)",
            platforms: [.macOS(.v26)],
            dependencies: [
                .package(name: "OmbrelRuntime", path: \(SwiftLiteral.string(runtimePath)))
            ],
            targets: [
                .executableTarget(
                    name: "\(product)",
                    dependencies: [.product(name: "OmbrelRuntime", package: "OmbrelRuntime")])
            ]
        )

        """
    }

    static func main(flow: FlowSource) -> String {
        let run: String =
            switch flow.spec.kind {
            case .singleShot: singleShot(flow.typeName)
            case .conversational: conversational(flow.typeName)
            }
        return head + "\n" + run + "\n" + output
    }

    private static let head = #"""
        import Foundation
        import OmbrelRuntime
        import Synchronization

        /// Runs the flow for the studio: one JSON object a line for each event, and for each turn
        /// a line that begins with "RESULT: ".
        @main
        enum FlowProgram {
            static func main() async {
                let output = StudioOutput()
                do {
                    try await run(CommandLine.arguments, output)
                } catch {
                    output.fail(error)
                    exit(1)
                }
            }
        }

        """#

    private static func singleShot(_ type: String) -> String {
        #"""
        extension FlowProgram {
            static func run(_ arguments: [String], _ output: StudioOutput) async throws {
                let data = try FlowData(directory: URL(filePath: arguments[1]))
                let text = try String(contentsOfFile: arguments[2], encoding: .utf8)
                let input: FlowValue
                do {
                    input = try typed(FlowValue(json: text), as: \#(type).Input.schema)
                } catch {
                    throw FlowError("The input doesn't fit: \(FlowError.message(of: error))")
                }
                let flow = \#(type)(data: data, trace: output.trace)
                _ = try await flow.run(fitting(input))
                output.result(nil)
            }

            private static func fitting(_ input: FlowValue) throws -> \#(type).Input {
                do {
                    return try \#(type).Input(flowValue: input)
                } catch {
                    throw FlowError("The input doesn't fit: \(FlowError.message(of: error))")
                }
            }

            /// What was typed for a field that is no text is JSON, or nothing.
            private static func typed(_ value: FlowValue, as schema: ValueSchema) throws -> FlowValue {
                guard case .object(_, let properties) = schema, case .object(var members) = value
                else { return value }
                for property in properties {
                    guard case .string(let text)? = members[property.name] else { continue }
                    let isBlank = text.allSatisfy(\.isWhitespace)
                    switch property.schema {
                    case .string:
                        break
                    case .choice:
                        if isBlank && property.isOptional {
                            members[property.name] = .null
                        }
                    case .array, .object, .int, .double, .bool:
                        if !isBlank {
                            members[property.name] = (try? FlowValue(json: text)) ?? .string(text)
                        } else if property.isOptional {
                            members[property.name] = .null
                        } else if case .array = property.schema {
                            members[property.name] = .array([])
                        } else if case .object = property.schema {
                            members[property.name] = .object([:])
                        }
                    }
                }
                return .object(members)
            }
        }

        """#
    }

    private static func conversational(_ type: String) -> String {
        #"""
        extension FlowProgram {
            static func run(_ arguments: [String], _ output: StudioOutput) async throws {
                let data = try FlowData(directory: URL(filePath: arguments[1]))
                let text = try Data(contentsOf: URL(filePath: arguments[2]))
                let messages = try JSONDecoder().decode([String].self, from: text)
                var past = PastTurns(file: URL(filePath: arguments[3]), key: arguments[4])
                past.keep(before: messages)
                for turn in past.turns {
                    output.replay(turn.lines)
                }
                let flow = \#(type)(
                    data: data,
                    turns: past.turns.map {
                        ConversationTurn(user: $0.user, assistant: $0.assistant)
                    },
                    trace: output.trace)
                for message in messages.dropFirst(past.turns.count) {
                    output.beginTurn()
                    let reply = try await flow.send(message)
                    output.result(reply.text)
                    past.add(
                        PastTurns.Turn(
                            user: message, assistant: reply.text, lines: output.linesOfTurn))
                }
            }
        }

        /// The turns that were run before, so that only new messages ask the model.
        struct PastTurns {
            struct Turn: Codable {
                var user: String
                var assistant: String
                var lines: [String]
            }

            private struct Content: Codable {
                var key: String
                var turns: [Turn]
            }

            private(set) var turns: [Turn] = []
            private let file: URL
            private let key: String

            /// Turns under another key were run by another flow or model.
            init(file: URL, key: String) {
                self.file = file
                self.key = key
                if let data = try? Data(contentsOf: file),
                    let content = try? JSONDecoder().decode(Content.self, from: data),
                    content.key == key
                {
                    turns = content.turns
                }
            }

            /// Keeps those with which a conversation of these messages begins.
            mutating func keep(before messages: [String]) {
                let common = zip(turns, messages).prefix { $0.user.utf8.elementsEqual($1.utf8) }
                turns = Array(turns.prefix(common.count))
            }

            /// Remembers a turn. One that can't be stored is run again.
            mutating func add(_ turn: Turn) {
                turns.append(turn)
                guard let data = try? JSONEncoder().encode(Content(key: key, turns: turns)) else {
                    return
                }
                let beside = file.appendingPathExtension("part").path
                let isMade = FileManager.default.createFile(
                    atPath: beside, contents: data, attributes: [.posixPermissions: 0o600])
                if isMade {
                    rename(beside, file.path)
                }
            }
        }

        """#
    }

    private static let output = #"""
        /// Writes what happens to standard output, each line at once.
        final class StudioOutput: Sendable {
            private struct State {
                var lines: [String] = []
                var finished = ""
                var isErrorTold = false
                var elapsedBefore = 0
                var lastElapsed = 0
            }

            private let state = Mutex(State())

            var trace: TraceHandler {
                { [self] event in tell(event) }
            }

            /// The lines since the turn began.
            var linesOfTurn: [String] { state.withLock { $0.lines } }

            /// What follows belongs to the next turn.
            func beginTurn() {
                state.withLock { state in
                    state.lines = []
                    state.elapsedBefore = state.lastElapsed
                }
            }

            /// Tells how the turn ended: the text, or how the flow's end reads in the trace.
            func result(_ text: String?) {
                state.withLock { state in
                    let result = (text ?? state.finished).map { $0.isNewline ? "\u{2028}" : $0 }
                    Self.write("RESULT: " + String(result), &state)
                }
            }

            /// Writes the lines of a turn that was run before.
            func replay(_ lines: [String]) {
                state.withLock { state in
                    for line in lines {
                        Self.write(line, &state)
                        if let event = try? FlowValue(json: line), case .int(let time)? = event["elapsedMS"] {
                            state.lastElapsed = time
                        }
                    }
                }
            }

            /// Tells an error, in the trace too unless it has been there.
            func fail(_ error: any Error) {
                let message = FlowError.message(of: error)
                let isTold = state.withLock { $0.isErrorTold }
                if !isTold {
                    let node = (error as? FlowError)?.node
                    tell(TraceEvent(kind: "error", detail: message, elapsedMS: 0, node: node))
                }
                try? FileHandle.standardError.write(contentsOf: Data("✗ \(message)\n".utf8))
            }

            private func tell(_ event: TraceEvent) {
                state.withLock { state in
                    var event = event
                    event.elapsedMS += state.elapsedBefore
                    state.lastElapsed = event.elapsedMS
                    if event.kind == "flowFinished" {
                        state.finished = event.detail
                    }
                    state.isErrorTold = state.isErrorTold || event.kind == "error"
                    Self.write(event.jsonLine, &state)
                }
            }

            private static func write(_ line: String, _ state: inout State) {
                state.lines.append(line)
                try? FileHandle.standardOutput.write(contentsOf: Data((line + "\n").utf8))
            }
        }

        """#
}

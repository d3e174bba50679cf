import Foundation
import OmbrelRuntime
import Testing

@testable import OmbrelStudioCore

/// Runs `ExportCLI`.
@Suite struct ExportTests {
    private static func export(
        _ flows: [FlowValue], name: String, to folder: URL
    ) throws -> Finished {
        try Folders.withNew { new in
            let file: URL = new.appending(path: "request.json")
            let request: FlowValue = Wire.exportRequest(
                flows, name: name, destination: folder.path)
            try Data(request.json.utf8).write(to: file)
            return try Finished.run(
                Folders.programs.appending(path: "ExportCLI").path, [file.path])
        }
    }

    private static func files(in folder: URL) throws -> [String] {
        let paths: [String] =
            FileManager.default.enumerator(atPath: folder.path)?.allObjects as? [String] ?? []
        return paths.filter { path in
            !((try? folder.appending(path: path).resourceValues(forKeys: [.isDirectoryKey]))?
                .isDirectory ?? false)
        }.sorted()
    }

    @Test func aPackageHasAllThatItNeeds() throws {
        try Folders.withNew { folder in
            let run: Finished = try Self.export(
                [Samples.triage, Samples.chat], name: "Demo", to: folder)
            #expect(run.status == 0, "\(run.errors)")
            #expect(run.output.contains("EXPORT_SUCCEEDED"))
            let files: [String] = try Self.files(in: folder.appending(path: "Demo"))
            let own: [String] = files.filter {
                !$0.hasPrefix("Sources/DemoRuntime/") && !$0.hasSuffix(".knowledge")
            }
            #expect(
                own == [
                    ".ombrel-package", "Package.swift", "README.md",
                    "Sources/Demo/Data/SmallTalk/flow.json",
                    "Sources/Demo/Data/SupportTriage/flow.json", "Sources/Demo/DemoTools.swift",
                    "Sources/Demo/FlowData.swift", "Sources/Demo/SmallTalk.swift",
                    "Sources/Demo/SupportTriage.swift",
                ])
            #expect(files.filter { $0.hasSuffix(".knowledge") }.count == 1)
            #expect(files.contains("Sources/DemoRuntime/FlowRun.swift"))
            // Nothing is left beside it.
            #expect(
                try FileManager.default.contentsOfDirectory(atPath: folder.path) == ["Demo"])
        }
    }

    @Test func aFolderThatIsNotOursIsLeftAlone() throws {
        try Folders.withNew { folder in
            let theirs: URL = folder.appending(path: "Demo")
            try FileManager.default.createDirectory(at: theirs, withIntermediateDirectories: true)
            try Data("mine".utf8).write(to: theirs.appending(path: "letter.txt"))
            let run: Finished = try Self.export([Samples.chat], name: "Demo", to: folder)
            #expect(run.status == 1)
            #expect(!run.output.contains("EXPORT_SUCCEEDED"))
            #expect(run.errors.contains("wasn't exported by Ombrel Studio"))
            #expect(try Self.files(in: folder) == ["Demo/letter.txt"])
        }
    }

    @Test func aLinkAndAFileAreLeftAlone() throws {
        try Folders.withNew { folder in
            try Data("mine".utf8).write(to: folder.appending(path: "Demo"))
            #expect(try Self.export([Samples.chat], name: "Demo", to: folder).status == 1)
            let elsewhere: URL = folder.appending(path: "elsewhere")
            try FileManager.default.createDirectory(
                at: elsewhere, withIntermediateDirectories: true)
            try FileManager.default.createSymbolicLink(
                at: folder.appending(path: "Link"), withDestinationURL: elsewhere)
            #expect(try Self.export([Samples.chat], name: "Link", to: folder).status == 1)
            #expect(try Self.files(in: elsewhere).isEmpty)
        }
    }

    @Test func exportingAgainReplacesOurFilesAndKeepsOthers() throws {
        try Folders.withNew { folder in
            let package: URL = folder.appending(path: "Demo")
            _ = try Self.export([Samples.triage, Samples.chat], name: "Demo", to: folder)
            let kept: [String] = [
                "notes.txt", "Sources/Demo/Mine.swift", "Tests/DemoTests/Test.swift", ".git/HEAD",
            ]
            for path in kept {
                let file: URL = package.appending(path: path)
                try FileManager.default.createDirectory(
                    at: file.deletingLastPathComponent(), withIntermediateDirectories: true)
                try Data("mine".utf8).write(to: file)
            }
            let run: Finished = try Self.export([Samples.chat], name: "Demo", to: folder)
            #expect(run.status == 0, "\(run.errors)")
            let files: [String] = try Self.files(in: package)
            for path in kept {
                #expect(files.contains(path))
            }
            #expect(files.contains("Sources/Demo/SmallTalk.swift"))
            #expect(!files.contains("Sources/Demo/SupportTriage.swift"))
            #expect(!files.contains("Sources/Demo/Data/SupportTriage/flow.json"))
            #expect(
                try FileManager.default.contentsOfDirectory(atPath: folder.path) == ["Demo"])
        }
    }

    @Test func whatCanNotBeWrittenIsSaid() throws {
        try Folders.withNew { folder in
            let gone: URL = folder.appending(path: "gone")
            let run: Finished = try Self.export([Samples.chat], name: "Demo", to: gone)
            #expect(run.status == 1)
            #expect(run.errors.contains("There is no folder"))
            #expect(try Self.export([Samples.chat], name: "../Demo", to: folder).status == 1)
            #expect(try Self.export([], name: "Demo", to: folder).status == 1)
            #expect(try Self.files(in: folder).isEmpty)
        }
    }

    /// An application that uses two exported packages: one with the example of its read-me, one
    /// with flows of hostile text, each of which runs with a scripted model.
    @Test func packagesWorkInAnApplicationAndHostileTextComesThrough() throws {
        let folder: URL = try Folders.kept("Application")
        var specs: [WireFlowSpec] = []
        var flows: [FlowValue] = []
        for seed: UInt64 in 1...40 {
            var hostile = HostileFlows(seed: seed)
            let flow: FlowValue = hostile.flow(
                kind: seed % 5 == 0 ? "Conversational" : "Single-shot")
            flows.append(flow)
            specs.append(try Wire.decoded(flow))
        }
        for (name, flows) in [("Demo", [Samples.triage, Samples.chat]), ("Hostile", flows)] {
            let run: Finished = try Self.export(flows, name: name, to: folder)
            #expect(run.status == 0, "\(run.errors)")
        }
        try write(Application.manifest, to: folder.appending(path: "Package.swift"))
        let readme: String = try String(
            contentsOf: folder.appending(path: "Demo/README.md"), encoding: .utf8)
        try write(
            Application.swiftBlocks(of: readme) + Application.useOfReadme,
            to: folder.appending(path: "Sources/Application/Example.swift"))
        let hostileReadme: String = try String(
            contentsOf: folder.appending(path: "Hostile/README.md"), encoding: .utf8)
        try write(
            Application.swiftBlocks(of: hostileReadme),
            to: folder.appending(path: "Sources/Application/HostileExamples.swift"))
        try write(
            try Application.main(specs), to: folder.appending(path: "Sources/Application/Main.swift"))

        let build: Finished = try Finished.run(
            "/usr/bin/env",
            ["swift", "build", "--package-path", folder.path, "--disable-index-store"])
        #expect(build.status == 0, "\(build.output)\n\(build.errors)")
        #expect(!build.output.contains("warning:"), "\(build.output)")

        let server = try ModelServer { question in
            question.schema == nil ? "Hello to you." : "\"default\""
        }
        let run: Finished = try Finished.run(
            folder.appending(path: ".build/debug/Application").path, [],
            environment: server.environment)
        #expect(run.status == 0, "\(run.errors)")
        #expect(run.output.hasPrefix("default\nHello to you.\n"), "\(run.output.prefix(200))")

        var events: [[TraceStep]] = []
        for line in run.output.split(separator: "\n").dropFirst(2) {
            if line == "FLOW" {
                events.append([])
            } else {
                events[events.count - 1].append(try TraceStep(json: String(line)))
            }
        }
        #expect(events.count == specs.count)
        for (index, spec) in specs.enumerated() where index < events.count {
            #expect(events[index] == ExpectedPath(spec).steps, "seed \(index + 1)")
        }
    }

    /// Only when it changes, so that little is compiled again.
    private func write(_ text: String, to file: URL) throws {
        if (try? String(contentsOf: file, encoding: .utf8)) == text { return }
        try FileManager.default.createDirectory(
            at: file.deletingLastPathComponent(), withIntermediateDirectories: true)
        try Data(text.utf8).write(to: file)
    }
}

/// The sources of an application that uses exported packages.
enum Application {
    static let manifest = """
        // swift-tools-version: 6.2
        import PackageDescription

        let package = Package(
            name: "Application",
            platforms: [.macOS(.v26)],
            dependencies: [.package(path: "Demo"), .package(path: "Hostile")],
            targets: [.executableTarget(name: "Application", dependencies: ["Demo", "Hostile"])]
        )

        """

    static let useOfReadme = """

        func useReadme() async throws {
            try await useSupportTriage()
            try await useSmallTalk()
        }

        """

    /// The Swift of a page.
    static func swiftBlocks(of page: String) -> String {
        page.components(separatedBy: "```swift\n").dropFirst().map { block in
            block.components(separatedBy: "```")[0]
        }.joined(separator: "\n")
    }

    /// Runs every flow with a model that answers as `HostileFlows` does, and prints its events.
    static func main(_ specs: [WireFlowSpec]) throws -> String {
        var source = SourceWriter()
        source.line("import Hostile")
        source.line("import HostileRuntime")
        source.line()
        source.line(model)
        source.line("@main")
        source.block("enum Application") { source in
            source.block("static func main() async throws") { source in
                source.line("try await useReadme()")
                source.line("let trace: TraceHandler = { print($0.jsonLine) }")
                source.line("let model = ScriptedModel()")
                for index in specs.indices {
                    source.line("try await run\(index)(model, trace)")
                }
            }
        }
        var types = NameScope(
            reserved: SwiftNames.inScope.union(["Hostile", "HostileRuntime", "FlowData"]))
        let tools: [ToolSource] = ToolSource.all(in: specs, scope: &types)
        for (index, spec) in specs.enumerated() {
            let type: String = FlowNames.typeName(spec.name, scope: &types)
            let flow = try FlowSource(
                spec, typeName: type, purpose: .package(runtime: "", folder: ""), tools: tools)
            var arguments: [String] = flow.tools.map { tool in
                "\(tool.identifier): My\(tool.protocolName)()"
            }
            arguments += ["model: model", "trace: trace"]
            source.line()
            source.block(
                "func run\(index)(_ model: ScriptedModel, _ trace: @escaping TraceHandler) async throws"
            ) { source in
                source.line("print(\"FLOW\")")
                source.line("let flow = try \(type)(\(arguments.joined(separator: ", ")))")
                if spec.kind == .conversational {
                    source.line("_ = try await flow.send(\"Hello\")")
                } else {
                    source.line("let value = ScriptedModel.answer(to: \(type).Input.schema)")
                    source.line("_ = try await flow.run(\(type).Input(flowValue: value))")
                }
            }
        }
        return source.text
    }

    private static let model = """
        struct ScriptedModel: LanguageModel {
            func respond(instructions: String, prompt: String) async throws -> String {
                \(SwiftLiteral.string(HostileFlows.textAnswer))
            }

            func respond(
                instructions: String, prompt: String, schema: ValueSchema
            ) async throws -> FlowValue {
                Self.answer(to: schema)
            }

            static func answer(to schema: ValueSchema) -> FlowValue {
                switch schema {
                case .string: .string(\(SwiftLiteral.string(HostileFlows.textAnswer)))
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
        }

        """
}

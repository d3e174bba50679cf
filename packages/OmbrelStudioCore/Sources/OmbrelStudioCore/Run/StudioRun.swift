import Foundation
import OmbrelRuntime

/// Runs a flow for the studio: generates its package, compiles it when it must be, and runs it.
public struct StudioRun {
    private let request: WireFlowRunRequest
    private let folder: URL

    /// Reads the request file.
    public init(requestPath path: String) throws {
        request = try withLargeStack { try WireFlowRunRequest(contentsOf: path) }
        folder = URL(filePath: request.packageDirectory, directoryHint: .isDirectory)
    }

    /// Runs the flow and returns the exit status of its program. `say` gets a line for each phase.
    public func run(say: (String) -> Void) throws -> Int32 {
        let compiler = try SwiftCompiler()
        let runtime = try RuntimeSources(packagePath: request.runtimePath)
        let writer = try FolderWriter(root: folder, isPrivate: true)
        let lock = try FolderLock(folder: folder)
        defer { withExtendedLifetime(lock) {} }

        say("▸ Generating Swift code…")
        let code: String = try withLargeStack { try generate(runtime, writer) }
        let stamp = "\(code)\n\(runtime.hash)\n\(compiler.identity)\n"
        if !isBuilt(stamp) {
            say("▸ Compiling the flow…")
            // A build that is broken off leaves no stamp.
            try? FileManager.default.removeItem(at: stampFile)
            try compiler.build(package: folder, product: StudioProgramSource.product)
            try writer.write(stamp, to: stampFile.lastPathComponent)
        }

        say("▸ Running…")
        try writer.write(request.inputJSON, to: inputFile.lastPathComponent)
        defer { try? FileManager.default.removeItem(at: inputFile) }
        return try runChild(
            program.path,
            [
                folder.appending(path: "Data").path, inputFile.path,
                folder.appending(path: "turns.json").path, turnsKey(stamp),
            ], outputToError: false, endSignal: SIGKILL)
    }

    private var program: URL { folder.appending(path: ".build/debug/\(StudioProgramSource.product)") }
    private var stampFile: URL { folder.appending(path: ".ombrel-build-stamp") }
    private var inputFile: URL { folder.appending(path: "input.json") }

    private func isBuilt(_ stamp: String) -> Bool {
        (try? String(contentsOf: stampFile, encoding: .utf8)) == stamp
            && FileManager.default.isExecutableFile(atPath: program.path)
    }

    /// Writes the package; returns what changes when its code does.
    private func generate(_ runtime: RuntimeSources, _ writer: FolderWriter) throws -> String {
        let flow = try FlowSource(
            request.flow, typeName: FlowNames.typeName(request.flow.name, reserved: ["FlowProgram"]),
            purpose: .studio, knowledgeSalt: runtime.hash)
        let sources: [(path: String, text: String)] = [
            ("Package.swift", StudioProgramSource.manifest(runtimePath: request.runtimePath)),
            ("Sources/FlowProgram/Flow.swift", flow.source),
            ("Sources/FlowProgram/FlowProgram.swift", StudioProgramSource.main(flow: flow)),
        ]
        var hash = ContentHash()
        for (path, text) in sources {
            try writer.write(text, to: path)
            hash.add(path)
            hash.add(text)
        }
        try writer.write(try flow.data.encoded(), to: "Data/flow.json")
        for content in flow.knowledge {
            try writer.write(to: "Data/" + content.name) { try content.write(to: $0) }
        }
        writer.removeOthers(in: "Sources")
        writer.removeOthers(in: "Data")
        return hash.hexadecimal
    }

    /// Changes with everything beside the messages that answers depend on.
    private func turnsKey(_ stamp: String) throws -> String {
        var hash = ContentHash()
        hash.add(stamp)
        let data: Data = try Data(contentsOf: folder.appending(path: "Data/flow.json"))
        // It names the files of knowledge by their content.
        data.withUnsafeBytes { hash.add($0) }
        for name in ["OMBREL_MODEL_NAME", "OMBREL_EMBEDDING_NAME"] {
            hash.add(ProcessInfo.processInfo.environment[name] ?? "")
        }
        return hash.hexadecimal
    }
}

/// Names of flows as types.
enum FlowNames {
    static func typeName(_ name: String, reserved: Set<String>) -> String {
        var scope = NameScope(reserved: SwiftNames.inScope.union(reserved))
        return typeName(name, scope: &scope)
    }

    static func typeName(_ name: String, scope: inout NameScope) -> String {
        scope.claim(SwiftIdentifier.upperCamel(name, fallback: "Flow"))
    }
}

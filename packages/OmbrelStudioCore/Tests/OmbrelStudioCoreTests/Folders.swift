import Foundation

/// Where tests work: beside the programs that they run, so that a second test run compiles little.
enum Folders {
    /// The folder of the built programs.
    static let programs: URL = {
        let test = URL(filePath: CommandLine.arguments[0]).resolvingSymlinksInPath()
        return test.deletingLastPathComponent()
    }()

    static let sources = URL(filePath: #filePath).deletingLastPathComponent()

    /// The runtime's package.
    static let runtime: String =
        sources.appending(path: "../../../OmbrelRuntime").standardizedFileURL.path

    /// A folder that stays between runs of the tests.
    static func kept(_ name: String) throws -> URL {
        let folder: URL = programs.appending(path: "StudioCoreTests/\(name)")
        try FileManager.default.createDirectory(at: folder, withIntermediateDirectories: true)
        return folder
    }

    /// A new folder; `body` has it for itself.
    static func withNew<Value>(_ body: (URL) throws -> Value) throws -> Value {
        let folder: URL = FileManager.default.temporaryDirectory.appending(
            path: "ombrel-\(UUID().uuidString)")
        try FileManager.default.createDirectory(at: folder, withIntermediateDirectories: true)
        defer { try? FileManager.default.removeItem(at: folder) }
        return try body(folder)
    }
}

/// A program that was run to its end.
struct Finished {
    var status: Int32
    var output: String
    var errors: String

    /// - Parameter environment: what is set beside our own.
    static func run(
        _ program: String, _ arguments: [String], environment: [String: String] = [:]
    ) throws -> Finished {
        let process = Process()
        process.executableURL = URL(filePath: program)
        process.arguments = arguments
        var all: [String: String] = ProcessInfo.processInfo.environment
        all["SWIFT_BACKTRACE"] = "enable=no"
        all.merge(environment) { $1 }
        process.environment = all
        return try Folders.withNew { folder in
            // Files and not pipes, which would fill up.
            let files: [URL] = ["output", "errors"].map { folder.appending(path: $0) }
            for file in files {
                try Data().write(to: file)
            }
            process.standardOutput = try FileHandle(forWritingTo: files[0])
            process.standardError = try FileHandle(forWritingTo: files[1])
            process.standardInput = FileHandle.nullDevice
            try process.run()
            process.waitUntilExit()
            return Finished(
                status: process.terminationStatus,
                output: try String(contentsOf: files[0], encoding: .utf8),
                errors: try String(contentsOf: files[1], encoding: .utf8))
        }
    }
}

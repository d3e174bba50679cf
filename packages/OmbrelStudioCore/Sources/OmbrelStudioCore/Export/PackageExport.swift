import Foundation
import OmbrelRuntime

/// Writes a package with flows that an application can depend on.
public struct PackageExport {
    private let request: WireProjectExportRequest
    private let names: PackageNames

    /// Reads the request file.
    public init(requestPath path: String) throws {
        request = try withLargeStack { try WireProjectExportRequest(contentsOf: path) }
        names = try PackageNames(request.packageName)
    }

    /// Writes the package; returns where it is. A package that was exported there before is
    /// replaced, and what else is in its folder stays.
    public func write() throws -> URL {
        guard !request.flows.isEmpty else { throw GeneratorError("There is no flow to export.") }
        let place = try PackagePlace(
            destination: URL(filePath: request.destinationDirectory, directoryHint: .isDirectory),
            name: request.packageName)
        let runtime = try RuntimeSources(packagePath: request.runtimeSourcePath)
        let writer = try FolderWriter(root: place.beside, isPrivate: false)
        do {
            try withLargeStack { try write(to: writer, runtime) }
            try place.moveIn(files: writer.files)
        } catch {
            try? FileManager.default.removeItem(at: place.beside)
            throw error
        }
        return place.folder
    }

    private func write(to writer: FolderWriter, _ runtime: RuntimeSources) throws {
        let sources = "Sources/\(names.module)"
        var types = NameScope(
            reserved: SwiftNames.inScope.union([names.module, names.runtime, "FlowData"]))
        // Names of files and folders that differ in nothing but case are the same to some systems.
        var stems = NameScope(reserved: [names.toolsStem.lowercased(), "flowdata", "knowledge"])
        let tools: [ToolSource] = ToolSource.all(in: request.flows, scope: &types)
        var flows: [FlowSource] = []
        for spec in request.flows {
            let type: String = FlowNames.typeName(spec.name, scope: &types)
            let number: Substring = stems.claim(type.lowercased()).dropFirst(type.lowercased().count)
            let stem: String = type + number
            let flow = try FlowSource(
                spec, typeName: type,
                purpose: .package(runtime: names.runtime, folder: stem),
                knowledgeFolder: "../Knowledge/", tools: tools)
            try writer.write(flow.source, to: "\(sources)/\(stem).swift")
            try writer.write(try flow.data.encoded(), to: "\(sources)/Data/\(stem)/flow.json")
            for content in flow.knowledge {
                try writer.write(to: "\(sources)/Data/Knowledge/\(content.name)") {
                    try content.write(to: $0)
                }
            }
            flows.append(flow)
        }
        for (path, content) in runtime.files {
            try writer.write(content, to: "Sources/\(names.runtime)/\(path)")
        }
        try writer.write(toolsSource(tools), to: "\(sources)/\(names.toolsStem).swift")
        try writer.write(resourcesSource, to: "\(sources)/FlowData.swift")
        try writer.write(manifest, to: "Package.swift")
        try writer.write(
            PackageReadme(names: names, flows: flows, tools: tools).text, to: "README.md")
    }

    private var manifest: String {
        """
        // swift-tools-version: 6.2
        import PackageDescription

        let package = Package(
            name: \(SwiftLiteral.string(names.package)),
            platforms: [.macOS(.v26), .iOS(.v26)],
            products: [
                .library(name: "\(names.module)", targets: ["\(names.module)", "\(names.runtime)"])
            ],
            targets: [
                .target(
                    name: "\(names.module)",
                    dependencies: ["\(names.runtime)"],
                    resources: [.copy("Data")]),
                .target(name: "\(names.runtime)"),
            ]
        )

        """
    }

    private func toolsSource(_ tools: [ToolSource]) -> String {
        var source = SourceWriter()
        source.line("// Made by Ombrel Studio: the tools that the application implements.")
        for tool in tools {
            source.line()
            source.line("/// The tool “\(SwiftLiteral.comment(tool.name))”.")
            source.block("public protocol \(tool.protocolName): Sendable") { source in
                source.line("/// The answer, JSON as a rule. `input` is the output of the step before.")
                source.line("func call(_ input: String) async throws -> String")
            }
        }
        return source.text
    }

    private var resourcesSource: String {
        """
        import Foundation
        import \(names.runtime)

        extension FlowData {
            /// The data of a flow, from the package's resources.
            static func bundled(_ folder: String) throws -> FlowData {
                guard let data = Bundle.module.url(forResource: "Data", withExtension: nil) else {
                    throw FlowError("The resources of \(names.module) are missing.")
                }
                return try FlowData(directory: data.appending(path: folder))
            }
        }

        """
    }
}

/// The names of a package and what is in it.
struct PackageNames {
    let package: String
    let module: String
    let runtime: String
    var toolsStem: String { module + "Tools" }

    init(_ name: String) throws {
        guard !name.isEmpty, name != ".", name != "..", !name.contains("/"), !name.contains("\0")
        else { throw GeneratorError("“\(name)” is no name for a package.") }
        package = name
        module = FlowNames.typeName(name, reserved: [])
        runtime = module + "Runtime"
    }
}

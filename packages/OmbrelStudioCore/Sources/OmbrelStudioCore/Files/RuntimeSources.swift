import Foundation

/// The sources of the runtime that generated code is compiled with.
struct RuntimeSources {
    /// Paths within the sources' folder, and what is in them, in a fixed order.
    let files: [(path: String, content: Data)]
    /// Changes when a source does.
    let hash: String

    /// - Parameter path: folder of the package.
    init(packagePath path: String) throws {
        let package = URL(filePath: path, directoryHint: .isDirectory)
        guard let manifest = try? Data(contentsOf: package.appending(path: "Package.swift")) else {
            throw GeneratorError("OmbrelRuntime not found at \(path).")
        }
        let root: URL = package.appending(path: "Sources/OmbrelRuntime")
        var hash = ContentHash()
        manifest.withUnsafeBytes { hash.add($0) }
        var files: [(path: String, content: Data)] = []
        let paths: [String] =
            (FileManager.default.enumerator(atPath: root.path)?.allObjects as? [String] ?? [])
            .filter { $0.hasSuffix(".swift") }.sorted()
        for path in paths {
            do {
                files.append((path, try Data(contentsOf: root.appending(path: path))))
            } catch {
                throw GeneratorError("“\(root.path)/\(path)” can't be read: \(reason(error))")
            }
        }
        guard !files.isEmpty else {
            throw GeneratorError("OmbrelRuntime at \(path) has no sources.")
        }
        for (path, content) in files {
            hash.add(path)
            content.withUnsafeBytes { hash.add($0) }
        }
        self.files = files
        self.hash = hash.hexadecimal
    }
}

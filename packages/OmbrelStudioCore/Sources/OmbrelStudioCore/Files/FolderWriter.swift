import Foundation

/// Brings a folder to what it should hold, touching no file that is right already: a file that is
/// rewritten is compiled again.
final class FolderWriter {
    let root: URL
    private let isPrivate: Bool
    private var kept: Set<String> = []

    /// Makes the folder if there is none. What is private only the user can read.
    init(root: URL, isPrivate: Bool) throws {
        self.root = root
        self.isPrivate = isPrivate
        try makeFolder(root)
    }

    /// The paths of what was written, in order.
    var files: [String] { written.sorted() }
    private var written: Set<String> = []

    /// Makes the file hold the content. `path` is seen from the root.
    func write(_ content: Data, to path: String) throws {
        let url: URL = root.appending(path: path)
        keep(path)
        if let present = try? Data(contentsOf: url, options: .alwaysMapped), present == content {
            return
        }
        try makeFolder(url.deletingLastPathComponent())
        // Beside it first: whoever reads the file sees all of one content.
        let beside: String = url.path + ".part"
        unlink(beside)
        let file: Int32 = open(
            beside, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, isPrivate ? 0o600 : 0o644)
        guard file >= 0 else { throw failure(url) }
        do {
            let handle = FileHandle(fileDescriptor: file, closeOnDealloc: true)
            try handle.write(contentsOf: content)
            try handle.close()
        } catch {
            unlink(beside)
            throw GeneratorError("“\(url.path)” can't be written: \(reason(error))")
        }
        guard rename(beside, url.path) == 0 else { throw failure(url) }
    }

    private func failure(_ url: URL) -> GeneratorError {
        GeneratorError("“\(url.path)” can't be written: \(String(cString: strerror(errno))).")
    }

    func write(_ content: String, to path: String) throws {
        try write(Data(content.utf8), to: path)
    }

    /// Makes a file with `make` unless there is one: for files whose name tells their content.
    func write(to path: String, _ make: (URL) throws -> Void) throws {
        let url: URL = root.appending(path: path)
        keep(path)
        guard !FileManager.default.fileExists(atPath: url.path) else { return }
        try makeFolder(url.deletingLastPathComponent())
        try make(url)
        if !isPrivate {
            try? FileManager.default.setAttributes(
                [.posixPermissions: 0o644], ofItemAtPath: url.path)
        }
    }

    /// Removes the files of a folder that were not written here.
    func removeOthers(in folder: String) {
        let start: URL = root.appending(path: folder)
        guard let paths = FileManager.default.enumerator(atPath: start.path) else { return }
        for case let path as String in paths {
            let whole: String = folder + "/" + path
            if !kept.contains(whole) {
                try? FileManager.default.removeItem(at: root.appending(path: whole))
            }
        }
    }

    /// Remembers the path and the folders that lead to it.
    private func keep(_ path: String) {
        written.insert(path)
        var path = path
        while !path.isEmpty {
            kept.insert(path)
            path = path.lastIndex(of: "/").map { String(path[..<$0]) } ?? ""
        }
    }

    private func makeFolder(_ url: URL) throws {
        do {
            try FileManager.default.createDirectory(
                at: url, withIntermediateDirectories: true,
                attributes: isPrivate ? [.posixPermissions: 0o700] : nil)
        } catch {
            throw GeneratorError("“\(url.path)” can't be made: \(reason(error))")
        }
    }
}

/// The words of an error.
func reason(_ error: any Error) -> String {
    if let error = error as? POSIXError {
        return String(cString: strerror(error.code.rawValue))
    }
    if let inner = (error as? CocoaError)?.underlying {
        return reason(inner)
    }
    return (error as? any LocalizedError)?.errorDescription ?? String(describing: error)
}

import Foundation

/// Where a package goes. It is written beside and moved in when it is whole.
struct PackagePlace {
    let folder: URL
    /// The folder beside.
    let beside: URL

    /// Tells that a folder is ours, and lists what we wrote into it.
    private static let marker = ".ombrel-package"
    private static let firstLine = "Written by Ombrel Studio. Exporting again replaces these files:"

    /// Throws when something that isn't ours is in the way.
    init(destination: URL, name: String) throws {
        var isFolder: ObjCBool = false
        guard FileManager.default.fileExists(atPath: destination.path, isDirectory: &isFolder),
            isFolder.boolValue
        else { throw GeneratorError("There is no folder “\(destination.path)”.") }
        folder = destination.appending(path: name, directoryHint: .isDirectory)
        beside = destination.appending(
            path: ".\(name)-\(UUID().uuidString)", directoryHint: .isDirectory)
        var status = stat()
        guard lstat(folder.path, &status) == 0 else { return }
        let isEmpty: Bool =
            (try? FileManager.default.contentsOfDirectory(atPath: folder.path))?.isEmpty ?? false
        guard status.st_mode & S_IFMT == S_IFDIR, isEmpty || Self.listed(in: folder) != nil else {
            throw GeneratorError(
                "“\(folder.path)” is there already and wasn't exported by Ombrel Studio. Move it "
                    + "away, or choose another folder.")
        }
    }

    /// Moves what is beside to its place. Of what was there before, what we had written goes, and
    /// all else stays.
    func moveIn(files: [String]) throws {
        let list: String = ([Self.firstLine] + files).joined(separator: "\n") + "\n"
        do {
            try Data(list.utf8).write(to: beside.appending(path: Self.marker))
            let old: URL = beside.appendingPathExtension("old")
            var status = stat()
            let isThere: Bool = lstat(folder.path, &status) == 0
            if isThere {
                try FileManager.default.moveItem(at: folder, to: old)
            }
            do {
                try FileManager.default.moveItem(at: beside, to: folder)
            } catch {
                if isThere {
                    try? FileManager.default.moveItem(at: old, to: folder)
                }
                throw error
            }
            if isThere {
                try keepOthers(of: old)
                try FileManager.default.removeItem(at: old)
            }
        } catch {
            throw GeneratorError("“\(folder.path)” can't be written: \(reason(error))")
        }
    }

    /// Moves what we had not written from the old folder to the new one.
    private func keepOthers(of old: URL) throws {
        let ours: Set<String> = Self.listed(in: old) ?? []
        var ourFolders: Set<String> = [""]
        for var path in ours {
            while let slash = path.lastIndex(of: "/") {
                path = String(path[..<slash])
                ourFolders.insert(path)
            }
        }
        try keepOthers(of: old, below: "", ours, ourFolders)
    }

    private func keepOthers(
        of old: URL, below path: String, _ ours: Set<String>, _ ourFolders: Set<String>
    ) throws {
        let names: [String] = try FileManager.default.contentsOfDirectory(
            atPath: old.appending(path: path).path)
        for name in names {
            let inner: String = path.isEmpty ? name : "\(path)/\(name)"
            guard !ours.contains(inner), inner != Self.marker else { continue }
            let new: URL = folder.appending(path: inner)
            var status = stat()
            if lstat(new.path, &status) != 0 {
                try FileManager.default.createDirectory(
                    at: new.deletingLastPathComponent(), withIntermediateDirectories: true)
                if !ourFolders.contains(inner) {
                    try FileManager.default.moveItem(at: old.appending(path: inner), to: new)
                    continue
                }
            }
            if ourFolders.contains(inner) {
                try keepOthers(of: old, below: inner, ours, ourFolders)
            }
        }
    }

    /// The files that we wrote into a folder, nothing when it isn't ours.
    private static func listed(in folder: URL) -> Set<String>? {
        guard
            let text = try? String(
                contentsOf: folder.appending(path: marker), encoding: .utf8)
        else { return nil }
        let lines: [Substring] = text.split(separator: "\n")
        return lines.first.map(String.init) == firstLine
            ? Set(lines.dropFirst().map(String.init)) : nil
    }
}

import Synchronization
#if canImport(FoundationEssentials)
    import FoundationEssentials
#else
    import Foundation
#endif

/// The knowledge files of a folder, each opened when it is first asked for.
final class KnowledgeShelf: Sendable {
    private let directory: URL?
    private let opened = Mutex<[String: KnowledgeFile]>([:])

    init(directory: URL?) {
        self.directory = directory
    }

    func open(_ data: KnowledgeData) throws -> Knowledge {
        guard let directory else {
            throw FlowError("There is no folder that has the knowledge \(data.file).")
        }
        let file = try opened.withLock { opened in
            if let file = opened[data.file] {
                return file
            }
            let file = try KnowledgeFile(contentsOf: directory.appending(path: data.file))
            opened[data.file] = file
            return file
        }
        return Knowledge(
            file, indexKind: data.indexKind, topK: data.topK, threshold: data.threshold)
    }
}

import Foundation

/// Keeps others out of a folder as long as this lives, or the process does.
final class FolderLock {
    private let file: Int32

    /// Waits until nobody else has it.
    init(folder: URL) throws {
        let path: String = folder.appending(path: ".ombrel-lock").path
        file = open(path, O_RDWR | O_CREAT | O_CLOEXEC, 0o600)
        guard file >= 0 else {
            throw GeneratorError("“\(path)” can't be made: \(String(cString: strerror(errno))).")
        }
        while flock(file, LOCK_EX) != 0 && errno == EINTR {}
    }

    deinit {
        close(file)
    }
}

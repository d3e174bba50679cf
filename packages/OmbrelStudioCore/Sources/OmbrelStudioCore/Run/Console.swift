import Foundation

/// What people read while a tool works.
public enum Console {
    /// Writes a line to standard error at once.
    public static func say(_ line: String) {
        try? FileHandle.standardError.write(contentsOf: Data((line + "\n").utf8))
    }
}

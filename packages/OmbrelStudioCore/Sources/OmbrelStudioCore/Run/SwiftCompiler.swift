import CChildProcess
import Foundation

/// The Swift tool chain on the PATH.
struct SwiftCompiler {
    let path: String
    /// Changes when another compiler takes its place.
    let identity: String

    init() throws {
        let folders: [Substring] = (ProcessInfo.processInfo.environment["PATH"] ?? "/usr/bin:/bin")
            .split(separator: ":")
        let candidates: [String] = folders.map { $0 + "/swift" }
        guard let path = candidates.first(where: { access($0, X_OK) == 0 }) else {
            throw GeneratorError("There is no Swift tool chain: no “swift” on the PATH.")
        }
        self.path = path
        var identity: [String] = [path]
        // The command is small or a link; the compiler beside it is what changes.
        for name in ["swift", "swift-frontend"] {
            let file: String = URL(filePath: path).resolvingSymlinksInPath()
                .deletingLastPathComponent().appending(path: name).path
            var status = stat()
            if stat(file, &status) == 0 {
                identity.append("\(status.st_ino) \(status.st_size) \(modified(status))")
            }
        }
        identity.append(ProcessInfo.processInfo.environment["DEVELOPER_DIR"] ?? "")
        self.identity = identity.joined(separator: "\n")
    }

    /// Builds a package; what the compiler says goes to standard error.
    func build(package: URL, product: String) throws {
        // Interrupted it ends its compilers, which killed it would leave behind.
        let status: Int32 = try runChild(
            path,
            [
                "build", "--package-path", package.path, "--product", product,
                "--disable-index-store", "-debug-info-format", "none",
            ], outputToError: true, endSignal: SIGINT)
        guard status == 0 else {
            throw GeneratorError("The flow didn't compile — see the output above.")
        }
    }
}

/// Runs a program to its end and returns its exit status. Both its streams are ours.
func runChild(_ path: String, _ arguments: [String], outputToError: Bool, endSignal: Int32) throws -> Int32 {
    // A program that crashes says why; where in the machine is of no use to anybody.
    setenv("SWIFT_BACKTRACE", "enable=no", 0)
    var copies: [UnsafeMutablePointer<CChar>?] = ([path] + arguments).map { strdup($0) }
    defer { copies.forEach { free($0) } }
    copies.append(nil)
    let status: Int32 = childProcessRun(path, copies, outputToError ? 1 : 0, endSignal)
    guard status != -1 else {
        throw GeneratorError("“\(path)” can't be started: \(String(cString: strerror(errno))).")
    }
    let signal: Int32 = status & 0x7F
    guard signal == 0 else {
        throw GeneratorError(
            "\(URL(filePath: path).lastPathComponent) was ended by signal \(signal).")
    }
    return status >> 8 & 0xFF
}

/// When the file was last written, to the nanosecond.
func modified(_ status: stat) -> String {
    #if canImport(Darwin)
    "\(status.st_mtimespec.tv_sec).\(status.st_mtimespec.tv_nsec)"
    #else
    "\(status.st_mtim.tv_sec).\(status.st_mtim.tv_nsec)"
    #endif
}

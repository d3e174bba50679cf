import Foundation
import OmbrelStudioCore

// ExportCLI REQUEST.json: writes a package with all flows of the request. Says EXPORT_SUCCEEDED on
// standard output when all is written.

guard CommandLine.arguments.count == 2 else {
    Console.say("usage: ExportCLI REQUEST.json")
    exit(2)
}
do {
    let folder: URL = try PackageExport(requestPath: CommandLine.arguments[1]).write()
    print(folder.path)
    print("EXPORT_SUCCEEDED")
} catch {
    Console.say("✗ \(error)")
    exit(1)
}

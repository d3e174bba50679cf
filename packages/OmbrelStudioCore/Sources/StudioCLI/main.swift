import Foundation
import OmbrelStudioCore

// StudioCLI REQUEST.json: generates the flow's package, builds it and runs it. Events and results
// go to standard output, phases and what the compiler says to standard error.

guard CommandLine.arguments.count == 2 else {
    Console.say("usage: StudioCLI REQUEST.json")
    exit(2)
}
do {
    exit(try StudioRun(requestPath: CommandLine.arguments[1]).run(say: Console.say))
} catch {
    Console.say("✗ \(error)")
    exit(1)
}

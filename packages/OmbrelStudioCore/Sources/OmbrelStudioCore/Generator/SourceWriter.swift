/// Source text, line by line.
struct SourceWriter {
    private(set) var text = ""
    private var depth = 0

    mutating func line(_ content: String = "") {
        if !content.isEmpty {
            for _ in 0..<depth {
                text += "    "
            }
            text += content
        }
        text += "\n"
    }

    /// The head with an opening brace, what `body` writes further in, and the closing brace.
    mutating func block(_ head: String, _ body: (inout SourceWriter) throws -> Void) rethrows {
        line(head + " {")
        try indented(body)
        line("}")
    }

    mutating func indented(_ body: (inout SourceWriter) throws -> Void) rethrows {
        depth += 1
        try body(&self)
        depth -= 1
    }

    /// Lines that were written elsewhere.
    mutating func lines(_ other: SourceWriter) {
        for content in other.text.split(separator: "\n", omittingEmptySubsequences: false).dropLast() {
            line(String(content))
        }
    }
}

/// An agent's instructions with the values of the context fields that it reads: in place of
/// "{{context.NAME}}", and where a field has a value but no placeholder, after the instructions.
/// A field without a value gives an empty text; placeholders of other fields stay.
public func filledInstructions(
    _ instructions: String, fields: [String], value: (String) -> String?
) -> String {
    let opening = "{{context."
    var filled = ""
    var used = Set<String>()
    var rest = Substring(instructions)
    // What is put in is not looked at again.
    while let range = rest.firstRange(of: opening) {
        filled += rest[..<range.lowerBound]
        let after = rest[range.upperBound...]
        // Of names that fit, as "a" and "a}}b", the longest.
        let name = fields.filter { after.hasPrefix($0 + "}}") }.max { $0.count < $1.count }
        if let name {
            used.insert(name)
            filled += value(name) ?? ""
            rest = after.dropFirst(name.count + 2)
        } else {
            filled += opening
            rest = after
        }
    }
    filled += rest
    for field in fields where used.insert(field).inserted {
        if let value = value(field), !value.isEmpty {
            filled += "\n\n\(field):\n\(value)"
        }
    }
    return filled
}

/// Instructions with the passages that were found for a prompt, numbered from 1.
public func instructionsWithContext(_ instructions: String, passages: [Passage]) -> String {
    guard !passages.isEmpty else { return instructions }
    let numbered = passages.enumerated().map {
        "[\($0.offset + 1)] \($0.element.breadcrumb): \($0.element.text)"
    }
    return instructions + "\n\nContext:\n" + numbered.joined(separator: "\n\n")
}

/// The value in what a model wrote that was asked for one of a schema: the whole text, or the first
/// JSON object or array in it that fits, as between words or in a fenced block of code. Where the
/// schema is a string or a choice the text itself will do. Throws a `FlowError` that says what does
/// not fit, or that there is no JSON.
func valueInAnswer(_ text: String, schema: ValueSchema) throws -> FlowValue {
    let trimmed = text.trimmed()
    var firstProblem: (any Error)?
    func fitting(_ value: FlowValue) -> FlowValue? {
        do {
            return try schema.fitted(value)
        } catch {
            firstProblem = firstProblem ?? error
            return nil
        }
    }
    if let whole = try? FlowValue(json: trimmed), let value = fitting(whole) {
        return value
    }
    switch schema {
    case .string, .choice:
        if let value = fitting(.string(trimmed)) {
            return value
        }
    default:
        break
    }
    let bytes = Array(text.utf8)
    var start = 0
    // How many places of the text are tried as the start of a value.
    var candidates = 64
    while start < bytes.count, candidates > 0 {
        guard bytes[start] == UInt8(ascii: "{") || bytes[start] == UInt8(ascii: "[") else {
            start += 1
            continue
        }
        candidates -= 1
        guard let length = balancedLength(bytes[start...]),
            let found = try? FlowValue(
                json: String(decoding: bytes[start..<start + length], as: UTF8.self))
        else {
            start += 1
            continue
        }
        if let value = fitting(found) {
            return value
        }
        // What is in it is not an answer of its own.
        start += length
    }
    let problem = firstProblem.map { FlowError.message(of: $0) } ?? "The answer holds no JSON"
    throw FlowError(problem + ".")
}

/// The length of the object or array that starts the bytes, by its brackets; nothing when it does
/// not end.
private func balancedLength(_ bytes: ArraySlice<UInt8>) -> Int? {
    var depth = 0
    var isInString = false
    var index = bytes.startIndex
    while index < bytes.endIndex {
        switch bytes[index] {
        case UInt8(ascii: "\\") where isInString: index += 1
        case UInt8(ascii: "\""): isInString.toggle()
        case UInt8(ascii: "{") where !isInString, UInt8(ascii: "[") where !isInString: depth += 1
        case UInt8(ascii: "}") where !isInString, UInt8(ascii: "]") where !isInString:
            depth -= 1
            if depth == 0 {
                return index + 1 - bytes.startIndex
            }
        default: break
        }
        index += 1
    }
    return nil
}

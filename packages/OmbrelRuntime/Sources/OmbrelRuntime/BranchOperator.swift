/// How a branch compares.
public enum BranchOperator: String, Codable, Sendable {
    case equals, contains, isEmpty, greaterThan, lessThan

    /// How the operator reads in a trace.
    public var symbol: String {
        switch self {
        case .equals: "="
        case .contains: "contains"
        case .isEmpty: "is empty"
        case .greaterThan: ">"
        case .lessThan: "<"
        }
    }

    /// Compares a property with the text that the branch was given. A missing property, nothing or
    /// null, is empty and nothing else.
    public func holds(_ value: FlowValue?, against text: String) -> Bool {
        guard let value, !value.isNull else { return self == .isEmpty }
        switch self {
        case .equals:
            switch value {
            case .string(let string):
                return string == text
            case .bool(let bool):
                return text.trimmed().lowercased() == (bool ? "true" : "false")
            case .int, .double, .number:
                guard let left = value.number, let right = Self.number(text) else { return false }
                return left == right
            case .null, .array, .object:
                return value.json == text
            }
        case .contains:
            // Of a list its texts.
            if case .array(let values) = value {
                return values.contains { holds($0, against: text) }
            }
            let (whole, part) = (value.text.lowercased(), text.lowercased())
            return part.isEmpty || whole.firstRange(of: part) != nil
        case .isEmpty:
            switch value {
            case .string(let string): return string.isEmpty
            case .array(let values): return values.isEmpty
            case .object(let members): return members.isEmpty
            default: return false
            }
        case .greaterThan, .lessThan:
            guard let left = value.number, let right = Self.number(text) else { return false }
            return self == .greaterThan ? left > right : left < right
        }
    }

    private static func number(_ text: String) -> Double? {
        guard let number = Double(text.trimmed()), !number.isNaN else { return nil }
        return number
    }
}

extension String {
    /// The text without white space and line feeds at its ends.
    func trimmed() -> String {
        let scalars = unicodeScalars
        guard let first = scalars.firstIndex(where: { !$0.properties.isWhitespace }),
            let last = scalars.lastIndex(where: { !$0.properties.isWhitespace })
        else { return "" }
        return String(scalars[first...last])
    }
}

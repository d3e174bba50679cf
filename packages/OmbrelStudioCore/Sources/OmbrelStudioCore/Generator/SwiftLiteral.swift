/// Text as Swift source.
enum SwiftLiteral {
    /// A string literal whose value is exactly the text, in plain sight: what can't be seen, or
    /// changes how a line is shown, is escaped.
    static func string(_ text: String) -> String {
        var literal = "\""
        for scalar in text.unicodeScalars {
            switch scalar {
            case "\"": literal += "\\\""
            case "\\": literal += "\\\\"
            case "\n": literal += "\\n"
            case "\r": literal += "\\r"
            case "\t": literal += "\\t"
            default:
                if isPlain(scalar), literal.utf8.count > 1 || !isMark(scalar) {
                    literal.unicodeScalars.append(scalar)
                } else {
                    literal += "\\u{\(String(scalar.value, radix: 16, uppercase: true))}"
                }
            }
        }
        return literal + "\""
    }

    /// The text as part of a comment of one line, shortened.
    static func comment(_ text: String) -> String {
        var comment = ""
        for scalar in text.unicodeScalars {
            if comment.unicodeScalars.count == 80 {
                return comment + "…"
            }
            comment.unicodeScalars.append(isPlain(scalar) ? scalar : " ")
        }
        return comment
    }

    private static func isPlain(_ scalar: Unicode.Scalar) -> Bool {
        switch scalar.properties.generalCategory {
        case .control, .format, .lineSeparator, .paragraphSeparator, .unassigned, .privateUse:
            return false
        default:
            return !scalar.properties.isDefaultIgnorableCodePoint
        }
    }

    private static func isMark(_ scalar: Unicode.Scalar) -> Bool {
        scalar.properties.isGraphemeExtend
    }
}

/// Identifiers from names of any content.
///
/// Letters and digits of any script stay, all else parts words. What is made of names of nothing
/// else is the fallback.
enum SwiftIdentifier {
    /// "Order ID" becomes "orderID", "HTTPServer" "httpServer", "2nd" "fallback2nd".
    static func lowerCamel(_ name: String, fallback: String) -> String {
        let words: [String] = words(of: name)
        guard let first = words.first else { return fallback }
        let rest: String = words.dropFirst().map(capitalised).joined()
        return startingWithLetter(uncapitalised(first) + rest, fallback: fallback)
    }

    /// "order id" becomes "OrderId".
    static func upperCamel(_ name: String, fallback: String) -> String {
        let words: [String] = words(of: name)
        guard !words.isEmpty else { return fallback }
        return startingWithLetter(words.map(capitalised).joined(), fallback: fallback)
    }

    /// How the identifier is written in source.
    static func escaped(_ identifier: String) -> String {
        keywords.contains(identifier) ? "`\(identifier)`" : identifier
    }

    private static let longest = 60

    private static func words(of name: String) -> [String] {
        var words: [String] = []
        var word = ""
        var length = 0
        for scalar in name.unicodeScalars {
            if isLetterOrDigit(scalar) {
                // Names as long as a page are cut.
                length += 1
                guard length <= longest else { break }
                word.unicodeScalars.append(scalar)
            } else if !word.isEmpty {
                words.append(word)
                word = ""
            }
        }
        if !word.isEmpty {
            words.append(word)
        }
        return words
    }

    private static func isLetterOrDigit(_ scalar: Unicode.Scalar) -> Bool {
        switch scalar.value {
        case 0x30...0x39, 0x41...0x5A, 0x61...0x7A: return true
        case 0..<0xC0, 0xD7, 0xF7, 0x180E, 0x2000..<0x2C00, 0x2E00..<0x3040, 0xD800...: return false
        default: break
        }
        switch scalar.properties.generalCategory {
        case .uppercaseLetter, .lowercaseLetter, .titlecaseLetter, .otherLetter:
            // Letters that look like blanks are left out.
            return scalar.properties.isXIDStart
                && !scalar.properties.isDefaultIgnorableCodePoint
        default:
            return false
        }
    }

    private static func startingWithLetter(_ identifier: String, fallback: String) -> String {
        identifier.first!.isNumber ? fallback + identifier : identifier
    }

    private static func capitalised(_ word: String) -> String {
        word.prefix(1).uppercased() + word.dropFirst()
    }

    /// Lower case up to where the first word within the word ends.
    private static func uncapitalised(_ word: String) -> String {
        let capitals: Substring = word.prefix { $0.isUppercase }
        guard !capitals.isEmpty else { return word }
        let rest: Substring = word.dropFirst(capitals.count)
        if capitals.count > 1, let next = rest.first, next.isLetter {
            return capitals.dropLast().lowercased() + String(capitals.last!) + rest
        }
        return capitals.lowercased() + rest
    }

    private static let keywords: Set<String> = [
        "as", "associatedtype", "async", "await", "break", "case", "catch", "class", "continue",
        "default", "defer", "deinit", "do", "else", "enum", "extension", "fallthrough", "false",
        "fileprivate", "for", "func", "guard", "if", "import", "in", "inout", "internal", "is",
        "let", "nil", "operator", "precedencegroup", "private", "protocol", "public",
        "repeat", "rethrows", "return", "static", "struct", "subscript", "switch", "throw",
        "throws", "true", "try", "typealias", "var", "where", "while",
    ]
}

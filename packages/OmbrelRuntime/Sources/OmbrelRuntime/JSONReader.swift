/// Reads JSON strictly, but for half surrogates, which read as U+FFFD.
struct JSONReader {
    private static let maximumDepth = 256

    private let bytes: UnsafeBufferPointer<UInt8>
    private var offset = 0
    private var depth = 0

    init(_ bytes: UnsafeBufferPointer<UInt8>) {
        self.bytes = bytes
    }

    mutating func readDocument() throws -> FlowValue {
        skipBlanks()
        let value = try readValue()
        skipBlanks()
        guard offset == bytes.count else { throw fault("there is more after the value") }
        return value
    }

    private var next: UInt8? { offset < bytes.count ? bytes[offset] : nil }

    private func fault(_ what: String) -> FlowError {
        FlowError("This is not JSON: \(what), at byte \(offset).")
    }

    private mutating func skipBlanks() {
        while let byte = next, byte == 0x20 || byte == 0x0A || byte == 0x0D || byte == 0x09 {
            offset += 1
        }
    }

    private mutating func take(_ byte: UInt8) -> Bool {
        guard next == byte else { return false }
        offset += 1
        return true
    }

    private mutating func take(word: StaticString) -> Bool {
        let count = word.utf8CodeUnitCount
        guard offset + count <= bytes.count else { return false }
        for i in 0..<count where bytes[offset + i] != word.utf8Start[i] {
            return false
        }
        offset += count
        return true
    }

    private mutating func readValue() throws -> FlowValue {
        switch next {
        case UInt8(ascii: "{"): return try readObject()
        case UInt8(ascii: "["): return try readArray()
        case UInt8(ascii: "\""): return .string(try readString())
        case UInt8(ascii: "t") where take(word: "true"): return .bool(true)
        case UInt8(ascii: "f") where take(word: "false"): return .bool(false)
        case UInt8(ascii: "n") where take(word: "null"): return .null
        case let byte? where byte == UInt8(ascii: "-") || byte &- 0x30 < 10: return try readNumber()
        case nil: throw fault("it ends too early")
        default: throw fault("a value was expected")
        }
    }

    private mutating func enter() throws {
        depth += 1
        guard depth <= Self.maximumDepth else {
            throw fault("it is nested more than \(Self.maximumDepth) levels deep")
        }
        offset += 1
        skipBlanks()
    }

    private mutating func readArray() throws -> FlowValue {
        try enter()
        defer { depth -= 1 }
        var values: [FlowValue] = []
        if take(UInt8(ascii: "]")) {
            return .array(values)
        }
        while true {
            values.append(try readValue())
            skipBlanks()
            if take(UInt8(ascii: "]")) {
                return .array(values)
            }
            guard take(UInt8(ascii: ",")) else { throw fault("a comma or ] was expected") }
            skipBlanks()
        }
    }

    private mutating func readObject() throws -> FlowValue {
        try enter()
        defer { depth -= 1 }
        var members: [(key: String, value: FlowValue)] = []
        if take(UInt8(ascii: "}")) {
            return .object(FlowValue.Members())
        }
        while true {
            guard next == UInt8(ascii: "\"") else { throw fault("a key was expected") }
            let key = try readString()
            skipBlanks()
            guard take(UInt8(ascii: ":")) else { throw fault("a colon was expected") }
            skipBlanks()
            members.append((key: key, value: try readValue()))
            skipBlanks()
            if take(UInt8(ascii: "}")) {
                return .object(FlowValue.Members(members))
            }
            guard take(UInt8(ascii: ",")) else { throw fault("a comma or } was expected") }
            skipBlanks()
        }
    }

    private mutating func readString() throws -> String {
        offset += 1
        var text = ""
        var start = offset
        while let byte = next {
            switch byte {
            case UInt8(ascii: "\""):
                text += String(decoding: bytes[start..<offset], as: UTF8.self)
                offset += 1
                return text
            case UInt8(ascii: "\\"):
                text += String(decoding: bytes[start..<offset], as: UTF8.self)
                offset += 1
                text.unicodeScalars.append(try readEscape())
                start = offset
            case 0..<0x20:
                throw fault("a control character stands in a string")
            default:
                offset += 1
            }
        }
        throw fault("a string does not end")
    }

    private mutating func readEscape() throws -> Unicode.Scalar {
        guard let byte = next else { throw fault("a string does not end") }
        offset += 1
        switch byte {
        case UInt8(ascii: "\""), UInt8(ascii: "\\"), UInt8(ascii: "/"): return Unicode.Scalar(byte)
        case UInt8(ascii: "b"): return "\u{8}"
        case UInt8(ascii: "f"): return "\u{C}"
        case UInt8(ascii: "n"): return "\n"
        case UInt8(ascii: "r"): return "\r"
        case UInt8(ascii: "t"): return "\t"
        case UInt8(ascii: "u"): break
        default:
            offset -= 1
            throw fault("there is no such escape")
        }
        let unit = try readHexUnit()
        if let scalar = Unicode.Scalar(unit) {
            return scalar
        }
        // The second half, if there is one.
        let back = offset
        if unit < 0xDC00, take(UInt8(ascii: "\\")), take(UInt8(ascii: "u")) {
            let low = try readHexUnit()
            if low >= 0xDC00, low < 0xE000 {
                return Unicode.Scalar(0x10000 + (unit - 0xD800) << 10 + (low - 0xDC00))!
            }
        }
        offset = back
        return "\u{FFFD}"
    }

    private mutating func readHexUnit() throws -> UInt32 {
        var unit: UInt32 = 0
        for _ in 0..<4 {
            guard let byte = next, let digit = Character(Unicode.Scalar(byte)).hexDigitValue else {
                throw fault("four hexadecimal digits were expected")
            }
            unit = unit << 4 | UInt32(digit)
            offset += 1
        }
        return unit
    }

    private mutating func skipDigits() -> Int {
        let start = offset
        while let byte = next, byte >= UInt8(ascii: "0"), byte <= UInt8(ascii: "9") {
            offset += 1
        }
        return offset - start
    }

    private mutating func readNumber() throws -> FlowValue {
        let start = offset
        _ = take(UInt8(ascii: "-"))
        let first = next
        let whole = skipDigits()
        guard whole == 1 || whole > 1 && first != UInt8(ascii: "0") else {
            throw fault("a number is not written as JSON writes numbers")
        }
        var isWhole = true
        if take(UInt8(ascii: ".")) {
            isWhole = false
            guard skipDigits() > 0 else { throw fault("digits were expected") }
        }
        if take(UInt8(ascii: "e")) || take(UInt8(ascii: "E")) {
            isWhole = false
            _ = take(UInt8(ascii: "+")) || take(UInt8(ascii: "-"))
            guard skipDigits() > 0 else { throw fault("digits were expected") }
        }
        let text = String(decoding: bytes[start..<offset], as: UTF8.self)
        if isWhole, let value = Int(text) {
            return .int(value)
        }
        if let value = Double(text), value.isFinite,
            DecimalForm(text) == DecimalForm(String(value))
        {
            return .double(value)
        }
        return .number(text)
    }
}

/// What a decimal number says, however it is written: its digits without zeros at the ends, and
/// the power of ten of the last one.
private struct DecimalForm: Equatable {
    var isNegative = false
    var digits: [UInt8] = []
    var exponent = 0

    init(_ text: String) {
        var isFraction = false
        var bytes = text.utf8[...]
        if bytes.first == UInt8(ascii: "-") {
            isNegative = true
            bytes = bytes.dropFirst()
        }
        while let byte = bytes.popFirst() {
            switch byte {
            case UInt8(ascii: "."): isFraction = true
            case UInt8(ascii: "e"), UInt8(ascii: "E"):
                // An exponent beyond what is counted here is beyond what doubles have.
                let written = Int(String(Substring(bytes))) ?? 0
                let (sum, isTooGreat) = exponent.addingReportingOverflow(written)
                exponent = isTooGreat ? 0 : sum
                bytes = bytes.suffix(0)
            default:
                digits.append(byte)
                exponent -= isFraction ? 1 : 0
            }
        }
        while digits.last == UInt8(ascii: "0") {
            digits.removeLast()
            exponent += 1
        }
        digits.removeFirst(digits.prefix { $0 == UInt8(ascii: "0") }.count)
        if digits.isEmpty {
            exponent = 0
            isNegative = false
        }
    }
}

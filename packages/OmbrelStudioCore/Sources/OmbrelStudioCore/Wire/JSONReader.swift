#if canImport(Darwin)
import Darwin
#else
import Glibc
#endif

/// Reads JSON text front to back, straight from its bytes and without a tree of nodes: a request
/// holds millions of numbers.
///
/// The bytes must outlive the reader. Strings that are not valid UTF-8 are repaired.
struct JSONReader {
    /// How deep values may lie in each other. A step of a flow takes four levels.
    static let maximumDepth = 40_000

    private let bytes: UnsafeBufferPointer<UInt8>
    private(set) var position = 0
    private var depth = 0

    init(_ bytes: UnsafeBufferPointer<UInt8>) {
        self.bytes = bytes
    }

    // MARK: Values

    /// Reads an object; `member` is called for each key and must read its value.
    mutating func readObject(_ member: (String, inout JSONReader) throws -> Void) throws {
        try open(UInt8(ascii: "{"), "an object")
        if !closes(UInt8(ascii: "}")) {
            repeat {
                guard peek() == UInt8(ascii: "\"") else { throw unexpected("a key") }
                let key: String = try readString()
                guard closes(UInt8(ascii: ":")) else { throw unexpected("“:”") }
                do {
                    try member(key, &self)
                } catch let error as WireError {
                    throw error.below(key)
                }
            } while closes(UInt8(ascii: ","))
            guard closes(UInt8(ascii: "}")) else { throw unexpected("“,” or “}”") }
        }
        depth -= 1
    }

    /// Reads an array; `element` is called for each element and must read it.
    mutating func readArray(_ element: (inout JSONReader) throws -> Void) throws {
        try open(UInt8(ascii: "["), "an array")
        if !closes(UInt8(ascii: "]")) {
            var index = 0
            repeat {
                do {
                    try element(&self)
                } catch let error as WireError {
                    throw error.below(String(index))
                }
                index += 1
            } while closes(UInt8(ascii: ","))
            guard closes(UInt8(ascii: "]")) else { throw unexpected("“,” or “]”") }
        }
        depth -= 1
    }

    /// Reads an array whose elements `element` makes.
    mutating func readList<Element>(
        _ element: (inout JSONReader) throws -> Element
    ) throws -> [Element] {
        var list: [Element] = []
        try readArray { reader in list.append(try element(&reader)) }
        return list
    }

    mutating func readString() throws -> String {
        guard peek() == UInt8(ascii: "\"") else { throw unexpected("a string") }
        position += 1
        let start = position
        while position < bytes.count {
            let byte = bytes[position]
            if byte == UInt8(ascii: "\"") {
                position += 1
                return text(from: start, to: position - 1)
            }
            if byte == UInt8(ascii: "\\") {
                return try readEscapedString(from: start)
            }
            guard byte >= 0x20 else { throw WireError("a control character in a string") }
            position += 1
        }
        throw WireError("the text ends within a string")
    }

    /// Reads an integer of 64 bits; a number like 3.0 counts as one.
    mutating func readInt() throws -> Int {
        let number = try scanNumber()
        if number.isInteger, number.isExact {
            if number.isNegative {
                if number.digits <= UInt64(Int.max) { return -Int(number.digits) }
                if number.digits == UInt64(Int.max) + 1 { return Int.min }
            } else if number.digits <= UInt64(Int.max) {
                return Int(number.digits)
            }
        } else if let value = Int(exactly: doubleValue(of: number)) {
            return value
        }
        throw WireError("an integer of 64 bits was expected")
    }

    mutating func readDouble() throws -> Double {
        doubleValue(of: try scanNumber())
    }

    mutating func readDoubles() throws -> [Double] {
        var numbers: [Double] = []
        try open(UInt8(ascii: "["), "an array")
        if !closes(UInt8(ascii: "]")) {
            repeat {
                numbers.append(try readDouble())
            } while closes(UInt8(ascii: ","))
            guard closes(UInt8(ascii: "]")) else { throw unexpected("“,” or “]”") }
        }
        depth -= 1
        return numbers
    }

    /// Reads a UUID and returns it as it is written.
    mutating func readUUID() throws -> String {
        let text: String = try readString()
        var index = 0
        for byte in text.utf8 {
            let isDash: Bool = index == 8 || index == 13 || index == 18 || index == 23
            guard isDash ? byte == UInt8(ascii: "-") : Self.isHexadecimal(byte) else {
                index = -1
                break
            }
            index += 1
        }
        guard index == 36 else { throw WireError("“\(text)” is no UUID.") }
        return text
    }

    private static func isHexadecimal(_ byte: UInt8) -> Bool {
        0x30...0x39 ~= byte || 0x41...0x46 ~= byte || 0x61...0x66 ~= byte
    }

    mutating func readBool() throws -> Bool {
        skipWhitespace()
        if skipLiteral("true") { return true }
        if skipLiteral("false") { return false }
        throw unexpected("true or false")
    }

    /// Steps over a null if there is one.
    mutating func readNull() -> Bool {
        skipWhitespace()
        return skipLiteral("null")
    }

    /// Steps over any value and tells where it lay.
    @discardableResult
    mutating func skipValue() throws -> Range<Int> {
        skipWhitespace()
        let start = position
        var open: [UInt8] = []
        repeat {
            skipWhitespace()
            guard position < bytes.count else { throw WireError("the text ends within a value") }
            let byte = bytes[position]
            switch byte {
            case UInt8(ascii: "{"), UInt8(ascii: "["):
                guard depth + open.count < Self.maximumDepth else { throw Self.tooDeep }
                // The bracket that closes it is two further on.
                open.append(byte + 2)
                position += 1
            case UInt8(ascii: "}"), UInt8(ascii: "]"):
                guard open.popLast() == byte else { throw unexpected("a value") }
                position += 1
            case UInt8(ascii: ","), UInt8(ascii: ":"):
                guard !open.isEmpty else { throw unexpected("a value") }
                position += 1
            case UInt8(ascii: "\""):
                try skipString()
            default:
                try skipScalar()
            }
        } while !open.isEmpty
        return start..<position
    }

    /// Throws unless nothing but white space is left.
    mutating func finish() throws {
        skipWhitespace()
        guard position == bytes.count else {
            throw WireError("text after the value, at byte \(position)")
        }
    }

    // MARK: Pieces

    private static let tooDeep = WireError("values lie too deep in each other")

    private mutating func open(_ bracket: UInt8, _ what: String) throws {
        guard closes(bracket) else { throw unexpected(what) }
        depth += 1
        guard depth <= Self.maximumDepth else { throw Self.tooDeep }
    }

    /// Steps over the byte if it comes next.
    private mutating func closes(_ byte: UInt8) -> Bool {
        guard peek() == byte else { return false }
        position += 1
        return true
    }

    private mutating func peek() -> UInt8? {
        skipWhitespace()
        return position < bytes.count ? bytes[position] : nil
    }

    private mutating func skipWhitespace() {
        while position < bytes.count {
            switch bytes[position] {
            case 0x20, 0x0A, 0x0D, 0x09: position += 1
            default: return
            }
        }
    }

    private mutating func skipLiteral(_ literal: StaticString) -> Bool {
        let length: Int = literal.utf8CodeUnitCount
        guard bytes.count - position >= length,
            memcmp(bytes.baseAddress! + position, literal.utf8Start, length) == 0
        else { return false }
        position += length
        return true
    }

    private mutating func skipString() throws {
        position += 1
        while position < bytes.count {
            switch bytes[position] {
            case UInt8(ascii: "\""):
                position += 1
                return
            case UInt8(ascii: "\\"):
                position += 2
            default:
                position += 1
            }
        }
        throw WireError("the text ends within a string")
    }

    private mutating func skipScalar() throws {
        if skipLiteral("true") || skipLiteral("false") || skipLiteral("null") { return }
        let start = position
        while position < bytes.count {
            switch bytes[position] {
            case 0x30...0x39, 0x2B, 0x2D, 0x2E, 0x45, 0x65: position += 1
            default:
                guard position > start else { throw unexpected("a value") }
                return
            }
        }
    }

    private func unexpected(_ what: String) -> WireError {
        position < bytes.count
            ? WireError("\(what) was expected at byte \(position)")
            : WireError("the text ends where \(what) was expected")
    }

    private func text(from start: Int, to end: Int) -> String {
        String(decoding: UnsafeBufferPointer(rebasing: bytes[start..<end]), as: UTF8.self)
    }

    private mutating func readEscapedString(from start: Int) throws -> String {
        var content: [UInt8] = Array(bytes[start..<position])
        while position < bytes.count {
            let byte = bytes[position]
            position += 1
            switch byte {
            case UInt8(ascii: "\""):
                return String(decoding: content, as: UTF8.self)
            case UInt8(ascii: "\\"):
                try readEscape(into: &content)
            default:
                guard byte >= 0x20 else { throw WireError("a control character in a string") }
                content.append(byte)
            }
        }
        throw WireError("the text ends within a string")
    }

    private mutating func readEscape(into content: inout [UInt8]) throws {
        guard position < bytes.count else { throw WireError("the text ends within a string") }
        let byte = bytes[position]
        position += 1
        switch byte {
        case UInt8(ascii: "\""), UInt8(ascii: "\\"), UInt8(ascii: "/"): content.append(byte)
        case UInt8(ascii: "b"): content.append(0x08)
        case UInt8(ascii: "f"): content.append(0x0C)
        case UInt8(ascii: "n"): content.append(0x0A)
        case UInt8(ascii: "r"): content.append(0x0D)
        case UInt8(ascii: "t"): content.append(0x09)
        case UInt8(ascii: "u"):
            var code: UInt32 = try readHexadecimal()
            if 0xD800..<0xDC00 ~= code, position + 1 < bytes.count,
                bytes[position] == UInt8(ascii: "\\"), bytes[position + 1] == UInt8(ascii: "u")
            {
                let before = position
                position += 2
                let low: UInt32 = try readHexadecimal()
                if 0xDC00..<0xE000 ~= low {
                    code = 0x10000 + (code - 0xD800) << 10 + (low - 0xDC00)
                } else {
                    position = before
                }
            }
            // Half of a pair stands for no character.
            let scalar: Unicode.Scalar = Unicode.Scalar(code) ?? "\u{FFFD}"
            content.append(contentsOf: UTF8.encode(scalar)!)
        default:
            throw WireError("an unknown escape in a string")
        }
    }

    private mutating func readHexadecimal() throws -> UInt32 {
        var code: UInt32 = 0
        for _ in 0..<4 {
            guard position < bytes.count,
                let digit = Character(Unicode.Scalar(bytes[position])).hexDigitValue
            else { throw WireError("an unknown escape in a string") }
            code = code << 4 | UInt32(digit)
            position += 1
        }
        return code
    }

    // MARK: Numbers

    /// A number as written: `digits` × 10^`exponent` when `isExact`.
    private struct ScannedNumber {
        var isNegative = false
        var digits: UInt64 = 0
        var exponent = 0
        /// No fraction and no exponent was written.
        var isInteger = true
        /// All digits fit into `digits`.
        var isExact = true
        var range: Range<Int> = 0..<0
    }

    private mutating func scanNumber() throws -> ScannedNumber {
        skipWhitespace()
        var number = ScannedNumber()
        let start = position
        if position < bytes.count, bytes[position] == UInt8(ascii: "-") {
            number.isNegative = true
            position += 1
        }
        let whole: Int = scanDigits(into: &number)
        guard whole > 0, whole == 1 || bytes[position - whole] != UInt8(ascii: "0") else {
            position = start
            throw unexpected("a number")
        }
        if position < bytes.count, bytes[position] == UInt8(ascii: ".") {
            position += 1
            let decimals: Int = scanDigits(into: &number)
            guard decimals > 0 else { throw unexpected("a digit") }
            number.exponent -= decimals
            number.isInteger = false
        }
        if position < bytes.count, bytes[position] | 0x20 == UInt8(ascii: "e") {
            position += 1
            number.isInteger = false
            var isNegative = false
            if position < bytes.count,
                bytes[position] == UInt8(ascii: "-") || bytes[position] == UInt8(ascii: "+")
            {
                isNegative = bytes[position] == UInt8(ascii: "-")
                position += 1
            }
            var exponent = ScannedNumber()
            guard scanDigits(into: &exponent) > 0 else { throw unexpected("a digit") }
            let size = Int(min(exponent.digits, 1_000_000))
            number.exponent += isNegative ? -size : size
        }
        number.range = start..<position
        return number
    }

    /// Adds the digits that come next; returns how many there are.
    private mutating func scanDigits(into number: inout ScannedNumber) -> Int {
        let start = position
        while position < bytes.count {
            let digit: UInt8 = bytes[position] &- UInt8(ascii: "0")
            guard digit < 10 else { break }
            if number.digits < 1_000_000_000_000_000_000 {
                number.digits = number.digits * 10 + UInt64(digit)
            } else {
                number.isExact = false
            }
            position += 1
        }
        return position - start
    }

    private func doubleValue(of number: ScannedNumber) -> Double {
        if number.isExact {
            if number.digits == 0 {
                return number.isNegative ? -0.0 : 0.0
            }
            if let size = Self.fastDouble(number.digits, exponent: number.exponent) {
                return number.isNegative ? -size : size
            }
        }
        // A copy, since the bytes need not end behind the number.
        var copy: [CChar] = bytes[number.range].map { CChar(bitPattern: $0) }
        copy.append(0)
        return strtod(copy, nil)
    }

    #if arch(x86_64) && !os(Windows)
    /// The powers of ten that 64 bits of precision hold exactly.
    private static let powers: [Float80] = {
        var powers: [Float80] = [1]
        for _ in 1...27 {
            powers.append(powers[powers.count - 1] * 10)
        }
        return powers
    }()

    /// The nearest number, or nothing where that takes more precision than there is.
    private static func fastDouble(_ digits: UInt64, exponent: Int) -> Double? {
        guard abs(exponent) < powers.count else { return nil }
        let power: Float80 = powers[abs(exponent)]
        // Rounded to 64 bits once. Rounding that to 53 bits gives the nearest number, unless it
        // seems to lie right between two: then it may be either.
        let number: Float80 = exponent < 0 ? Float80(digits) / power : Float80(digits) * power
        guard number.significandBitPattern & 0x7FF != 0x400 else { return nil }
        return Double(number)
    }
    #else
    private static let powers: [Double] = [
        1, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15, 1e16,
        1e17, 1e18, 1e19, 1e20, 1e21, 1e22,
    ]

    /// The nearest number, or nothing where that takes more precision than there is.
    private static func fastDouble(_ digits: UInt64, exponent: Int) -> Double? {
        guard digits < 1 << 53, abs(exponent) < powers.count else { return nil }
        let power: Double = powers[abs(exponent)]
        return exponent < 0 ? Double(digits) / power : Double(digits) * power
    }
    #endif
}

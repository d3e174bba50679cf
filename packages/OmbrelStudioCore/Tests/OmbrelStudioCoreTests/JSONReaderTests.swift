import Foundation
import Testing

@testable import OmbrelStudioCore

@Suite struct JSONReaderTests {
    private func read<Value>(
        _ text: String, _ body: (inout JSONReader) throws -> Value
    ) throws -> Value {
        let bytes: [UInt8] = Array(text.utf8)
        return try bytes.withUnsafeBufferPointer { buffer in
            var reader = JSONReader(buffer)
            let value: Value = try body(&reader)
            try reader.finish()
            return value
        }
    }

    @Test func numbersAreTheNearestOnes() throws {
        var generator = SeededGenerator(seed: 1)
        for _ in 0..<200_000 {
            let number = Double(bitPattern: generator.next())
            guard number.isFinite else { continue }
            let text = "\(number)"
            let value: Double = try read(text) { try $0.readDouble() }
            #expect(value.bitPattern == number.bitPattern, "\(text)")
        }
        for _ in 0..<200_000 {
            let number = Double.random(in: -1...1, using: &generator)
            for text in ["\(number)", String(format: "%.9f", number), String(format: "%.25e", number)] {
                let value: Double = try read(text) { try $0.readDouble() }
                #expect(value.bitPattern == strtod(text, nil).bitPattern, "\(text)")
            }
        }
    }

    @Test(arguments: ["0", "-0.0", "1e5", "1E+2", "9007199254740993", "1e400", "4.9e-324", "0.1e1",
        "123456789012345678901234567890", "1.7976931348623157e308"])
    func numbersOfEveryForm(text: String) throws {
        let value: Double = try read(text) { try $0.readDouble() }
        #expect(value.bitPattern == strtod(text, nil).bitPattern)
    }

    @Test(arguments: ["", "-", "01", "1.", ".5", "1e", "+1", "0x10", "NaN", "1 2", "\"1\""])
    func whatIsNoNumberIsRefused(text: String) {
        #expect(throws: WireError.self) { try read(text) { try $0.readDouble() } }
    }

    @Test func integersHaveSixtyFourBits() throws {
        #expect(try read("9223372036854775807") { try $0.readInt() } == .max)
        #expect(try read("-9223372036854775808") { try $0.readInt() } == .min)
        #expect(try read("3.0") { try $0.readInt() } == 3)
        #expect(throws: WireError.self) { try read("9223372036854775808") { try $0.readInt() } }
        #expect(throws: WireError.self) { try read("2.5") { try $0.readInt() } }
    }

    @Test func stringsAreUnescaped() throws {
        let text = #""\"\\\/\b\f\n\r\t\u0041\uD83D\uDE00 \uD83D \uDE00 é""#
        let value: String = try read(text) { try $0.readString() }
        #expect(value == "\"\\/\u{8}\u{C}\n\r\tA😀 \u{FFFD} \u{FFFD} é")
    }

    @Test(arguments: ["\"", "\"\\\"", "\"\\x\"", "\"\\u12G4\"", "\"\n\"", "\"\\u00", "abc"])
    func stringsThatAreBrokenAreRefused(text: String) {
        #expect(throws: WireError.self) { try read(text) { try $0.readString() } }
    }

    @Test func valuesThatLieTooDeepAreRefused() {
        let text = String(repeating: "[", count: 100_000)
        #expect(throws: WireError.self) { try read(text) { try $0.skipValue() } }
    }

    @Test(arguments: ["[1,2", "{\"a\":1", "[1}", "]", ",", "{\"a\":\"b", "tru", "[1] 2"])
    func whatIsNoValueIsRefused(text: String) {
        #expect(throws: WireError.self) { try read(text) { try $0.skipValue() } }
    }
}

/// The same numbers for the same seed.
struct SeededGenerator: RandomNumberGenerator {
    private var state: UInt64

    init(seed: UInt64) {
        state = seed
    }

    mutating func next() -> UInt64 {
        state &+= 0x9E37_79B9_7F4A_7C15
        var bits: UInt64 = state
        bits = (bits ^ (bits >> 30)) &* 0xBF58_476D_1CE4_E5B9
        bits = (bits ^ (bits >> 27)) &* 0x94D0_49BB_1331_11EB
        return bits ^ (bits >> 31)
    }
}

import Foundation
import Testing

@testable import OmbrelRuntime

@Suite struct FlowValueTests {
    @Test(arguments: [
        "null", "true", "false", "0", "-7", "9223372036854775807", "-9223372036854775808",
        "0.1", "1.5e-07", "\"\"", "\"a\\\"\\\\\\n\\u0001é😀\"", "[]", "{}", "[1,[2,{\"b\":[]}]]",
        "{\"z\":1,\"a\":{\"y\":null,\"b\":false}}",
    ])
    func writesWhatItRead(json: String) throws {
        #expect(try FlowValue(json: json).json == json)
    }

    @Test(arguments: [
        "", " ", "nul", "truefalse", "01", "-", "1.", ".5", "1e", "+1", "NaN", "Infinity", "'a'",
        "[1,]", "[1 2]", "{\"a\":1,}", "{a:1}", "{\"a\" 1}", "{\"a\"}", "[", "{", "\"", "\"\\x\"",
        "\"\\u12\"", "\"\\u+123\"", "\"a\nb\"", "1 2", "]", "\u{FEFF}1", "\0", "[1]\0", "tru",
        "\"\\", "\"\\u", "-a", "{\"a\":", "[[]", "\u{A0}1",
    ])
    func refusesWhatIsNotJSON(text: String) {
        #expect(throws: FlowError.self) { try FlowValue(json: text) }
    }

    @Test func saysWhereTheTextStopsBeingJSON() {
        let error = #expect(throws: FlowError.self) { try FlowValue(json: "{\"a\": oops}") }
        #expect(error?.message == "This is not JSON: a value was expected, at byte 6.")
    }

    @Test func takesWhiteSpaceAroundEverything() throws {
        let value = try FlowValue(json: " \r\n\t{ \"a\" : [ 1 , 2 ] }\n ")
        #expect(value.json == "{\"a\":[1,2]}")
    }

    @Test func keepsNumbersExactly() throws {
        #expect(try FlowValue(json: "12") == .int(12))
        #expect(try FlowValue(json: "-0") == .int(0))
        #expect(try FlowValue(json: "0.10") == .double(0.1))
        #expect(try FlowValue(json: "1E3") == .double(1000))
        #expect(try FlowValue(json: "1.0") == .double(1))
        #expect(try FlowValue(json: "5e-324") == .double(.leastNonzeroMagnitude))
        for digits in [
            "12345678901234567890", "0.12345678901234567890", "1e400", "-1e-400",
            "9223372036854775808", "1e99999999999999999999", "3.14159265358979323846",
        ] {
            #expect(try FlowValue(json: digits) == .number(digits))
            #expect(try FlowValue(json: "[\(digits)]").json == "[\(digits)]")
        }
    }

    @Test func numbersOfEveryFormHaveADouble() throws {
        #expect(FlowValue.int(3).number == 3)
        #expect(FlowValue.double(0.5).number == 0.5)
        #expect(try FlowValue(json: "12345678901234567890").number == 12_345_678_901_234_567_168)
        #expect(FlowValue.string("3").number == nil)
    }

    @Test func ofRepeatedKeysTheFirstCounts() throws {
        let value = try FlowValue(json: "{\"a\":1,\"b\":2,\"a\":3}")
        #expect(value == .object(["a": 1, "b": 2]))
        #expect(value["a"] == 1)
    }

    @Test func keysAreInTheirOrder() throws {
        var members: FlowValue.Members = ["z": 1, "a": 2]
        members["m"] = 3
        members["z"] = 4
        #expect(members.keys == ["z", "a", "m"])
        members["a"] = nil
        #expect(FlowValue.object(members).json == "{\"z\":4,\"m\":3}")
    }

    @Test func readsEscapesAndHalfSurrogates() throws {
        #expect(try FlowValue(json: "\"\\ud83d\\ude00\\/\\b\\f\\r\\t\"") == "😀/\u{8}\u{C}\r\t")
        #expect(try FlowValue(json: "\"\\ud83dx\"") == "\u{FFFD}x")
        #expect(try FlowValue(json: "\"\\ude00\"") == "\u{FFFD}")
        #expect(try FlowValue(json: "\"\\ud83d\\u0041\"") == "\u{FFFD}A")
        #expect(try FlowValue(json: "\"\\ud83d\\n\"") == "\u{FFFD}\n")
        #expect(try FlowValue(json: "\"\\u0000\"") == "\0")
    }

    @Test func readsDeepValuesToALimit() throws {
        let deep = String(repeating: "[", count: 256) + String(repeating: "]", count: 256)
        #expect(try FlowValue(json: deep).json == deep)
        let deeper = String(repeating: "[", count: 100_000)
        #expect(throws: FlowError.self) { try FlowValue(json: deeper) }
        #expect(throws: FlowError.self) { try FlowValue(json: "[" + deep + "]") }
    }

    @Test func survivesEveryCutAndEveryByte() throws {
        let text = "{\"é\":[1.5e3,-2,\"\\ud83d\\ude00\\n\",true,null],\"b\":{\"c\":\"d\"}}"
        for end in 0..<text.utf8.count {
            let cut = String(decoding: text.utf8.prefix(end), as: UTF8.self)
            #expect(throws: FlowError.self) { try FlowValue(json: cut) }
        }
        for index in 0..<text.utf8.count {
            for byte in [0x00, 0x22, 0x5C, 0x7B, 0x7D, 0x80, 0xFF] as [UInt8] {
                var bytes = Array(text.utf8)
                bytes[index] = byte
                if let value = try? FlowValue(json: String(decoding: bytes, as: UTF8.self)) {
                    #expect(try FlowValue(json: value.json) == value)
                }
            }
        }
    }

    @Test func textOfStringsIsBare() {
        #expect(FlowValue.string("a \"b\"").text == "a \"b\"")
        #expect(FlowValue.null.text == "")
        #expect(FlowValue.bool(true).text == "true")
        #expect(FlowValue.double(2).text == "2.0")
        #expect(FlowValue.array(["a", 1]).text == "[\"a\",1]")
        #expect(FlowValue.double(.nan).json == "null")
    }

    @Test func codersKeepTheValue() throws {
        let value = try FlowValue(json: "{\"a\":[1,2.5,\"x\",true,null],\"b\":{\"c\":{}}}")
        let data = try JSONEncoder().encode(value)
        #expect(try JSONDecoder().decode(FlowValue.self, from: data) == value)
    }

    @Test func propertiesAreReadAsTypes() throws {
        let value = try FlowValue(json: "{\"n\":3,\"d\":3,\"s\":\"x\",\"l\":[1,2],\"z\":null}")
        #expect(try value.property("n", as: Int.self) == 3)
        #expect(try value.property("d", as: Double.self) == 3)
        #expect(try value.property("s", as: String.self) == "x")
        #expect(try value.property("l", as: [Int].self) == [1, 2])
        #expect(try value.property("z", as: String?.self) == nil)
        #expect(try value.property("gone", as: [String]?.self) == nil)
    }

    @Test func aPropertyThatIsMissingOrWrongIsNamed() throws {
        let value = try FlowValue(json: "{\"n\":1.5,\"l\":[1,\"a\"]}")
        func message<T: FlowConvertible>(_ name: String, _ type: T.Type) -> String? {
            #expect(throws: FlowError.self) { try value.property(name, as: type) }?.message
        }
        #expect(message("n", Int.self) == "The property “n” is wrong: It is not a whole number.")
        #expect(message("x", String.self) == "The property “x” is missing.")
        #expect(message("x", FlowValue.self) == "The property “x” is missing.")
        #expect(message("l", [Int].self) == "The property “l” is wrong: It is not a whole number.")
    }
}

extension FlowValue: ExpressibleByIntegerLiteral {
    public init(integerLiteral value: Int) { self = .int(value) }
}

import Testing

@testable import OmbrelRuntime

@Suite struct ValueSchemaTests {
    private let order = ValueSchema.object(
        name: "Output",
        properties: [
            .init(name: "zeta", description: "Say \"it\"", schema: .string),
            .init(name: "alpha", schema: .array(.int), isOptional: true),
            .init(name: "kind", schema: .choice(name: "kind", cases: ["b", "a", "b"])),
            .init(
                name: "inner", description: "Deep",
                schema: .object(name: "inner", properties: [.init(name: "x", schema: .double)]),
                isOptional: true),
        ])

    @Test func textHasPropertiesInDeclaredOrder() {
        #expect(
            order.jsonSchema == """
                {"type":"object","properties":{\
                "zeta":{"description":"Say \\"it\\"","type":"string"},\
                "alpha":{"anyOf":[{"type":"array","items":{"type":"integer"}},{"type":"null"}]},\
                "kind":{"type":"string","enum":["b","a"]},\
                "inner":{"description":"Deep","anyOf":[{"type":"object","properties":{\
                "x":{"type":"number"}},"required":["x"],"additionalProperties":false},\
                {"type":"null"}]}},\
                "required":["zeta","alpha","kind","inner"],"additionalProperties":false}
                """)
    }

    @Test func fittingPutsKeysIntoOrderAndLeavesAbsentOnesOut() throws {
        let value = try FlowValue(
            json: #"{"more":1,"inner":{"y":2,"x":1},"kind":"a","alpha":null,"zeta":"z"}"#)
        #expect(
            try order.fitted(value).json == #"{"zeta":"z","kind":"a","inner":{"x":1}}"#)
    }

    @Test func fittingTakesWholeNumbersInEveryForm() throws {
        #expect(try ValueSchema.int.fitted(.double(3)) == .int(3))
        #expect(throws: FlowError.self) { try ValueSchema.int.fitted(.double(3.5)) }
        #expect(throws: FlowError.self) { try ValueSchema.int.fitted(.number("1e400")) }
        #expect(try ValueSchema.double.fitted(.int(3)) == .int(3))
    }

    @Test(arguments: [
        (#"{"kind":"a"}"#, "\"zeta\" is missing"),
        (#"{"zeta":null,"kind":"a"}"#, "\"zeta\" is not a string"),
        (#"{"zeta":"","kind":"c"}"#, "\"kind\" is none of the choices"),
        (#"{"zeta":"","alpha":[1,"x"],"kind":"a"}"#, "\"alpha[1]\" is not a whole number"),
        (#"{"zeta":"","alpha":{},"kind":"a"}"#, "\"alpha\" is not a list"),
        (#"{"zeta":"","kind":"a","inner":{"x":true}}"#, "\"inner.x\" is not a number"),
        (#"[]"#, "The answer is not an object"),
    ])
    func whatDoesNotFitIsSaid(json: String, message: String) throws {
        let value = try FlowValue(json: json)
        let error = #expect(throws: FlowError.self) { try order.fitted(value) }
        #expect(error?.message == message)
    }

    @Test func objectionsAreToldBeforeAServerIsAsked() {
        #expect(order.objection == nil)
        #expect(
            ValueSchema.choice(name: "c", cases: []).objection == "The choice \"c\" has no values.")
        let twice = ValueSchema.object(
            name: "o",
            properties: [.init(name: "p", schema: .int), .init(name: "p", schema: .string)])
        #expect(
            ValueSchema.array(twice).objection
                == "The object \"o\" has two properties named \"p\".")
        var deep = ValueSchema.string
        for _ in 0..<64 {
            deep = .array(deep)
        }
        #expect(deep.objection == "The schema is nested more than 64 levels deep.")
    }

    @Test(arguments: [
        (#"{"zeta":"z","kind":"a"}"#, true),
        ("Here you are:\n```json\n{\"zeta\":\"z\",\"kind\":\"a\"}\n```\nBye.", true),
        (#"{"other":{"zeta":"z","kind":"a"}} {"zeta":"z","kind":"a"}"#, true),
        (#"a } ] " { "zeta" {"zeta":"z","kind":"a"}"#, true),
        (#"{"zeta":"z"}"#, false),
        ("No.", false), ("", false), ("{", false),
    ])
    func answersAreFoundInText(text: String, isThere: Bool) throws {
        let value = try? valueInAnswer(text, schema: order)
        #expect(value?.json == (isThere ? #"{"zeta":"z","kind":"a"}"# : nil))
    }

    @Test func stringsAndChoicesMayBeBare() throws {
        #expect(try valueInAnswer(" refund\n", schema: .choice(name: "", cases: ["refund"])) == "refund")
        #expect(try valueInAnswer("\"refund\"", schema: .choice(name: "", cases: ["refund"])) == "refund")
        #expect(try valueInAnswer("Yes, {", schema: .string) == "Yes, {")
        let error = #expect(throws: FlowError.self) {
            try valueInAnswer("maybe", schema: .choice(name: "", cases: ["yes"]))
        }
        #expect(error?.message == "The answer is none of the choices.")
    }

    @Test func hostileAnswersEndSoon() {
        let brackets = String(repeating: "[{", count: 200_000)
        #expect(throws: FlowError.self) { try valueInAnswer(brackets, schema: order) }
    }
}

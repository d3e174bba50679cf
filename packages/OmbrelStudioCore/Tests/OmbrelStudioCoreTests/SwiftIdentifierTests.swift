import Testing

@testable import OmbrelStudioCore

@Suite struct SwiftIdentifierTests {
    @Test(arguments: [
        ("Order ID", "orderID"), ("customer_name", "customerName"), ("HTTPServer", "httpServer"),
        ("URL", "url"), ("2nd try", "field2ndTry"), ("", "field"), ("🎉", "field"),
        ("a\u{200B}b", "aB"), ("שם", "שם"), ("Größe in m²", "größeInM"), ("\"; exit(1) //", "exit1"),
    ])
    func parsesWordsAndKeepsLettersAndDigits(name: String, identifier: String) {
        #expect(SwiftIdentifier.lowerCamel(name, fallback: "field") == identifier)
    }

    @Test func typeNamesBeginWithACapital() {
        #expect(SwiftIdentifier.upperCamel("support triage", fallback: "Flow") == "SupportTriage")
        #expect(SwiftIdentifier.upperCamel("2024", fallback: "Flow") == "Flow2024")
    }

    @Test func keywordsAreWrittenInBackticks() {
        #expect(SwiftIdentifier.escaped("default") == "`default`")
        #expect(SwiftIdentifier.escaped("order") == "order")
    }

    @Test func namesThatCollideAreNumbered() {
        var scope = NameScope(reserved: ["run"])
        #expect(scope.claim("run") == "run2")
        #expect(scope.claim("order") == "order")
        #expect(scope.claim("order2") == "order2")
        #expect(scope.claim("order") == "order3")
        #expect(scope.claim("self") == "self2")
    }

    @Test func longNamesAreCut() {
        let name = String(repeating: "x", count: 10_000)
        #expect(SwiftIdentifier.lowerCamel(name, fallback: "field").count == 60)
    }
}

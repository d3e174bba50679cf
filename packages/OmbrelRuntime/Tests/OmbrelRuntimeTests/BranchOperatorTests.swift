import Testing

@testable import OmbrelRuntime

@Suite struct BranchOperatorTests {
    private func holds(_ json: String, _ comparison: BranchOperator, _ text: String) throws -> Bool {
        comparison.holds(try FlowValue(json: json), against: text)
    }

    @Test func textEqualsExactly() throws {
        #expect(try holds("\"High\"", .equals, "High"))
        #expect(try !holds("\"High\"", .equals, "high"))
        #expect(try !holds("\"1\"", .equals, "1.0"))
    }

    @Test func numbersEqualByValue() throws {
        #expect(try holds("2", .equals, "2.0"))
        #expect(try holds("0.5", .equals, " 5e-1 "))
        #expect(try !holds("2", .equals, "two"))
        #expect(try !holds("2", .equals, "nan"))
        #expect(try !holds("2", .equals, ""))
    }

    @Test func booleansEqualTheirWords() throws {
        #expect(try holds("true", .equals, "TRUE"))
        #expect(try holds("false", .equals, "false"))
        #expect(try !holds("true", .equals, "1"))
    }

    @Test func containsLooksForTextWithoutCase() throws {
        #expect(try holds("\"Please REFUND me\"", .contains, "refund"))
        #expect(try !holds("\"Please\"", .contains, "refund"))
        #expect(try holds("\"x\"", .contains, ""))
        #expect(try holds("\"Straße\"", .contains, "STRAßE"))
        #expect(try holds("[\"one\",\"Two\"]", .contains, "two"))
    }

    @Test func emptyIsEmptyTextAndListAndNothing() throws {
        #expect(try holds("\"\"", .isEmpty, "ignored"))
        #expect(try holds("[]", .isEmpty, ""))
        #expect(try holds("null", .isEmpty, ""))
        #expect(BranchOperator.isEmpty.holds(nil, against: ""))
        #expect(try !holds("\" \"", .isEmpty, ""))
        #expect(try !holds("0", .isEmpty, ""))
        #expect(try !holds("false", .isEmpty, ""))
    }

    @Test func numbersAreCompared() throws {
        #expect(try holds("3", .greaterThan, "2.5"))
        #expect(try !holds("3", .greaterThan, "3"))
        #expect(try holds("-1", .lessThan, "0"))
        #expect(try !holds("1", .lessThan, "many"))
        #expect(try !holds("\"3\"", .greaterThan, "2"))
        #expect(try holds("1e400", .greaterThan, "2"))
    }

    @Test(arguments: [BranchOperator.equals, .contains, .greaterThan, .lessThan])
    func nothingIsNothingElse(comparison: BranchOperator) {
        #expect(!comparison.holds(nil, against: ""))
        #expect(!comparison.holds(.null, against: "null"))
    }
}

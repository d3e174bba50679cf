import Foundation
import Testing

@testable import OmbrelRuntime

@Suite struct InstructionsTests {
    private func filled(_ text: String, _ fields: [String], _ values: [String: String] = [:])
        -> String
    {
        filledInstructions(text, fields: fields) { values[$0] }
    }

    @Test func placeholdersOfListedFieldsAreFilled() {
        #expect(
            filled("Hi {{context.name}}, {{context.name}}!", ["name"], ["name": "Ann"])
                == "Hi Ann, Ann!")
    }

    @Test func aFieldWithoutValueGivesAnEmptyText() {
        #expect(filled("Hi {{context.name}}!", ["name"]) == "Hi !")
    }

    @Test func placeholdersOfOtherFieldsStay() {
        #expect(filled("{{context.other}} {{context.", ["name"]) == "{{context.other}} {{context.")
        #expect(filled("{{ context.name }}", ["name"]) == "{{ context.name }}")
    }

    @Test func aFieldWithoutPlaceholderIsAppended() {
        #expect(
            filled("Do it.", ["a", "b", "c"], ["a": "1", "c": "3\n4"])
                == "Do it.\n\na:\n1\n\nc:\n3\n4")
    }

    @Test func aFieldWithPlaceholderIsNotAppendedToo() {
        #expect(filled("{{context.a}}", ["a", "a"], ["a": "1"]) == "1")
    }

    @Test func whatIsFilledInIsNotFilledAgain() {
        #expect(
            filled("{{context.a}}{{context.b}}", ["a", "b"], ["a": "{{context.b}}", "b": "x"])
                == "{{context.b}}x")
        #expect(
            filled("{{context.a}}b}}", ["a", "b"], ["a": "{{context."]) == "{{context.b}}")
    }

    @Test func namesMayHoldAnything() {
        let names = ["", "a}}b", "a", "e\u{301}", "👩‍👩‍👧‍👦", "\n"]
        for name in names {
            #expect(filled("<{{context.\(name)}}>", names, [name: "v"]).hasPrefix("<v>"))
        }
    }

    @Test func passagesFollowTheInstructions() {
        let passages = ["x", "y"].map {
            Passage(id: UUID(), breadcrumb: "A > \($0)", text: "text \($0)", score: 1)
        }
        #expect(
            instructionsWithContext("Do.", passages: passages)
                == "Do.\n\nContext:\n[1] A > x: text x\n\n[2] A > y: text y")
        #expect(instructionsWithContext("Do.", passages: []) == "Do.")
    }
}

@Suite struct HistoryTests {
    private func turn(_ count: Int, _ letter: Character) -> ConversationTurn {
        ConversationTurn(
            user: String(repeating: letter, count: count), assistant: String(letter))
    }

    @Test func turnsAreLinesOfWhoSaidWhat() {
        let turns = [
            ConversationTurn(user: "Hi", assistant: "Hello"),
            ConversationTurn(user: "How?", assistant: "So."),
        ]
        #expect(
            trimmedHistory(turns: turns, maxTokens: 100)
                == "User: Hi\nAssistant: Hello\nUser: How?\nAssistant: So.")
    }

    @Test func theNewestWholeTurnsAreKept() {
        let turns = [turn(10, "a"), turn(10, "b"), turn(10, "c")]
        let last = turns[2].transcript
        let two = turns[1].transcript + "\n" + last
        #expect(trimmedHistory(turns: turns, maxTokens: estimateTokens(two)) == two)
        #expect(trimmedHistory(turns: turns, maxTokens: estimateTokens(two) - 1) == last)
        #expect(trimmedHistory(turns: turns, maxTokens: estimateTokens(last) - 1) == "")
    }

    @Test func aTurnThatDoesNotFitEndsTheHistory() {
        let turns = [turn(1, "a"), turn(10_000, "b"), turn(1, "c")]
        #expect(trimmedHistory(turns: turns, maxTokens: 100) == turns[2].transcript)
    }

    @Test func nothingFitsIntoNothing() {
        #expect(trimmedHistory(turns: [turn(1, "a")], maxTokens: 0) == "")
        #expect(trimmedHistory(turns: [], maxTokens: 100) == "")
    }

    @Test func tokensAreAFourthOfTheCharacters() {
        #expect(estimateTokens("") == 1)
        #expect(estimateTokens("1234567") == 1)
        #expect(estimateTokens("12345678") == 2)
        #expect(estimateTokens("👩‍👩‍👧‍👦👩‍👩‍👧‍👦👩‍👩‍👧‍👦👩‍👩‍👧‍👦e\u{301}e\u{301}\r\n\r\n") == 2)
    }
}

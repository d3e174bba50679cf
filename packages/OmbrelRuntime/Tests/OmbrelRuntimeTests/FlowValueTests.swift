import Testing

@testable import OmbrelRuntime

@Test func estimatesAFourthOfTheCharacters() {
    #expect(estimateTokens("") == 1)
    #expect(estimateTokens("1234567") == 1)
    #expect(estimateTokens("12345678") == 2)
}

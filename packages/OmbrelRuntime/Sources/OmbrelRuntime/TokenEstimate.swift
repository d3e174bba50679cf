/// The measure of size everywhere: characters divided by four, rounded down, never less than 1.
public func estimateTokens(_ text: String) -> Int {
    max(text.count / 4, 1)
}

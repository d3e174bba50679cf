/// What was said in one turn of a conversation.
public struct ConversationTurn: Codable, Sendable, Equatable {
    public var user: String
    public var assistant: String

    public init(user: String, assistant: String) {
        self.user = user
        self.assistant = assistant
    }

    /// The two lines that stand for the turn in a transcript.
    public var transcript: String { "User: \(user)\nAssistant: \(assistant)" }
}

/// The transcript of the newest turns, as many whole ones as have at most `maxTokens` tokens
/// together. Empty when not even the last turn fits.
public func trimmedHistory(turns: [ConversationTurn], maxTokens: Int) -> String {
    var history = ""
    for turn in turns.reversed() {
        let longer = history.isEmpty ? turn.transcript : turn.transcript + "\n" + history
        guard estimateTokens(longer) <= maxTokens else { break }
        history = longer
    }
    return history
}

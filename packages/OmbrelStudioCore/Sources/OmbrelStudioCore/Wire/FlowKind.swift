/// How a flow is used.
public enum FlowKind: String, Sendable {
    /// Each run takes a typed input.
    case singleShot = "Single-shot"
    /// Each run is one message of a conversation.
    case conversational = "Conversational"
}

/// One step of a run, as it happens.
public struct TraceEvent: Codable, Sendable, Equatable {
    /// `flowStarted`, `nodeEntered`, `ragRetrieved`, `promptBuilt`, `outputReceived`,
    /// `routeTaken`, `branch`, `toolCalled`, `error` or `flowFinished`.
    public var kind: String
    public var detail: String
    /// Milliseconds since the run began.
    public var elapsedMS: Int
    /// The name of the agent or tool.
    public var node: String?
    /// The size of a prompt.
    public var tokenEstimate: Int?

    public init(
        kind: String, detail: String, elapsedMS: Int, node: String? = nil,
        tokenEstimate: Int? = nil
    ) {
        self.kind = kind
        self.detail = detail
        self.elapsedMS = elapsedMS
        self.node = node
        self.tokenEstimate = tokenEstimate
    }

    /// The event as one line of JSON, without a line feed.
    public var jsonLine: String {
        var members: FlowValue.Members = [
            "kind": .string(kind), "detail": .string(detail), "elapsedMS": .int(elapsedMS),
        ]
        members["node"] = node.map { .string($0) }
        members["tokenEstimate"] = tokenEstimate.map { .int($0) }
        return FlowValue.object(members).json
    }
}

/// Gets the events of a run in their order.
public typealias TraceHandler = @Sendable (TraceEvent) -> Void

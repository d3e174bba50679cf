/// What follows an agent.
public indirect enum WireFlowRouting: Sendable {
    case single(WireFlowDestination)
    /// By the name of the case that the agent chose, in the order of the request.
    case byCase([(name: String, destination: WireFlowDestination)])

    init(from reader: inout WireReader) throws {
        self = try reader.readCase { name, reader in
            switch name {
            case "single":
                return .single(try reader.readPayload { try WireFlowDestination(from: &$0) })
            case "byCase":
                return .byCase(
                    try reader.readPayload { reader in
                        var ways: [(name: String, destination: WireFlowDestination)] = []
                        try reader.readRecord { key, reader in
                            ways.append((key, try WireFlowDestination(from: &reader)))
                            return true
                        }
                        return ways
                    })
            default: throw WireError("“\(name)” is no way to route.")
            }
        }
    }
}

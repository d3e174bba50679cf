/// What an agent returns.
public enum AgentOutputKind: Sendable, Equatable {
    case text
    case enumeration([AgentEnumCase])
    case object([AgentProperty])

    init(from reader: inout WireReader) throws {
        self = try reader.readCase { name, reader in
            switch name {
            case "text": return try reader.readEmptyPayload(.text)
            case "enumeration":
                return .enumeration(
                    try reader.readPayload { reader in
                        try reader.readList { try AgentEnumCase(from: &$0) }
                    })
            case "object":
                return .object(
                    try reader.readPayload { reader in
                        try reader.readList { try AgentProperty(from: &$0) }
                    })
            default: throw WireError("“\(name)” is no kind of output.")
            }
        }
    }
}

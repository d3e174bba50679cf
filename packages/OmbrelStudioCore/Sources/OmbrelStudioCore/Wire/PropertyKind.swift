/// The type of a field.
public indirect enum PropertyKind: Sendable, Equatable {
    case string, int, double, bool
    case object([AgentProperty])
    case array(PropertyKind)
    case enumeration([AgentEnumCase])

    init(from reader: inout WireReader) throws {
        self = try reader.readCase { name, reader in
            switch name {
            case "string": return try reader.readEmptyPayload(.string)
            case "int": return try reader.readEmptyPayload(.int)
            case "double": return try reader.readEmptyPayload(.double)
            case "bool": return try reader.readEmptyPayload(.bool)
            case "object":
                return .object(
                    try reader.readPayload { reader in
                        try reader.readList { try AgentProperty(from: &$0) }
                    })
            case "array":
                return .array(try reader.readPayload { try PropertyKind(from: &$0) })
            case "enumeration":
                return .enumeration(
                    try reader.readPayload { reader in
                        try reader.readList { try AgentEnumCase(from: &$0) }
                    })
            default: throw WireError("“\(name)” is no kind of property.")
            }
        }
    }
}

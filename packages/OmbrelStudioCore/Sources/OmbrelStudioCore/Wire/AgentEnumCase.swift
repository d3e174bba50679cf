/// A value that may be chosen.
public struct AgentEnumCase: Sendable, Equatable {
    public var name: String
    public var description: String?

    init(from reader: inout WireReader) throws {
        var id: String?
        var name: String?
        var description: String?
        try reader.readRecord { key, reader in
            switch key {
            case "id": id = try reader.json.readUUID()
            case "name": name = try reader.json.readString()
            case "description": description = try reader.readOptional { try $0.json.readString() }
            default: return false
            }
            return true
        }
        _ = try id.required("id")
        self.name = try name.required("name")
        self.description = description
    }
}

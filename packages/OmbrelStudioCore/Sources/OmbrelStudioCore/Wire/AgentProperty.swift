/// A named, typed field.
public struct AgentProperty: Sendable, Equatable {
    public var name: String
    public var kind: PropertyKind
    public var description: String?
    public var isOptional: Bool

    init(from reader: inout WireReader) throws {
        var id: String?
        var name: String?
        var kind: PropertyKind?
        var description: String?
        var isOptional: Bool?
        try reader.readRecord { key, reader in
            switch key {
            case "id": id = try reader.json.readUUID()
            case "name": name = try reader.json.readString()
            case "kind": kind = try PropertyKind(from: &reader)
            case "description": description = try reader.readOptional { try $0.json.readString() }
            case "isOptional": isOptional = try reader.json.readBool()
            default: return false
            }
            return true
        }
        _ = try id.required("id")
        self.name = try name.required("name")
        self.kind = try kind.required("kind")
        self.description = description
        self.isOptional = try isOptional.required("isOptional")
    }
}

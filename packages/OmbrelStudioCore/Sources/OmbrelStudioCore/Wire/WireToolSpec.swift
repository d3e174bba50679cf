/// A tool of a flow.
public struct WireToolSpec: Sendable, Equatable {
    public var name: String
    /// What the tool answers in the studio.
    public var mockResponseJSON: String

    init(from reader: inout WireReader) throws {
        var name: String?
        var mockResponseJSON: String?
        try reader.readRecord { key, reader in
            switch key {
            case "name": name = try reader.json.readString()
            case "mockResponseJSON": mockResponseJSON = try reader.json.readString()
            default: return false
            }
            return true
        }
        self.name = try name.required("name")
        self.mockResponseJSON = try mockResponseJSON.required("mockResponseJSON")
    }
}

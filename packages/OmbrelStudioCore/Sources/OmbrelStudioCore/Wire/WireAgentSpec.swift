/// An agent of a flow.
public struct WireAgentSpec: Sendable, Equatable {
    public var name: String
    public var instructions: String
    public var input: [AgentProperty]
    public var output: AgentOutputKind
    /// Names of the context fields that the agent reads.
    public var contextFields: [String]
    public var ragAttachments: [WireRAGAttachment]

    init(from reader: inout WireReader) throws {
        var name: String?
        var instructions: String?
        var input: [AgentProperty]?
        var output: AgentOutputKind?
        var contextFields: [String]?
        var ragAttachments: [WireRAGAttachment]?
        try reader.readRecord { key, reader in
            switch key {
            case "name": name = try reader.json.readString()
            case "instructions": instructions = try reader.json.readString()
            case "input": input = try reader.readList { try AgentProperty(from: &$0) }
            case "output": output = try AgentOutputKind(from: &reader)
            case "contextFields": contextFields = try reader.readList { try $0.json.readString() }
            case "ragAttachments":
                ragAttachments = try reader.readList { try WireRAGAttachment(from: &$0) }
            default: return false
            }
            return true
        }
        self.name = try name.required("name")
        self.instructions = try instructions.required("instructions")
        self.input = try input.required("input")
        self.output = try output.required("output")
        self.contextFields = try contextFields.required("contextFields")
        self.ragAttachments = try ragAttachments.required("ragAttachments")
    }
}

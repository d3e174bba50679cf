/// A whole flow as one tree.
public struct WireFlowSpec: Sendable {
    public var name: String
    public var kind: FlowKind
    /// How many agents one turn may enter.
    public var maxHops: Int
    /// How much of the conversation an agent that asks for it is given.
    public var maxHistoryTokens: Int
    public var startInput: [AgentProperty]
    public var contextFields: [AgentProperty]
    public var firstAgent: WireAgentSpec
    /// What follows the first agent.
    public var routing: WireFlowRouting

    init(from reader: inout WireReader) throws {
        var name: String?
        var kind: FlowKind?
        var maxHops: Int?
        var maxHistoryTokens: Int?
        var startInput: [AgentProperty]?
        var contextFields: [AgentProperty]?
        var firstAgent: WireAgentSpec?
        var routing: WireFlowRouting?
        try reader.readRecord { key, reader in
            switch key {
            case "name": name = try reader.json.readString()
            case "kind": kind = try reader.readRawValue()
            case "maxHops": maxHops = try reader.json.readInt()
            case "maxHistoryTokens": maxHistoryTokens = try reader.json.readInt()
            case "startInput": startInput = try reader.readList { try AgentProperty(from: &$0) }
            case "contextFields":
                contextFields = try reader.readList { try AgentProperty(from: &$0) }
            case "firstAgent": firstAgent = try WireAgentSpec(from: &reader)
            case "routing": routing = try WireFlowRouting(from: &reader)
            default: return false
            }
            return true
        }
        self.name = try name.required("name")
        self.kind = try kind.required("kind")
        self.maxHops = try maxHops.required("maxHops")
        self.maxHistoryTokens = try maxHistoryTokens.required("maxHistoryTokens")
        self.startInput = try startInput.required("startInput")
        self.contextFields = try contextFields.required("contextFields")
        self.firstAgent = try firstAgent.required("firstAgent")
        self.routing = try routing.required("routing")
    }
}

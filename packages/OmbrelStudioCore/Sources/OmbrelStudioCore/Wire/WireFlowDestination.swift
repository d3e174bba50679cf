/// A node of the flow with all that lies behind it.
public indirect enum WireFlowDestination: Sendable {
    case agent(WireAgentSpec, next: WireFlowRouting)
    case branch(WireBranch)
    case tool(WireToolSpec, next: WireFlowDestination)
    case end(caseName: String, carriesOutput: Bool)

    init(from reader: inout WireReader) throws {
        self = try reader.readCase { name, reader in
            switch name {
            case "agent":
                var spec: WireAgentSpec?
                var next: WireFlowRouting?
                try reader.readRecord { key, reader in
                    switch key {
                    case "_0": spec = try WireAgentSpec(from: &reader)
                    case "next": next = try WireFlowRouting(from: &reader)
                    default: return false
                    }
                    return true
                }
                return .agent(try spec.required("_0"), next: try next.required("next"))
            case "branch":
                return .branch(try WireBranch(from: &reader))
            case "tool":
                var spec: WireToolSpec?
                var next: WireFlowDestination?
                try reader.readRecord { key, reader in
                    switch key {
                    case "_0": spec = try WireToolSpec(from: &reader)
                    case "next": next = try WireFlowDestination(from: &reader)
                    default: return false
                    }
                    return true
                }
                return .tool(try spec.required("_0"), next: try next.required("next"))
            case "end":
                var caseName: String?
                var carriesOutput: Bool?
                try reader.readRecord { key, reader in
                    switch key {
                    case "caseName": caseName = try reader.json.readString()
                    case "carriesOutput": carriesOutput = try reader.json.readBool()
                    default: return false
                    }
                    return true
                }
                return .end(
                    caseName: try caseName.required("caseName"),
                    carriesOutput: try carriesOutput.required("carriesOutput"))
            default: throw WireError("“\(name)” is no kind of destination.")
            }
        }
    }
}

/// A fork that a value of the agent above it decides.
public struct WireBranch: Sendable {
    /// The property of the agent's answer that is compared.
    public var field: String
    public var `operator`: WireBranchOperator
    /// What it is compared with.
    public var value: String
    public var then: WireFlowDestination
    public var otherwise: WireFlowDestination

    init(from reader: inout WireReader) throws {
        var field: String?
        var comparison: WireBranchOperator?
        var value: String?
        var then: WireFlowDestination?
        var otherwise: WireFlowDestination?
        try reader.readRecord { key, reader in
            switch key {
            case "field": field = try reader.json.readString()
            case "operator": comparison = try reader.readRawValue()
            case "value": value = try reader.json.readString()
            case "then": then = try WireFlowDestination(from: &reader)
            case "otherwise": otherwise = try WireFlowDestination(from: &reader)
            default: return false
            }
            return true
        }
        self.field = try field.required("field")
        self.operator = try comparison.required("operator")
        self.value = try value.required("value")
        self.then = try then.required("then")
        self.otherwise = try otherwise.required("otherwise")
    }
}

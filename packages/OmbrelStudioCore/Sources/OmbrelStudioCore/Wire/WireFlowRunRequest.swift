/// What `StudioCLI` is asked to do: run one flow.
public struct WireFlowRunRequest: WireRequest, Sendable {
    public var flow: WireFlowSpec
    /// Folder of the `OmbrelRuntime` package.
    public var runtimePath: String
    /// Folder in which the flow's package is generated and built, the same for every run of it.
    public var packageDirectory: String
    /// JSON text: an object with the fields of the flow's input, or the messages of a conversation.
    public var inputJSON: String

    public init(from reader: inout WireReader) throws {
        var flow: WireFlowSpec?
        var runtimePath: String?
        var packageDirectory: String?
        var inputJSON: String?
        try reader.readRecord { key, reader in
            switch key {
            case "flow": flow = try WireFlowSpec(from: &reader)
            case "runtimePath": runtimePath = try reader.json.readString()
            case "packageDirectory": packageDirectory = try reader.json.readString()
            case "inputJSON": inputJSON = try reader.json.readString()
            default: return false
            }
            return true
        }
        self.flow = try flow.required("flow")
        self.runtimePath = try runtimePath.required("runtimePath")
        self.packageDirectory = try packageDirectory.required("packageDirectory")
        self.inputJSON = try inputJSON.required("inputJSON")
    }
}

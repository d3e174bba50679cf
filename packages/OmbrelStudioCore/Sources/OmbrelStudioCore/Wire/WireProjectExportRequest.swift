/// What `ExportCLI` is asked to do: write one package with all flows.
public struct WireProjectExportRequest: WireRequest, Sendable {
    /// In the order of the project.
    public var flows: [WireFlowSpec]
    public var packageName: String
    /// The folder in which the package's folder is made.
    public var destinationDirectory: String
    /// Folder of the `OmbrelRuntime` package, whose sources are copied.
    public var runtimeSourcePath: String

    public init(from reader: inout WireReader) throws {
        var flows: [WireFlowSpec]?
        var packageName: String?
        var destinationDirectory: String?
        var runtimeSourcePath: String?
        try reader.readRecord { key, reader in
            switch key {
            case "flows": flows = try reader.readList { try WireFlowSpec(from: &$0) }
            case "packageName": packageName = try reader.json.readString()
            case "destinationDirectory": destinationDirectory = try reader.json.readString()
            case "runtimeSourcePath": runtimeSourcePath = try reader.json.readString()
            default: return false
            }
            return true
        }
        self.flows = try flows.required("flows")
        self.packageName = try packageName.required("packageName")
        self.destinationDirectory = try destinationDirectory.required("destinationDirectory")
        self.runtimeSourcePath = try runtimeSourcePath.required("runtimeSourcePath")
    }
}

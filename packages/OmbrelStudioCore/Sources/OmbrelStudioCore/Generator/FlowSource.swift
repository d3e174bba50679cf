import OmbrelRuntime

/// What a package has of one flow: the source of its type, and the data that it runs with.
struct FlowSource {
    /// What the package is for.
    enum Purpose {
        /// A program that the studio runs, in which tools give their mock responses.
        case studio
        /// A library whose tools the application implements. `folder` is the flow's in the
        /// resources.
        case package(runtime: String, folder: String)
    }

    /// A file of knowledge and what is in it.
    struct KnowledgeContent {
        var name: String
        var chunks: WireRAGChunks
    }

    let spec: WireFlowSpec
    let typeName: String
    let source: String
    let data: FlowData
    let knowledge: [KnowledgeContent]
    /// The tools in the order in which the flow's initialiser takes them.
    let tools: [ToolSource]
    let hasContext: Bool
    let input: RecordSource

    /// - Parameters:
    ///   - knowledgeFolder: where the files of knowledge are, seen from the flow's data, with a
    ///     slash at its end.
    ///   - knowledgeSalt: tells apart files of the same knowledge that are written differently.
    ///   - tools: the protocols of all tools by their names.
    init(
        _ spec: WireFlowSpec, typeName: String, purpose: Purpose, knowledgeFolder: String = "",
        knowledgeSalt: String = "", tools: [ToolSource] = []
    ) throws {
        let generator = try FlowGenerator(
            spec, typeName: typeName, purpose: purpose, knowledgeFolder: knowledgeFolder,
            knowledgeSalt: knowledgeSalt, tools: tools)
        self.spec = spec
        self.typeName = typeName
        source = try generator.source()
        data = generator.data
        knowledge = generator.knowledge
        self.tools = generator.usedTools
        hasContext = !generator.contextFields.isEmpty
        input = generator.input
    }
}

/// The protocol of a tool.
struct ToolSource {
    /// The name on the wire.
    var name: String
    var protocolName: String
    /// Of the parameter that takes it.
    var identifier: String

    /// The tools of all flows, each name once.
    static func all(in flows: [WireFlowSpec], scope: inout NameScope) -> [ToolSource] {
        var tools: [ToolSource] = []
        var identifiers = NameScope(reserved: ToolSource.reservedIdentifiers)
        var seen = Set<String>()
        for flow in flows {
            flow.routing.forEachTool { tool in
                guard seen.insert(tool.name).inserted else { return }
                let type: String = SwiftIdentifier.upperCamel(tool.name, fallback: "Unnamed")
                let identifier: String = identifiers.claim(
                    SwiftIdentifier.lowerCamel(tool.name, fallback: "tool"))
                tools.append(
                    ToolSource(
                        name: tool.name,
                        protocolName: scope.claim(type.hasSuffix("Tool") ? type : type + "Tool"),
                        identifier: identifier))
            }
        }
        return tools
    }

    /// Other members and parameters of a flow's type.
    static let reservedIdentifiers: Set<String> = [
        "context", "conversation", "data", "embedder", "follow", "input", "message", "model",
        "output", "reply", "run", "send", "trace", "turn", "turns",
    ]
}

extension WireFlowRouting {
    /// The destinations, in order.
    var destinations: [WireFlowDestination] {
        switch self {
        case .single(let destination): [destination]
        case .byCase(let ways): ways.map(\.destination)
        }
    }

    func forEachTool(_ body: (WireToolSpec) -> Void) {
        for destination in destinations {
            destination.forEachTool(body)
        }
    }
}

extension WireFlowDestination {
    func forEachTool(_ body: (WireToolSpec) -> Void) {
        switch self {
        case .agent(_, let next): next.forEachTool(body)
        case .branch(let branch):
            branch.then.forEachTool(body)
            branch.otherwise.forEachTool(body)
        case .tool(let tool, let next):
            body(tool)
            next.forEachTool(body)
        case .end: break
        }
    }
}

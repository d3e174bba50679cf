#if canImport(FoundationEssentials)
    import FoundationEssentials
#else
    import Foundation
#endif

/// Whether a flow takes one typed input or messages.
public enum FlowKind: String, Codable, Sendable {
    case singleShot = "Single-shot"
    case conversational = "Conversational"
}

/// One index that an agent searches.
public struct KnowledgeData: Codable, Sendable, Equatable {
    /// The name of the knowledge file, relative to the flow's folder. Agents may share one.
    public var file: String
    public var indexKind: IndexKind
    public var topK: Int
    /// The least score of a passage that is used.
    public var threshold: Double

    public init(file: String, indexKind: IndexKind, topK: Int, threshold: Double) {
        self.file = file
        self.indexKind = indexKind
        self.topK = topK
        self.threshold = threshold
    }
}

/// What of an agent is data to the generated program.
public struct AgentData: Codable, Sendable, Equatable {
    public var name: String
    public var instructions: String
    /// The names of the agent's input fields, in order.
    public var input: [String]
    /// The names of the context fields that the agent reads.
    public var contextFields: [String]
    public var knowledge: [KnowledgeData]

    public init(
        name: String, instructions: String, input: [String] = [], contextFields: [String] = [],
        knowledge: [KnowledgeData] = []
    ) {
        self.name = name
        self.instructions = instructions
        self.input = input
        self.contextFields = contextFields
        self.knowledge = knowledge
    }
}

/// What of a tool is data to the generated program.
public struct ToolData: Codable, Sendable, Equatable {
    public var name: String
    /// What a run in the studio gets from the tool, as it was written.
    public var mockResponseJSON: String

    public init(name: String, mockResponseJSON: String) {
        self.name = name
        self.mockResponseJSON = mockResponseJSON
    }
}

/// What of a flow is data to the generated program: what can change without compiling anything.
/// It lives in a folder: `flow.json` beside the knowledge files.
public struct FlowData: Codable, Sendable {
    public var name: String
    public var kind: FlowKind
    /// How many agents one turn may enter.
    public var maxHops: Int
    /// How many tokens of the conversation so far an agent is told.
    public var maxHistoryTokens: Int
    public var agents: [AgentData]
    public var tools: [ToolData]
    /// What the branches compare with.
    public var branchValues: [String]

    private let shelf: KnowledgeShelf

    private enum CodingKeys: String, CodingKey {
        case name, kind, maxHops, maxHistoryTokens, agents, tools, branchValues
    }

    /// `directory` is where the knowledge files are; without one every agent has to do without.
    public init(
        name: String, kind: FlowKind, maxHops: Int, maxHistoryTokens: Int, agents: [AgentData],
        tools: [ToolData] = [], branchValues: [String] = [], directory: URL? = nil
    ) {
        self.name = name
        self.kind = kind
        self.maxHops = maxHops
        self.maxHistoryTokens = maxHistoryTokens
        self.agents = agents
        self.tools = tools
        self.branchValues = branchValues
        shelf = KnowledgeShelf(directory: directory)
    }

    public init(from decoder: any Decoder) throws {
        let container = try decoder.container(keyedBy: CodingKeys.self)
        self.init(
            name: try container.decode(String.self, forKey: .name),
            kind: try container.decode(FlowKind.self, forKey: .kind),
            maxHops: try container.decode(Int.self, forKey: .maxHops),
            maxHistoryTokens: try container.decode(Int.self, forKey: .maxHistoryTokens),
            agents: try container.decode([AgentData].self, forKey: .agents),
            tools: try container.decode([ToolData].self, forKey: .tools),
            branchValues: try container.decode([String].self, forKey: .branchValues),
            directory: decoder.userInfo[Self.directoryKey] as? URL)
    }

    private static let directoryKey = CodingUserInfoKey(rawValue: "directory")!
    private static let fileName = "flow.json"

    /// Reads the `flow.json` of a folder. Knowledge files are opened when they are first needed.
    public init(directory: URL) throws {
        let url = directory.appending(path: Self.fileName)
        let decoder = JSONDecoder()
        decoder.userInfo[Self.directoryKey] = directory
        do {
            self = try decoder.decode(FlowData.self, from: try Data(contentsOf: url))
        } catch let error as DecodingError {
            throw FlowError("\(url.path) is not the data of a flow: \(error)")
        } catch {
            throw FlowError("\(url.path) can't be read: \(FlowError.message(of: error))")
        }
    }

    /// The `flow.json` of the data: the same bytes for the same data.
    public func encoded() throws -> Data {
        let encoder = JSONEncoder()
        encoder.outputFormatting = [.sortedKeys, .prettyPrinted, .withoutEscapingSlashes]
        return try encoder.encode(self)
    }

    /// The knowledge of an agent, opened once.
    func knowledge(of agent: AgentData) throws -> [Knowledge] {
        try agent.knowledge.map { try shelf.open($0) }
    }
}

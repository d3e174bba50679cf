/// Names that generated code uses and that no generated type may hide.
enum SwiftNames {
    static let inScope: Set<String> = [
        "Array", "Bool", "Bundle", "CaseIterable", "Codable", "Context", "Dictionary", "Double",
        "Equatable", "Error", "Foundation", "FoundationModels", "Hashable", "Input", "Int",
        "Never", "OmbrelRuntime", "Optional", "Output", "Reply", "Result", "Sendable", "Set",
        "String", "Swift", "Synchronization", "Task", "URL", "Void", "_Concurrency",
        // The runtime's.
        "AgentData", "BranchOperator", "ConversationTurn", "FlowChoice", "FlowConvertible",
        "FlowData", "FlowError", "FlowKind", "FlowObject", "FlowOutcome", "FlowProgram", "FlowRun",
        "FlowValue", "IndexKind", "KeywordIndex", "Knowledge", "KnowledgeData", "KnowledgeFile",
        "LanguageModel", "OnDeviceEmbedder", "OnDeviceModel", "Passage", "QueryEmbedder",
        "RAGChunk", "ToolData", "TraceEvent", "TraceHandler", "ValueSchema", "VectorIndex",
    ]
}

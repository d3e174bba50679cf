import Foundation
import OmbrelRuntime

@testable import OmbrelStudioCore

extension FlowValue: @retroactive ExpressibleByDictionaryLiteral {
    public init(dictionaryLiteral elements: (String, FlowValue)...) {
        self = .object(Members(elements.map { (key: $0.0, value: $0.1) }))
    }
}

/// The JSON of requests, as the studio writes it.
enum Wire {
    static func property(
        _ name: String, _ kind: FlowValue = ["string": [:]], isOptional: Bool = false,
        description: String? = nil
    ) -> FlowValue {
        var members: FlowValue.Members = [
            "id": .string(UUID().uuidString), "name": .string(name), "kind": kind,
            "isOptional": .bool(isOptional),
        ]
        members["description"] = description.map { .string($0) }
        return .object(members)
    }

    static let int: FlowValue = ["int": [:]]
    static let double: FlowValue = ["double": [:]]
    static let bool: FlowValue = ["bool": [:]]

    static func object(_ properties: [FlowValue]) -> FlowValue {
        ["object": ["_0": .array(properties)]]
    }

    static func array(_ element: FlowValue) -> FlowValue { ["array": ["_0": element]] }

    /// A kind of property and a kind of output.
    static func enumeration(_ cases: [FlowValue]) -> FlowValue {
        ["enumeration": ["_0": .array(cases)]]
    }

    static func enumeration(_ names: String...) -> FlowValue {
        enumeration(names.map { one($0) })
    }

    static func one(_ name: String, description: String? = nil) -> FlowValue {
        var members: FlowValue.Members = [
            "id": .string(UUID().uuidString), "name": .string(name),
        ]
        members["description"] = description.map { .string($0) }
        return .object(members)
    }

    static func agent(
        _ name: String, _ instructions: String = "", input: [FlowValue] = [],
        output: FlowValue = ["text": [:]], contextFields: [String] = [],
        knowledge: [FlowValue] = []
    ) -> FlowValue {
        [
            "name": .string(name), "instructions": .string(instructions), "input": .array(input),
            "output": output, "contextFields": .array(contextFields.map { .string($0) }),
            "ragAttachments": .array(knowledge),
        ]
    }

    static func knowledge(
        _ chunks: [FlowValue], kind: String = "keyword", topK: Int = 3, threshold: Double = 0
    ) -> FlowValue {
        [
            "indexKind": .string(kind), "topK": .int(topK), "threshold": .double(threshold),
            "chunks": .array(chunks),
        ]
    }

    static func chunk(
        _ text: String, breadcrumb: String = "Guide", packable: String? = nil,
        embedding: [Double]? = nil
    ) -> FlowValue {
        var members: FlowValue.Members = [
            "id": .string(UUID().uuidString), "breadcrumb": .string(breadcrumb),
            "searchableText": .string(text), "packableText": .string(packable ?? text),
        ]
        members["embedding"] = embedding.map { .array($0.map { .double($0) }) }
        return .object(members)
    }

    static func single(_ destination: FlowValue) -> FlowValue { ["single": ["_0": destination]] }

    static func byCase(_ ways: [(String, FlowValue)]) -> FlowValue {
        ["byCase": ["_0": .object(FlowValue.Members(ways.map { (key: $0.0, value: $0.1) }))]]
    }

    static func next(_ agent: FlowValue, _ routing: FlowValue) -> FlowValue {
        ["agent": ["_0": agent, "next": routing]]
    }

    static func tool(_ name: String, _ mock: String, _ next: FlowValue) -> FlowValue {
        [
            "tool": [
                "_0": ["name": .string(name), "mockResponseJSON": .string(mock)], "next": next,
            ]
        ]
    }

    static func branch(
        _ field: String, _ comparison: String, _ value: String, then: FlowValue,
        otherwise: FlowValue
    ) -> FlowValue {
        [
            "branch": [
                "field": .string(field), "operator": .string(comparison), "value": .string(value),
                "then": then, "otherwise": otherwise,
            ]
        ]
    }

    static func end(_ caseName: String, carriesOutput: Bool = false) -> FlowValue {
        ["end": ["caseName": .string(caseName), "carriesOutput": .bool(carriesOutput)]]
    }

    static func flow(
        _ name: String, kind: String = "Single-shot", maxHops: Int = 20,
        maxHistoryTokens: Int = 1000, startInput: [FlowValue] = [], contextFields: [FlowValue] = [],
        first: FlowValue, _ routing: FlowValue
    ) -> FlowValue {
        [
            "name": .string(name), "kind": .string(kind), "maxHops": .int(maxHops),
            "maxHistoryTokens": .int(maxHistoryTokens), "startInput": .array(startInput),
            "contextFields": .array(contextFields), "firstAgent": first, "routing": routing,
        ]
    }

    static func runRequest(
        _ flow: FlowValue, packageDirectory: String = "/tmp/flow", input: String = "{}"
    ) -> FlowValue {
        [
            "flow": flow, "runtimePath": .string(Folders.runtime),
            "packageDirectory": .string(packageDirectory), "inputJSON": .string(input),
        ]
    }

    static func exportRequest(
        _ flows: [FlowValue], name: String, destination: String
    ) -> FlowValue {
        [
            "flows": .array(flows), "packageName": .string(name),
            "destinationDirectory": .string(destination),
            "runtimeSourcePath": .string(Folders.runtime),
        ]
    }

    static func decoded(_ flow: FlowValue) throws -> WireFlowSpec {
        try WireFlowRunRequest(json: runRequest(flow).json).flow
    }
}

/// Flows that several tests use.
enum Samples {
    /// An enumeration, an object, a branch, a tool, knowledge.
    static let triage: FlowValue = Wire.flow(
        "Support Triage",
        startInput: [
            Wire.property("question", description: "What the customer wants"),
            Wire.property("tags", Wire.array(["string": [:]])),
        ],
        contextFields: [Wire.property("tone")],
        first: Wire.agent(
            "Triage", "Sort the question.", input: [Wire.property("question")],
            output: Wire.enumeration([
                Wire.one("refund"), Wire.one("in progress", description: "Being worked on"),
                Wire.one("default"),
            ])),
        Wire.byCase([
            (
                "refund",
                Wire.next(
                    Wire.agent(
                        "Refund Agent", "Handle a {{context.tone}} refund.",
                        output: Wire.object([
                            Wire.property("order id", description: "The number"),
                            Wire.property("amount", Wire.double),
                            Wire.property("status", Wire.enumeration("open", "closed")),
                            Wire.property(
                                "items",
                                Wire.array(
                                    Wire.object([
                                        Wire.property("name"),
                                        Wire.property("count", Wire.int, isOptional: true),
                                    ])), isOptional: true),
                        ]),
                        contextFields: ["tone"],
                        knowledge: [
                            Wire.knowledge([
                                Wire.chunk("A refund is given within 30 days."),
                                Wire.chunk("We ship worldwide."),
                            ])
                        ]),
                    Wire.single(
                        Wire.branch(
                            "amount", "greaterThan", "100",
                            then: Wire.tool(
                                "lookupOrder", #"{"status":"shipped"}"#,
                                Wire.next(
                                    Wire.agent("Writer", "Write."),
                                    Wire.single(Wire.end("escalated", carriesOutput: true)))),
                            otherwise: Wire.end("refunded", carriesOutput: true))))
            ),
            ("in progress", Wire.end("waiting")),
            ("default", Wire.end("default")),
        ]))

    static let chat: FlowValue = Wire.flow(
        "Small Talk", kind: "Conversational", contextFields: [Wire.property("history")],
        first: Wire.agent("Talker", "Talk.", contextFields: ["history"]),
        Wire.single(Wire.end("done", carriesOutput: true)))
}

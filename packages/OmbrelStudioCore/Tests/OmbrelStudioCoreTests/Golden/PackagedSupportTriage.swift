// Made by Ombrel Studio from the flow “Support Triage”.

import DemoRuntime

/// The flow “Support Triage”.
public struct SupportTriage: Sendable {
    /// What the flow starts with.
    public struct Input: FlowObject, Equatable {
        /// What the customer wants
        public var question: String
        public var tags: [String]

        public init(question: String, tags: [String]) {
            self.question = question
            self.tags = tags
        }

        public init(flowValue: FlowValue) throws {
            question = try flowValue.property("question")
            tags = try flowValue.property("tags")
        }

        public var flowValue: FlowValue {
            .object(members)
        }

        var members: FlowValue.Members {
            [
                "question": question.flowValue,
                "tags": tags.flowValue,
            ]
        }

        public static let schema = ValueSchema.object(
            name: "Input",
            properties: [
                ValueSchema.Property(name: "question", description: "What the customer wants", schema: .string),
                ValueSchema.Property(name: "tags", schema: .array(.string)),
            ])
    }

    /// What the application knows beside the input.
    public struct Context: Sendable, Equatable {
        public var tone: String?

        public init(tone: String? = nil) {
            self.tone = tone
        }

        var members: FlowValue.Members {
            var members: FlowValue.Members = [:]
            members["tone"] = self.tone?.flowValue
            return members
        }
    }

    /// Where the flow ends.
    public enum Output: Sendable, Equatable {
        case escalated(String)
        case refunded(RefundAgentOutput)
        case waiting
        case `default`
    }

    private let data: FlowData
    private let model: any LanguageModel
    private let embedder: any QueryEmbedder
    private let trace: TraceHandler
    private let lookupOrder: any LookupOrderTool

    /// The tools are the application's.
    public init(
        lookupOrder: any LookupOrderTool,
        model: any LanguageModel = OnDeviceModel.default,
        embedder: any QueryEmbedder = OnDeviceEmbedder.default,
        trace: @escaping TraceHandler = { _ in }
    ) throws {
        self.data = try FlowData.bundled("SupportTriage")
        self.model = model
        self.embedder = embedder
        self.trace = trace
        self.lookupOrder = lookupOrder
    }

    /// Runs the flow once. Throws a `FlowError`.
    public func run(_ input: Input, context: Context = Context()) async throws -> Output {
        let run = FlowRun(
            data: data, model: model, embedder: embedder, context: context.members, trace: trace)
        run.begin(input.members)
        return try await follow(run)
    }

    // MARK: - The way through the flow

    private func follow(_ run: FlowRun) async throws -> Output {
        switch try await askTriage(run) {
        case .refund:
            let refundAgent = try await askRefundAgent(run)
            // “amount” is greater than “100”?
            if try run.branch(0, field: "amount", .greaterThan, refundAgent.amount) {
                try await run.tool(0, lookupOrder.call)
                let writer = try await askWriter(run)
                run.finish("escalated", carriesOutput: true)
                return .escalated(writer)
            }
            run.finish("refunded", carriesOutput: true)
            return .refunded(refundAgent)
        case .inProgress:
            run.finish("waiting", carriesOutput: false)
            return .waiting
        case .default:
            run.finish("default", carriesOutput: false)
            return .default
        }
    }

    // MARK: - Agents

    /// The agent “Triage”.
    private func askTriage(_ run: FlowRun) async throws -> TriageOutput {
        try await run.ask(0, as: TriageOutput.self)
    }

    /// The agent “Refund Agent”.
    private func askRefundAgent(_ run: FlowRun) async throws -> RefundAgentOutput {
        try await run.ask(1, as: RefundAgentOutput.self)
    }

    /// The agent “Writer”.
    private func askWriter(_ run: FlowRun) async throws -> String {
        try await run.ask(2)
    }
}

extension SupportTriage {
    /// What “Triage” chooses.
    public enum TriageOutput: String, FlowChoice {
        case refund
        /// Being worked on
        case inProgress = "in progress"
        case `default`
    }
}

extension SupportTriage {
    /// What “Refund Agent” answers.
    public struct RefundAgentOutput: FlowObject, Equatable {
        /// The number
        public var orderId: String
        public var amount: Double
        public var status: Status
        public var items: [Item]?

        public enum Status: String, FlowChoice {
            case open
            case closed
        }

        public struct Item: FlowObject, Equatable {
            public var name: String
            public var count: Int?

            public init(name: String, count: Int? = nil) {
                self.name = name
                self.count = count
            }

            public init(flowValue: FlowValue) throws {
                name = try flowValue.property("name")
                count = try flowValue.property("count")
            }

            public var flowValue: FlowValue {
                .object(members)
            }

            var members: FlowValue.Members {
                [
                    "name": name.flowValue,
                    "count": count.flowValue,
                ]
            }

            public static let schema = ValueSchema.object(
                name: "items",
                properties: [
                    ValueSchema.Property(name: "name", schema: .string),
                    ValueSchema.Property(name: "count", schema: .int, isOptional: true),
                ])
        }

        public init(orderId: String, amount: Double, status: Status, items: [Item]? = nil) {
            self.orderId = orderId
            self.amount = amount
            self.status = status
            self.items = items
        }

        public init(flowValue: FlowValue) throws {
            orderId = try flowValue.property("order id")
            amount = try flowValue.property("amount")
            status = try flowValue.property("status")
            items = try flowValue.property("items")
        }

        public var flowValue: FlowValue {
            .object(members)
        }

        var members: FlowValue.Members {
            [
                "order id": orderId.flowValue,
                "amount": amount.flowValue,
                "status": status.flowValue,
                "items": items.flowValue,
            ]
        }

        public static let schema = ValueSchema.object(
            name: "Output",
            properties: [
                ValueSchema.Property(name: "order id", description: "The number", schema: .string),
                ValueSchema.Property(name: "amount", schema: .double),
                ValueSchema.Property(name: "status", schema: Status.schema(name: "status")),
                ValueSchema.Property(name: "items", schema: .array(Item.schema), isOptional: true),
            ])
    }
}

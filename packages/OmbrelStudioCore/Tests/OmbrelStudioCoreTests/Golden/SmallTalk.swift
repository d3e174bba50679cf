// Made by Ombrel Studio from the flow “Small Talk”.

import OmbrelRuntime
import Synchronization

/// The flow “Small Talk”.
public final class SmallTalk: Sendable {
    /// Where the flow ends.
    public enum Output: Sendable, Equatable {
        case done(String)
    }

    /// The answer to a message.
    public struct Reply: Sendable, Equatable {
        /// What the user is told.
        public let text: String
        /// Where the flow ended.
        public let output: Output
    }

    private let data: FlowData
    private let model: any LanguageModel
    private let embedder: any QueryEmbedder
    private let trace: TraceHandler
    private let conversation: Mutex<[ConversationTurn]>

    init(
        data: FlowData,
        model: any LanguageModel = OnDeviceModel.default,
        embedder: any QueryEmbedder = OnDeviceEmbedder.default,
        turns: [ConversationTurn] = [],
        trace: @escaping TraceHandler = { _ in }
    ) {
        self.data = data
        self.model = model
        self.embedder = embedder
        self.trace = trace
        conversation = Mutex(turns)
    }

    /// What was said so far.
    public var turns: [ConversationTurn] {
        conversation.withLock { $0 }
    }

    /// Answers a message. Send the next one when this is answered. Throws a
    /// `FlowError`, and the message then is no part of the conversation.
    public func send(_ message: String) async throws -> Reply {
        let run = FlowRun(
            data: data, model: model, embedder: embedder,
            history: turns, trace: trace)
        run.begin(message: message)
        let output = try await follow(run)
        let reply = Reply(text: run.outcome?.reply ?? "", output: output)
        let turn = ConversationTurn(user: message, assistant: reply.text)
        conversation.withLock { $0.append(turn) }
        return reply
    }

    // MARK: - The way through the flow

    private func follow(_ run: FlowRun) async throws -> Output {
        let talker = try await askTalker(run)
        run.finish("done", carriesOutput: true)
        return .done(talker)
    }

    // MARK: - Agents

    /// The agent “Talker”.
    private func askTalker(_ run: FlowRun) async throws -> String {
        try await run.ask(0)
    }
}

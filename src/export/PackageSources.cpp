#include "export/PackageSources.h"

#include "export/ChunkFields.h"
#include "export/SwiftLiteral.h"

#include <initializer_list>
#include <vector>

namespace ombrel {

namespace {

// Adds the text with every "{key}" replaced.
struct FillIn {
    std::string_view key;
    std::string_view value;
};
void appendFilled(std::string& source, std::string_view text,
                  std::initializer_list<FillIn> fillIns) {
    while (!text.empty()) {
        const std::size_t brace = text.find('{');
        source += text.substr(0, brace);
        if (brace == std::string_view::npos) {
            return;
        }
        text.remove_prefix(brace);
        bool isFilled = false;
        for (const auto& [key, value] : fillIns) {
            if (text.substr(1).starts_with(key) && text.substr(1 + key.size()).starts_with('}')) {
                source += value;
                text.remove_prefix(key.size() + 2);
                isFilled = true;
                break;
            }
        }
        if (!isFilled) {
            source += '{';
            text.remove_prefix(1);
        }
    }
}

constexpr std::string_view manifest =
    R"swift(// swift-tools-version: 6.2
import PackageDescription

let package = Package(
    name: "{name}",
    // v26 is the minimum that actually has FoundationModels' SystemLanguageModel —
    // without this, `answer()` fails to compile with "only available in macOS 26.0".
    platforms: [.macOS(.v26), .iOS(.v26)],
    products: [
        .library(name: "{name}", targets: ["{name}"])
    ],
    targets: [
        .target(name: "{name}")
    ]
))swift";

constexpr std::string_view keywordIndex =
    R"swift(import Foundation

/// Okapi BM25 keyword index — the exact same algorithm Lindquark itself uses.
struct KeywordIndex {
    private struct Entry {
        let chunk: RAGChunk
        let termFrequency: [String: Int]
        let length: Int
    }

    private let entries: [Entry]
    private let documentFrequency: [String: Int]
    private let averageLength: Double

    init(chunks: [RAGChunk]) {
        var entries: [Entry] = []
        entries.reserveCapacity(chunks.count)
        var documentFrequency: [String: Int] = [:]
        var totalLength = 0
        for chunk in chunks {
            let terms = Self.tokenize(chunk.searchText)
            var termFrequency: [String: Int] = [:]
            for term in terms {
                termFrequency[term, default: 0] += 1
            }
            for term in termFrequency.keys {
                documentFrequency[term, default: 0] += 1
            }
            totalLength += terms.count
            entries.append(Entry(chunk: chunk, termFrequency: termFrequency, length: terms.count))
        }
        self.entries = entries
        self.documentFrequency = documentFrequency
        averageLength = entries.isEmpty ? 0 : Double(totalLength) / Double(entries.count)
    }

    /// The lower-cased runs of letters and numbers, in order.
    static func tokenize(_ text: String) -> [String] {
        let lower = text.lowercased()
        guard lower.utf8.allSatisfy({ $0 < 0x80 }) else {
            return lower.split { !($0.isLetter || $0.isNumber) }.map(String.init)
        }
        // In ASCII a byte is a character (CR LF aside, of which both are separators).
        return lower.utf8.split { !(0x61...0x7A ~= $0 || 0x30...0x39 ~= $0) }
            .map { String(Substring($0)) }
    }

    /// The best chunks first; at equal scores in their own order.
    func search(_ query: String, topK: Int) -> [(chunk: RAGChunk, score: Double)] {
        guard !entries.isEmpty else { return [] }
        let k1 = 1.5
        let b = 0.75
        // Distinct terms in the order of the query, so that sums are the same in every run.
        var seen = Set<String>()
        let queryTerms = Self.tokenize(query).filter { seen.insert($0).inserted }
        guard !queryTerms.isEmpty else { return [] }

        let n = Double(entries.count)
        let average = max(averageLength, 1)
        var scored: [(offset: Int, score: Double)] = []
        for (offset, entry) in entries.enumerated() {
            var score = 0.0
            for term in queryTerms {
                guard let frequency = entry.termFrequency[term], frequency > 0,
                      let containing = documentFrequency[term], containing > 0
                else { continue }
                let tf = Double(frequency)
                let df = Double(containing)
                let idf = log((n - df + 0.5) / (df + 0.5) + 1)
                let denominator = tf + k1 * (1 - b + b * Double(entry.length) / average)
                score += idf * (tf * (k1 + 1)) / denominator
            }
            if score > 0 {
                scored.append((offset: offset, score: score))
            }
        }
        scored.sort { $0.score != $1.score ? $0.score > $1.score : $0.offset < $1.offset }
        return scored.prefix(max(topK, 0)).map { (chunk: entries[$0.offset].chunk, score: $0.score) }
    }
}
)swift";

constexpr std::string_view vectorIndex =
    R"swift(import Foundation
import NaturalLanguage

/// Cosine-similarity semantic index over precomputed sentence embeddings — the exact
/// same algorithm Lindquark itself uses (see VectorIndex.swift), built on Apple's
/// on-device NLEmbedding. No server calls, no bundled model of our own.
struct VectorIndex {
    private struct Entry {
        let chunk: RAGChunk
    }

    private let entries: [Entry]
    private let language: NLLanguage

    init(chunks: [RAGChunk], language: NLLanguage) {
        entries = chunks.map { Entry(chunk: $0) }
        self.language = language
    }

    /// The nearest chunks first; at equal similarities in their own order.
    func search(_ query: String, topK: Int) -> [(chunk: RAGChunk, score: Double)] {
        guard !entries.isEmpty,
              let queryVector = NLEmbedding.sentenceEmbedding(for: language)?.vector(for: query)
        else { return [] }

        var scored: [(offset: Int, score: Double)] = []
        for (offset, entry) in entries.enumerated() where !entry.chunk.embedding.isEmpty {
            let similarity = Self.cosineSimilarity(queryVector, entry.chunk.embedding)
            if similarity > 0 {
                scored.append((offset: offset, score: similarity))
            }
        }
        scored.sort { $0.score != $1.score ? $0.score > $1.score : $0.offset < $1.offset }
        return scored.prefix(max(topK, 0)).map { (chunk: entries[$0.offset].chunk, score: $0.score) }
    }

    static func cosineSimilarity(_ a: [Double], _ b: [Double]) -> Double {
        guard a.count == b.count, !a.isEmpty else { return 0 }
        var dot = 0.0
        var normA = 0.0
        var normB = 0.0
        for i in a.indices {
            dot += a[i] * b[i]
            normA += a[i] * a[i]
            normB += b[i] * b[i]
        }
        guard normA > 0, normB > 0 else { return 0 }
        return dot / (normA.squareRoot() * normB.squareRoot())
    }
}

// Makes the name visible in files that do not import NaturalLanguage.
typealias NLLanguage = NaturalLanguage.NLLanguage
)swift";

constexpr std::string_view interfaceHead =
    R"swift(import Foundation
import FoundationModels

/// Generated by Lindquark — search and answer over the exported knowledge chunks.
public enum {name} {
)swift";

constexpr std::string_view keywordSection =
    R"swift(    private static let index = KeywordIndex(chunks: ragChunks)

    /// Returns the full chunks most relevant to `question`, ranked by BM25 score.
    public static func search(_ question: String, topK: Int = {topK}) -> [RAGChunk] {
        index.search(question, topK: topK).map { $0.chunk }
    }
)swift";

constexpr std::string_view vectorSection =
    R"swift(    private static let language = NLLanguage(rawValue: "{language}")
    private static let index = VectorIndex(chunks: ragChunks, language: language)

    /// Returns the full chunks most relevant to `question`, ranked by cosine similarity.
    public static func search(_ question: String, topK: Int = {topK}) -> [RAGChunk] {
        index.search(question, topK: topK).map { $0.chunk }
    }
)swift";

constexpr std::string_view hybridSection =
    R"swift(    private static let language = NLLanguage(rawValue: "{language}")
    private static let keywordIndex = KeywordIndex(chunks: ragChunks)
    private static let vectorIndex = VectorIndex(chunks: ragChunks, language: language)

    /// Returns the chunks most relevant to `question`, fusing Keyword and Vector
    /// rankings with Reciprocal Rank Fusion (k = 60) — the same fusion CompositeSearcher
    /// uses in the app itself, since BM25 and cosine scores aren't on the same scale.
    public static func search(_ question: String, topK: Int = {topK}) -> [RAGChunk] {
        let widerK = max(topK * 3, topK)
        let keywordHits = keywordIndex.search(question, topK: widerK)
        let vectorHits = vectorIndex.search(question, topK: widerK)
        let rrfK = 60.0
        var rankByID: [String: Double] = [:]
        var chunkByID: [String: RAGChunk] = [:]
        for (i, hit) in keywordHits.enumerated() {
            rankByID[hit.chunk.id, default: 0] += 1.0 / (rrfK + Double(i + 1))
            chunkByID[hit.chunk.id] = hit.chunk
        }
        for (i, hit) in vectorHits.enumerated() {
            rankByID[hit.chunk.id, default: 0] += 1.0 / (rrfK + Double(i + 1))
            chunkByID[hit.chunk.id] = hit.chunk
        }
        let ranked = rankByID.sorted { $0.value > $1.value }.prefix(topK)
        return ranked.compactMap { chunkByID[$0.key] }
    }
)swift";

constexpr std::string_view answerSection = R"swift(
    /// Retrieves relevant chunks and asks the on-device model to answer using only that context.
    public static func answer(_ question: String, topK: Int = {topK}, contextBudget: Int = {contextBudget}) async -> String {
        let chunks = search(question, topK: topK)
        guard !chunks.isEmpty else {
            return "Nothing in the indexed content matched this question closely enough to answer."
        }

        var packedTokens = 0
        var contextPieces: [String] = []
        for (i, chunk) in chunks.enumerated() {
            guard packedTokens + chunk.packTokenCount <= contextBudget else { continue }
            packedTokens += chunk.packTokenCount
            contextPieces.append("[\(i + 1)] \(chunk.breadcrumbString): \(chunk.packText)")
        }
        let prompt = "Context:\n\(contextPieces.joined(separator: "\n\n"))\n\nQuestion: \(question)"

        switch SystemLanguageModel.default.availability {
        case .available:
            do {
                let session = LanguageModelSession(
                    instructions: "Answer the question using only the provided context. If the answer isn't in the context, say you don't know."
                )
                let response = try await session.respond(to: prompt)
                return response.content
            } catch {
                return "Retrieved \(contextPieces.count) chunk(s), but the on-device model failed to answer: \(error.localizedDescription)"
            }
        case .unavailable(let reason):
            return "Retrieved \(contextPieces.count) chunk(s). On-device model unavailable (\(String(describing: reason))) — enable Apple Intelligence to generate an answer."
        }
    }
}
)swift";

std::string_view searchSection(IndexKind kind) {
    switch (kind) {
    case IndexKind::vector:
        return vectorSection;
    case IndexKind::hybrid:
        return hybridSection;
    case IndexKind::spotlight:
    case IndexKind::keyword:
        break;
    }
    return keywordSection;
}

void appendQuoted(std::string& source, std::string_view text) {
    source += '"';
    appendSwiftEscaped(source, text);
    source += '"';
}

// Adds what `append` adds for each value, with ", " between.
template <class Values, class Append>
void appendList(std::string& source, const Values& values, Append append) {
    source += '[';
    bool isFirst = true;
    for (const auto& value : values) {
        if (!isFirst) {
            source += ", ";
        }
        isFirst = false;
        append(source, value);
    }
    source += ']';
}

void appendChunk(std::string& source, const DocumentChunk& chunk) {
    source += "    RAGChunk(id: ";
    appendQuoted(source, chunk.id.text());
    source += ", breadcrumb: ";
    appendList(source, chunk.breadcrumb, appendQuoted);
    source += ", text: ";
    appendQuoted(source, chunk.text);
    source += ", tokenCount: ";
    source += std::to_string(chunk.tokenCount);
    source += ", searchText: ";
    appendQuoted(source, chunk.searchText());
    source += ", packText: ";
    appendQuoted(source, chunk.packText());
    source += ", packTokenCount: ";
    source += std::to_string(packTokenCount(chunk));
    source += ", embedding: ";
    static const std::vector<double> none;
    appendList(source, chunk.embedding ? *chunk.embedding : none, appendSwiftDouble);
    source += "),\n";
}

// What the chunks mostly need at most, so that the source is not moved while it grows.
std::size_t expectedSize(const IndexedChunks& pairs) {
    constexpr std::size_t perChunk = 512;
    constexpr std::size_t perNumber = 24;
    std::size_t size = 4096;
    for (const IndexedDocument& entry : pairs) {
        for (const DocumentChunk& chunk : entry.chunks) {
            size += perChunk + 2 * chunk.text.size() + chunk.packText().size();
            size += (2 * chunk.text.size() + chunk.packText().size()) / 16;
            size += chunk.embedding ? perNumber * chunk.embedding->size() : 0;
        }
    }
    return size;
}

} // namespace

std::string manifestSource(std::string_view packageName) {
    std::string source;
    appendFilled(source, manifest, {{"name", packageName}});
    return source;
}

std::string chunksSource(const IndexedChunks& pairs) {
    std::string source;
    source.reserve(expectedSize(pairs));
    source += chunkDeclaration;
    source += "\nlet ragChunks: [RAGChunk] = [\n";
    for (const IndexedDocument& entry : pairs) {
        for (const DocumentChunk& chunk : entry.chunks) {
            appendChunk(source, chunk);
        }
    }
    source += "]\n";
    return source;
}

std::string_view keywordIndexSource() {
    return keywordIndex;
}

std::string_view vectorIndexSource() {
    return vectorIndex;
}

std::string interfaceSource(std::string_view packageName, const BuildSettings& settings,
                            std::string_view language) {
    const std::string topK = std::to_string(truncated(settings.topK));
    const std::string contextBudget = std::to_string(truncated(settings.contextBudget));
    const std::string languageText = swiftStringEscape(language);
    std::string source;
    appendFilled(source, interfaceHead, {{"name", packageName}});
    appendFilled(source, searchSection(settings.index),
                 {{"topK", topK}, {"language", languageText}});
    appendFilled(source, answerSection, {{"topK", topK}, {"contextBudget", contextBudget}});
    return source;
}

} // namespace ombrel

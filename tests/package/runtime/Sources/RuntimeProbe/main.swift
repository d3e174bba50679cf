// Shows what the runtime of compiled flows does:
//
//   RuntimeProbe search FOLDER   searches what runtime_samples wrote, and writes what was found
//   RuntimeProbe model           asks the system's model, where the build has one
import Foundation
import OmbrelRuntime

func text(_ field: Substring) -> String {
    let digits = field.utf8.dropFirst().map { $0 < 97 ? $0 - 48 : $0 - 87 }
    let bytes = stride(from: 0, to: digits.count, by: 2).map { digits[$0] << 4 | digits[$0 + 1] }
    return String(decoding: bytes, as: UTF8.self)
}

func vector(_ fields: ArraySlice<Substring>) -> [Double]? {
    fields.first == "-" ? nil : fields.map { Double(bitPattern: UInt64($0, radix: 16)!) }
}

func lines(_ url: URL) throws -> [[Substring]] {
    try String(contentsOf: url, encoding: .utf8).split(separator: "\n").map { line in
        String(line).split(separator: " ", omittingEmptySubsequences: false)
    }
}

func search(_ folder: URL) throws {
    for name in ["small", "large", "empty"] {
        let chunks = try lines(folder.appending(path: name + ".chunks")).map { fields in
            RAGChunk(
                id: UUID(uuidString: String(fields[0]))!, breadcrumb: text(fields[1]),
                searchText: text(fields[2]), packText: text(fields[3]),
                embedding: vector(fields[4...]))
        }
        let file = folder.appending(path: name + ".knowledge")
        try KnowledgeFile.write(chunks, to: file)
        let queries = try lines(folder.appending(path: name + ".queries"))
        for (form, output) in [("memory", name + ".memory"), ("file", name + ".file")] {
            var found = ""
            for kind in [IndexKind.keyword, .vector, .hybrid] {
                for (number, query) in queries.enumerated() {
                    let topK = Int(query[0])!
                    let knowledge =
                        form == "file"
                        ? try Knowledge(contentsOf: file, indexKind: kind, topK: topK, threshold: 0)
                        : knowledgeInMemory(name, chunks, kind, topK)
                    found += "\(kind.rawValue) \(number)"
                    for passage in knowledge.search(text(query[1]), vector: vector(query[2...])) {
                        let id = passage.id.uuidString
                        found += " \(id)=" + String(passage.score.bitPattern, radix: 16)
                    }
                    found += "\n"
                }
            }
            try found.write(
                to: folder.appending(path: output), atomically: true, encoding: .utf8)
        }
    }
}

nonisolated(unsafe) var inMemory: [String: KnowledgeFile] = [:]

/// The same chunks under another kind share their indexes.
func knowledgeInMemory(
    _ name: String, _ chunks: [RAGChunk], _ kind: IndexKind, _ topK: Int
) -> Knowledge {
    let file = inMemory[name] ?? KnowledgeFile(chunks: chunks)
    inMemory[name] = file
    return Knowledge(file, indexKind: kind, topK: topK, threshold: 0)
}

func askModel() async throws {
    #if canImport(FoundationModels)
        let schema = ValueSchema.object(
            name: "Output",
            properties: [
                .init(name: "title", description: "What it is called", schema: .string),
                .init(name: "count", schema: .int, isOptional: true),
                .init(name: "prices", schema: .array(.double)),
                .init(name: "kind", schema: .choice(name: "kind", cases: ["a", "b"])),
                .init(
                    name: "inner",
                    schema: .object(
                        name: "inner", properties: [.init(name: "open", schema: .bool)])),
            ])
        print(try await OnDeviceModel.default.respond(instructions: "Be kind.", prompt: "Hi"))
        print(
            try await OnDeviceModel.default.respond(
                instructions: "Be kind.", prompt: "Hi", schema: schema
            ).json)
        do {
            _ = try await OnDeviceModel.default.respond(instructions: "unavailable", prompt: "Hi")
        } catch {
            print(FlowError.message(of: error))
        }
        let vector = try await OnDeviceEmbedder.default.vector(
            for: "pump", inLanguageOf: "Die Pumpe ist rot.")
        print(vector.map { "\($0)" } ?? "no vector")
    #else
        print("no model")
    #endif
}

switch CommandLine.arguments.dropFirst().first {
case "search": try search(URL(filePath: CommandLine.arguments[2]))
case "model": try await askModel()
default: exit(2)
}

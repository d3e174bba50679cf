import Foundation
import Synchronization
import Testing

@testable import OmbrelRuntime

private struct FixedEmbedder: QueryEmbedder {
    var result: Result<[Double]?, FlowError>
    func vector(for text: String, inLanguageOf sample: String) async throws -> [Double]? {
        try result.get()
    }
}

/// The same numbers in every run.
private struct SameNumbers: RandomNumberGenerator {
    private var state: UInt64 = 20_250_311
    mutating func next() -> UInt64 {
        state = state &* 6_364_136_223_846_793_005 &+ 1_442_695_040_888_963_407
        return state ^ state >> 29
    }
}

@Suite struct KnowledgeTests {
    private let folder = FileManager.default.temporaryDirectory.appending(path: UUID().uuidString)

    private func chunk(_ text: String, _ embedding: [Double]? = nil, id: UUID = UUID()) -> RAGChunk {
        RAGChunk(id: id, breadcrumb: "B", searchText: text, packText: text, embedding: embedding)
    }

    private func withFile<Value>(
        _ chunks: [RAGChunk], _ body: (URL) throws -> Value
    ) throws -> Value {
        try FileManager.default.createDirectory(at: folder, withIntermediateDirectories: true)
        defer { try? FileManager.default.removeItem(at: folder) }
        let url = folder.appending(path: "a knowledge é")
        try KnowledgeFile.write(chunks, to: url)
        return try body(url)
    }

    private let samples = [
        RAGChunk(
            id: UUID(), breadcrumb: "A > \"B\"", searchText: "Straße\r\ncafé\0", packText: "Straße"),
        RAGChunk(
            id: UUID(), breadcrumb: "A > \"B\"", searchText: "", packText: "parent",
            embedding: []),
        RAGChunk(
            id: UUID(), breadcrumb: "", searchText: "cafe\u{301} 👩‍👩‍👧‍👦 12", packText: "",
            embedding: [0.1, -.infinity, .leastNonzeroMagnitude]),
    ]

    @Test func aFileGivesBackWhatWasWritten() throws {
        try withFile(samples) { url in
            let file = try KnowledgeFile(contentsOf: url)
            #expect(file.count == 3)
            for (position, sample) in samples.enumerated() {
                #expect(file.chunk(position) == sample)
                #expect(file.id(position) == sample.id)
            }
            let bytes = try Data(contentsOf: url)
            try KnowledgeFile.write(samples, to: url)
            #expect(try Data(contentsOf: url) == bytes)
            #expect(try FileManager.default.contentsOfDirectory(atPath: folder.path).count == 1)
        }
    }

    @Test func aFileIsSearchedAsMemoryIs() throws {
        try withFile(samples + samples) { url in
            let file = try KnowledgeFile(contentsOf: url)
            let memory = KnowledgeFile(chunks: samples + samples)
            for query in ["CAFÉ", "cafe\u{301}", "strasse", "straße 12", "12", "", "👩‍👩‍👧‍👦"] {
                let found = file.keywordIndex.search(query, topK: 10)
                #expect(found == memory.keywordIndex.search(query, topK: 10))
            }
            #expect(file.keywordIndex.search("CAFÉ", topK: 10).map(\.position) == [0, 2, 3, 5])
            let vector = [1.0, 0, 0]
            #expect(
                file.vectorIndex.search(vector, topK: 9)
                    == memory.vectorIndex.search(vector, topK: 9))
        }
    }

    @Test func noChunksAreKnowledgeToo() throws {
        try withFile([]) { url in
            let file = try KnowledgeFile(contentsOf: url)
            #expect(file.count == 0)
            #expect(file.keywordIndex.search("a", topK: 3).isEmpty)
            #expect(file.vectorIndex.search([1], topK: 3).isEmpty)
        }
    }

    @Test func aFileStaysReadableWhenItIsReplaced() throws {
        try withFile(samples) { url in
            let file = try KnowledgeFile(contentsOf: url)
            try KnowledgeFile.write([], to: url)
            #expect(file.chunk(2) == samples[2])
            #expect(try KnowledgeFile(contentsOf: url).count == 0)
        }
    }

    @Test func damagedFilesAreRefusedOrReadSafely() throws {
        try withFile(samples) { url in
            let whole = [UInt8](try Data(contentsOf: url))
            func open(_ bytes: some Collection<UInt8>) throws -> KnowledgeFile {
                try Data(bytes).write(to: url)
                return try KnowledgeFile(contentsOf: url)
            }
            for count in 0..<whole.count {
                #expect(throws: FlowError.self) { try open(whole[..<count]) }
            }
            #expect(throws: FlowError.self) { try open(whole + [0]) }
            var random = SameNumbers()
            for index in whole.indices {
                for byte in [0xFF, UInt8.random(in: 0...255, using: &random)] as [UInt8] {
                    var bytes = whole
                    bytes[index] = byte
                    guard let file = try? open(bytes) else { continue }
                    for position in 0..<file.count {
                        _ = file.chunk(position)
                    }
                    _ = file.keywordIndex.search("straße café 12 x", topK: 5)
                    _ = file.vectorIndex.search([1, 2, 3], topK: 5)
                }
            }
        }
    }

    @Test func aFileThatIsNotThereIsAnError() {
        let error = #expect(throws: FlowError.self) {
            try KnowledgeFile(contentsOf: URL(filePath: "/nowhere/file"))
        }
        #expect(error?.message == "/nowhere/file can't be read: No such file or directory.")
        let written = #expect(throws: FlowError.self) {
            try KnowledgeFile.write([], to: URL(filePath: "/nowhere/file"))
        }
        #expect(written?.message == "/nowhere/file can't be written: No such file or directory.")
    }

    @Test func termsAreLowerCaseRunsOfLettersAndNumbers() {
        #expect(
            KeywordIndex.tokenize("Don't STOP-me_now: 3.14, x²\r\nCafé👍Ⅷ I\u{301}\u{1F}z")
                == ["don", "t", "stop", "me", "now", "3", "14", "x²", "café", "ⅷ", "i\u{301}", "z"])
        #expect(KeywordIndex.tokenize("ΟΔΟΣ İ") == ["οδοσ", "i\u{307}"])
        #expect(KeywordIndex.tokenize("") == [])
        #expect(KeywordIndex.tokenize("…—") == [])
    }

    @Test func fastReadingCutsAsTheWholeTextDoes() {
        let pieces = [
            "a", "B", "9", " ", "-", "\r\n", "é", "e\u{301}", "\u{301}", "—", "👩‍👩‍👧‍👦", "🇩🇪", "一", "\u{200D}",
            "ß", "longerword", "\0", "\u{212A}", "\u{FE0F}", "\u{600}",
        ]
        var random = SameNumbers()
        for _ in 0..<3000 {
            let text = (0..<Int.random(in: 1...12, using: &random)).map { _ in
                pieces.randomElement(using: &random)!
            }.joined()
            let plain = text.lowercased().split { !($0.isLetter || $0.isNumber) }.map(String.init)
            #expect(KeywordIndex.tokenize(text) == plain, "\(Array(text.unicodeScalars))")
        }
    }

    @Test func termsAreFoundInEveryFormAndAmongAllOthers() {
        let terms = [
            "한국어", "\u{1112}\u{1161}\u{11AB}", "cafe\u{301}", "ㅎ", "𐐨", "ﬁn", "三", "zz", "a", "ab", "卅", "१२",
        ]
        let index = KeywordIndex(chunks: terms.map { chunk($0) })
        for (position, term) in terms.enumerated() {
            #expect(index.search(term, topK: 9).map(\.position) == [position], "\(term)")
        }
        #expect(index.search("한", topK: 9).map(\.position) == [1])
        #expect(index.search("CAF\u{C9}", topK: 9).map(\.position) == [2])
        #expect(index.search("b zzz", topK: 9).isEmpty)
    }

    @Test func atEqualScoresTheEarlierChunkStandsFirst() {
        let index = KeywordIndex(chunks: ["x y", "x z", "y", "x w"].map { chunk($0) })
        #expect(index.search("X", topK: 2).map(\.position) == [0, 1])
        #expect(index.search("x", topK: 0).isEmpty)
        #expect(index.search("x", topK: -1).isEmpty)
        #expect(index.search("x", topK: .max).map(\.position) == [0, 1, 3])
    }

    @Test func theBestOfManyAreKept() {
        var best = BestFound(topK: 3)
        for position in 0..<10_000 {
            best.offer(Found(position: position, score: Double(position % 100)))
        }
        #expect(best.found.map(\.position) == [99, 199, 299])
    }

    @Test func vectorsOfOtherLengthsAndWithoutLengthAreNotNear() {
        let index = VectorIndex(chunks: [
            chunk("", [1, 0]), chunk("", nil), chunk("", []), chunk("", [0, 0]), chunk("", [1, 2, 3]),
            chunk("", [-1, 0]), chunk("", [.nan, 1]), chunk("", [1, 1]),
        ])
        #expect(index.search([2, 0], topK: 9).map(\.position) == [0, 7])
        #expect(index.search([2, 0], topK: 9)[0].score == 1)
        #expect(index.search([0, 0], topK: 9).isEmpty)
        #expect(index.search([], topK: 9).isEmpty)
        #expect(index.search([.nan, 0], topK: 9).isEmpty)
    }

    @Test func aHitAtTheThresholdIsKept() {
        let chunks = [chunk("pump pump"), chunk("pump and other words"), chunk("hose")]
        let second = Knowledge(chunks: chunks, indexKind: .keyword, topK: 3, threshold: 0)
            .search("pump", vector: nil)[1].score
        func count(_ threshold: Double) -> Int {
            Knowledge(chunks: chunks, indexKind: .keyword, topK: 3, threshold: threshold)
                .search("pump", vector: nil).count
        }
        #expect(count(second) == 2)
        #expect(count(second.nextUp) == 1)
        #expect(count(1) == 1)
        #expect(count(0) == 2)
    }

    @Test func aSearchGivesOnePassageAtLeast() {
        let knowledge = Knowledge(
            chunks: [chunk("pump"), chunk("pump")], indexKind: .keyword, topK: 0, threshold: 0)
        #expect(knowledge.search("pump", vector: nil).count == 1)
    }

    @Test func ranksOfBothSearchesAreFused() {
        let chunks = [chunk("pump", [0, 1]), chunk("hose", [1, 0]), chunk("pump hose", [1, 1])]
        let knowledge = Knowledge(chunks: chunks, indexKind: .hybrid, topK: 3, threshold: 0)
        let found = knowledge.search("pump", vector: [1, 0])
        #expect(found.map(\.id) == [chunks[2].id, chunks[0].id, chunks[1].id])
        #expect(found[1].score == (1 / 61.0) / (1 / 62.0 + 1 / 62.0))
        #expect(found[1].score == found[2].score)
        #expect(knowledge.search("pump", vector: nil).map(\.id) == [chunks[0].id, chunks[2].id])
    }

    @Test func chunksOfOneIdAreOneInHybridKnowledge() {
        let id = UUID()
        let chunks = [chunk("pump", [1, 0], id: id), chunk("pump pump", [0, 1], id: id)]
        let found = Knowledge(chunks: chunks, indexKind: .hybrid, topK: 3, threshold: 0)
            .search("pump", vector: [0, 1])
        #expect(found.map(\.text) == ["pump pump"])
    }

    @Test func hybridKnowledgeDoesWithoutAnEmbedder() async throws {
        let chunks = [chunk("pump", [1, 0])]
        let broken = FixedEmbedder(result: .failure(FlowError("No embedding.")))
        let hybrid = Knowledge(chunks: chunks, indexKind: .hybrid, topK: 3, threshold: 0)
        #expect(try await hybrid.search("pump", embedder: broken).count == 1)
        let vector = Knowledge(chunks: chunks, indexKind: .vector, topK: 3, threshold: 0)
        await #expect(throws: FlowError("No embedding.")) {
            try await vector.search("pump", embedder: broken)
        }
        let none = FixedEmbedder(result: .success(nil))
        #expect(try await vector.search("pump", embedder: none).isEmpty)
        let some = FixedEmbedder(result: .success([1, 1]))
        #expect(try await vector.search("pump", embedder: some).map(\.score) == [1])
        let keyword = Knowledge(chunks: chunks, indexKind: .keyword, topK: 3, threshold: 0)
        #expect(try await keyword.search("pump", embedder: broken).count == 1)
    }
}

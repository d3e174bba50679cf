// Stands in for the framework: sentence vectors come from the file that OMBREL_VECTORS names. Its
// lines are a language, a text in hexadecimal UTF-8, and the bits of the numbers.
import Foundation

public struct NLLanguage: RawRepresentable, Hashable, Sendable {
    public let rawValue: String
    public init(rawValue: String) {
        self.rawValue = rawValue
    }
}

public final class NLEmbedding: Sendable {
    private let vectors: [String: [Double]]

    private init(vectors: [String: [Double]]) {
        self.vectors = vectors
    }

    private static let all: [String: NLEmbedding] = {
        let path = ProcessInfo.processInfo.environment["OMBREL_VECTORS"]!
        var tables: [String: [String: [Double]]] = [:]
        for line in try! String(contentsOfFile: path, encoding: .utf8).split(separator: "\n") {
            let parts = line.split(separator: " ", omittingEmptySubsequences: false)
            tables[String(parts[0]), default: [:]][String(parts[1])] = parts.dropFirst(2).map {
                Double(bitPattern: UInt64($0, radix: 16)!)
            }
        }
        return tables.mapValues { NLEmbedding(vectors: $0) }
    }()

    public class func sentenceEmbedding(for language: NLLanguage) -> NLEmbedding? {
        all[language.rawValue]
    }

    public func vector(for string: String) -> [Double]? {
        vectors[string.utf8.map { ($0 < 16 ? "0" : "") + String($0, radix: 16) }.joined()]
    }
}

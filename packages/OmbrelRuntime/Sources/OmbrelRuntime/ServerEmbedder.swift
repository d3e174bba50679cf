/// Sentence vectors from a server on this machine with the OpenAI protocol: the f32 numbers that it
/// gives, as doubles. A text that the server refuses as too long is cut in two at white space near
/// its middle, and the parts likewise until they are accepted; its vector is the mean of the parts'
/// vectors, weighted by their lengths in bytes and scaled to length 1.
struct ServerEmbedder: QueryEmbedder {
    /// A part of a text that is so short was not refused for its length.
    private static let shortestPart = 16

    private let address: LoopbackAddress
    private let key: String
    private let name: String
    private let limits: LoopbackRequest.Limits

    init(
        url: String, key: String, name: String,
        limits: LoopbackRequest.Limits = LoopbackRequest.Limits(total: .seconds(600))
    ) throws {
        address = try LoopbackAddress(url)
        self.key = key
        self.name = name
        self.limits = limits
    }

    func vector(for text: String, inLanguageOf sample: String) async throws -> [Double]? {
        var done: [(weight: Double, vector: [Double])] = []
        var left = [Array(text.utf8)]  // the next one last
        while let part = left.popLast() {
            do {
                let vector = try await embed(String(decoding: part, as: UTF8.self))
                if part.count == text.utf8.count {
                    return vector
                }
                done.append((Double(part.count), vector))
            } catch let error as ServerError {
                guard error.kind == .tooLong, part.count > Self.shortestPart else {
                    throw error.error
                }
                let cut = Self.cutPosition(part)
                left.append(Array(part[cut...]))
                left.append(Array(part[..<cut]))
            }
        }
        return Self.weightedMean(done)
    }

    private func embed(_ text: String) async throws -> [Double] {
        var members: FlowValue.Members = [:]
        if !name.isEmpty {
            members["model"] = .string(name)
        }
        members["input"] = .array([.string(text)])
        let json = FlowValue.object(members).json
        let response = try await reached {
            try await LoopbackRequest(
                to: address, path: "/embeddings", json: json, key: key, limits: limits
            ).send()
        }
        guard response.status < 400 else { throw ServerError(response) }
        guard case .array(let data)? = (try? FlowValue(json: response.text))?["data"],
            data.count == 1, case .array(let numbers)? = data[0]["embedding"], !numbers.isEmpty
        else {
            throw FlowError("The embedding server answered with something that is not a vector.")
        }
        return try numbers.map {
            guard let number = $0.number, Float(number).isFinite else {
                throw FlowError(
                    "The embedding server answered with something that is not a vector.")
            }
            return Double(Float(number))
        }
    }

    /// Where to cut a text in two: at the white space nearest to its middle, else between two
    /// scalars. Both parts have something in them.
    static func cutPosition(_ text: [UInt8]) -> Int {
        let middle = text.count / 2
        let blanks: [UInt8] = [0x20, 0x0A, 0x0D, 0x09]
        let before = text[...middle].lastIndex(where: blanks.contains)
        let after = text[middle...].firstIndex(where: blanks.contains)
        var nearest = after ?? before
        if let before, let after, middle - before < after - middle {
            nearest = before
        }
        if let nearest, nearest > 0, nearest + 1 < text.count {
            return nearest
        }
        var position = middle
        while position > 1, text[position] & 0xC0 == 0x80 {
            position -= 1
        }
        return position
    }

    private static func weightedMean(
        _ parts: [(weight: Double, vector: [Double])]
    ) -> [Double]? {
        guard let first = parts.first,
            parts.allSatisfy({ $0.vector.count == first.vector.count })
        else { return nil }
        var mean = [Double](repeating: 0, count: first.vector.count)
        for (weight, vector) in parts {
            for i in mean.indices {
                mean[i] += weight * vector[i]
            }
        }
        let length = VectorIndex.squares(mean).squareRoot()
        return length > 0 ? mean.map { $0 / length } : mean
    }
}

/// How knowledge is searched: by its words, by the nearness of vectors, or by both.
public enum IndexKind: String, Codable, Sendable {
    case keyword, vector, hybrid
}

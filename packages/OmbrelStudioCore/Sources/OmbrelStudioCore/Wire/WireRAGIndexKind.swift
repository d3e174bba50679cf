/// How knowledge is searched.
public enum WireRAGIndexKind: String, Sendable {
    case keyword, vector, hybrid
}

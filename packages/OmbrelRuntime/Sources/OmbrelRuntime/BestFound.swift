/// Keeps the best `topK` of what is offered in ascending order of positions; at equal scores the
/// earlier position stands first.
struct BestFound {
    private let limit: Int
    private var kept: [Found] = []

    init(topK: Int) {
        limit = min(max(topK, 0), Int.max / 4)
    }

    mutating func offer(_ new: Found) {
        kept.append(new)
        // Now and then the best are sorted out, so that this is cheap for each.
        if kept.count >= 2 * limit + 1024 {
            keepBest()
        }
    }

    /// The best first.
    var found: [Found] {
        var sorted = self
        sorted.keepBest()
        return sorted.kept
    }

    private mutating func keepBest() {
        kept.sort { $0.score != $1.score ? $0.score > $1.score : $0.position < $1.position }
        kept.removeSubrange(min(limit, kept.count)...)
    }
}

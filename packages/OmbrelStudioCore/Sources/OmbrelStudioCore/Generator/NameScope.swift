/// The names that are taken where names must differ.
struct NameScope {
    private var taken: Set<String>

    /// Names that nobody gets are those that mean something to the compiler wherever they stand,
    /// and the reserved ones.
    init(reserved: Set<String> = []) {
        taken = reserved.union([
            "Any", "Protocol", "Self", "Type", "init", "self", "super", "_",
        ])
    }

    /// The name, or with the first number from 2 that makes it new.
    mutating func claim(_ name: String) -> String {
        var claimed = name
        var number = 2
        while !taken.insert(claimed).inserted {
            claimed = name + String(number)
            number += 1
        }
        return claimed
    }
}

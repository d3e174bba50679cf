struct Box<Value: Codable & Sendable, each Other>: Sendable where Value: Hashable {
    var value: Value
    var values: [Value?], table: [String: [Int]], set: Set<Int>, list: Array<Array<Int>>?
    var maybe: Optional<Int>, swift: Swift.Array<Swift.Int>, dictionary: Dictionary<String, Int>
    var pair: (Int, String), callback: (Int, Int) async throws -> Void, factory: () -> () -> Int
    var view: some View, anything: any Sendable, combined: any Codable & Hashable
    var forced: Int!, doubled: Int??, nested: [[[Double]?]!]
    var inferred = 3, typed: Int = [1, 2].count, closure = { (x: Int) -> Int in x + 1 }
    let (a, b) = (1, 2)
    var c: Int = 1 +
        2 * 3
    @State @Guide(description: "d") @MainActor private var d: Outer<Int>.Inner?
    @Wrapper.Nested(key: "e", other: [1, 2]) var e: Result<Int, Error>
    var `let`: Int; var f: repeat each Other
}

actor Counter {
    var count: Int = 0
    nonisolated let name: String
    func increment() { count += 1 }
    deinit { print("gone") }
}

open class Base {
    open var x: Int = 0
    class func make() -> Base { Base() }
    required convenience init?(coder: NSCoder) { nil }
    private struct Hidden { var y: Int }
}

public enum Tree<Leaf> {
    case leaf(Leaf), node(left: Tree, right: Tree)
    case empty
    var depth: Int { switch self { case .leaf: 1; case let .node(l, r): max(l.depth, r.depth) + 1; case .empty: 0 } }
}

precedencegroup Power { higherThan: MultiplicationPrecedence }
infix operator **: Power
typealias Pair<T> = (T, T)
macro stringify<T>(_ value: T) -> (T, String) = #externalMacro(module: "M", type: "S")

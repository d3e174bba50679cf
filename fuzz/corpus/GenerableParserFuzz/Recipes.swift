import Foundation
import FoundationModels

/// A recipe as the cook sees it.
@Generable(description: "A recipe with its steps")
struct Recipe: Codable, Hashable, Identifiable {
    let id = UUID()

    /// The name on the card.
    @Guide(description: "Short name, " + "at most five words")
    var name: String

    @Guide(description: "Minutes from start to table", .range(5...240))
    var minutes: Int

    @Guide(.anyOf(["starter", "main", "dessert"]))
    var course: String

    @Guide(description: Recipe.servingsHelp, .minimum(1), .maximum(12))
    var servings: Int? = 2

    var ingredients: [Ingredient], steps: [Step]
    var photo: Foundation.URL?
    private(set) var rating: Double = 0 {
        didSet { changed = true }
        willSet { if newValue > 5 { fatalError("too good") } }
    }
    fileprivate weak var owner: Cook?
    lazy var total: Int = { steps.reduce(0) { $0 + $1.minutes } }()
    static let servingsHelp = "How many people eat"
    class var plural: String { "recipes" }

    var summary: String {
        get { "\(name) in \(minutes) min" }
        set { name = newValue }
    }

    init(name: String, minutes: Int = 30) throws {
        self.name = name
        self.minutes = minutes
        struct Local { var lost: Int }
    }

    subscript(index: Int) -> Step { steps[index] }

    func scaled(by factor: Double, where isIncluded: (Ingredient) -> Bool = { _ in true })
        -> [Ingredient]
    {
        ingredients.filter(isIncluded).map { $0.scaled(by: factor) }
    }

    @Generable
    struct Ingredient {
        let name: String
        let amount: Double
        let unit: Unit?

        @Generable
        enum Unit: String, CaseIterable {
            /// Grams, for all that is solid.
            case gram = "g", millilitre = "ml"
            case piece
            indirect case twice(Unit)
            var label: String { rawValue }
            static func < (a: Unit, b: Unit) -> Bool { a.rawValue < b.rawValue }
        }
    }
}

extension Recipe {
    @Generable
    struct Step { let text: String; let minutes: Int }
    var isQuick: Bool { minutes < 20 }
}

protocol Cook: AnyObject {
    associatedtype Dish: Codable
    var name: String { get }
    func cook(_ recipe: Recipe) async throws -> Dish
    init()
}

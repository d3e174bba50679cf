import FoundationModels

@Generable
struct TripPlan {
    @Guide(description: "Short title of the trip")
    var title: String
    @Guide(description: "One entry a day", .count(1...14))
    var days: [Day]
    var mood: Mood?
    var budget: Decimal
    var currency: Currency
    var created: Date
    var link: URL?
    var tags: [String?]
    var extras: [String: Int]
    var next: TripPlan?
    var hotel: Hotel
    var rating = 5
    /// Kept though the guide can't be read.
    @Guide(description: Self.help) var note: String
}

@Generable
struct Day {
    var stops: [Stop], meals: [Meal]
    var mood: Mood
}

/// Not marked.
struct Stop {
    var name: String
    var place: Place
    @Guide(.anyOf(["walk", "bus", "train"])) var by: String
    @Guide(.anyOf(["a", "b"])) var codes: [String]
    @Guide(.anyOf(["1"])) var count: Int
}

@Generable struct Place { var latitude: Double, longitude: Double; var region: Region }
@Generable enum Mood { case calm, wild
    /// Neither.
    case other(String) }
@Generable enum Region {}
enum Currency: String { case euro, pound }
struct Meal { static let none = Meal() }

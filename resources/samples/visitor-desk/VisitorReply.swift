import FoundationModels

/// What the desk tells a visitor.
@Generable
struct VisitorReply {
    @Guide(description: "One short sentence that answers the question")
    var answer: String
    @Guide(description: "Whether the visitor has to book before coming")
    var mustBook: Bool
}

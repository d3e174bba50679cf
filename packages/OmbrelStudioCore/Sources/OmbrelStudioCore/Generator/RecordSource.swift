/// Swift types from typed fields: a structure with a member a field, and types within it for
/// objects and choices.
struct RecordSource {
    /// A member of the structure.
    struct Member {
        /// The name on the wire.
        var name: String
        var identifier: String
        /// The identifier as the label of an argument, where keywords need no backticks.
        var label: String
        var type: String
        var schema: String
        var property: AgentProperty
    }

    /// A type that a member needs.
    enum Nested {
        case record(RecordSource)
        case choice(ChoiceSource)
    }

    let typeName: String
    let members: [Member]
    private let schemaName: String
    private let comment: String
    private var nested: [Nested] = []

    /// How many objects and lists may lie in each other: models are held to no deeper schema.
    private static let deepest = 60

    /// Of fields of one name the first counts: an object has a key once.
    init(
        typeName: String, comment: String, schemaName: String, properties: [AgentProperty],
        depth: Int = 0
    ) throws {
        self.typeName = typeName
        self.comment = comment
        self.schemaName = schemaName
        var scope = NameScope(
            reserved: Self.reserved.union(SwiftNames.inScope).union([typeName]))
        var seen = Set<String>()
        var members: [Member] = []
        var nested: [Nested] = []
        for property in properties where seen.insert(property.name).inserted {
            let identifier = scope.claim(
                SwiftIdentifier.lowerCamel(property.name, fallback: "field"))
            let (type, schema): (String, String) = try Self.type(
                of: property.kind, property: property, isElement: false, depth: depth,
                scope: &scope, nested: &nested)
            members.append(
                Member(
                    name: property.name, identifier: SwiftIdentifier.escaped(identifier),
                    label: identifier,
                    type: type + (property.isOptional ? "?" : ""), schema: schema,
                    property: property))
        }
        self.members = members
        self.nested = nested
    }

    private static let reserved: Set<String> = ["flowValue", "schema", "members"]

    private static func type(
        of kind: PropertyKind, property: AgentProperty, isElement: Bool, depth: Int,
        scope: inout NameScope, nested: inout [Nested]
    ) throws -> (type: String, schema: String) {
        guard depth < deepest else {
            throw GeneratorError(
                "The field “\(property.name)” nests objects and lists too deeply.")
        }
        switch kind {
        case .string: return ("String", ".string")
        case .int: return ("Int", ".int")
        case .double: return ("Double", ".double")
        case .bool: return ("Bool", ".bool")
        case .array(let element):
            let inner: (type: String, schema: String) = try type(
                of: element, property: property, isElement: true, depth: depth + 1, scope: &scope,
                nested: &nested)
            return ("[\(inner.type)]", ".array(\(inner.schema))")
        case .object(let properties):
            let name: String = scope.claim(typeName(of: property, isElement: isElement))
            nested.append(
                .record(
                    try RecordSource(
                        typeName: name, comment: property.description ?? "",
                        schemaName: property.name, properties: properties, depth: depth + 1)))
            return (name, "\(name).schema")
        case .enumeration(let cases):
            // One that nobody has filled in yet takes any text.
            guard !cases.isEmpty else { return ("String", ".string") }
            let name: String = scope.claim(typeName(of: property, isElement: isElement))
            nested.append(
                .choice(
                    ChoiceSource(
                        typeName: name, comment: property.description ?? "", cases: cases)))
            return (name, "\(name).schema(name: \(SwiftLiteral.string(property.name)))")
        }
    }

    /// The type within this one that has the name.
    func nestedType(named name: String) -> Nested? {
        nested.first { type in
            switch type {
            case .record(let record): record.typeName == name
            case .choice(let choice): choice.typeName == name
            }
        }
    }

    /// An element of "items" is an `Item`.
    private static func typeName(of property: AgentProperty, isElement: Bool) -> String {
        let name: String = SwiftIdentifier.upperCamel(property.name, fallback: "Field")
        return isElement && name.utf8.count > 3 && name.hasSuffix("s") && !name.hasSuffix("ss")
            ? String(name.dropLast()) : name
    }

    /// Writes the type. Access is public where it is part of a package.
    func write(to source: inout SourceWriter) {
        source.comment(comment)
        source.block("public struct \(typeName): FlowObject, Equatable") { source in
            for member in members {
                source.comment(member.property.description ?? "")
                source.line("public var \(member.identifier): \(member.type)")
            }
            for type in nested {
                source.line()
                switch type {
                case .record(let record): record.write(to: &source)
                case .choice(let choice): choice.write(to: &source)
                }
            }
            source.lineBetween(!members.isEmpty)
            writeInitialiser(to: &source)
            source.line()
            source.block("public init(flowValue: FlowValue) throws") { source in
                for member in members {
                    let name: String = SwiftLiteral.string(member.name)
                    source.line("\(member.identifier) = try flowValue.property(\(name))")
                }
            }
            source.line()
            source.block("public var flowValue: FlowValue") { source in
                source.line(".object(members)")
            }
            source.line()
            source.block("var members: FlowValue.Members") { source in
                guard !members.isEmpty else {
                    source.line("[:]")
                    return
                }
                source.line("[")
                source.indented { source in
                    for member in members {
                        let name: String = SwiftLiteral.string(member.name)
                        source.line("\(name): \(member.identifier).flowValue,")
                    }
                }
                source.line("]")
            }
            source.line()
            writeSchema(to: &source)
        }
    }

    private func writeInitialiser(to source: inout SourceWriter) {
        let parameters: String = members.map { member in
            "\(member.identifier): \(member.type)" + (member.property.isOptional ? " = nil" : "")
        }.joined(separator: ", ")
        source.block("public init(\(parameters))") { source in
            for member in members {
                source.line("self.\(member.identifier) = \(member.identifier)")
            }
        }
    }

    private func writeSchema(to source: inout SourceWriter) {
        let name: String = SwiftLiteral.string(schemaName)
        guard !members.isEmpty else {
            source.line(
                "public static let schema = ValueSchema.object(name: \(name), properties: [])")
            return
        }
        source.line("public static let schema = ValueSchema.object(")
        source.indented { source in
            source.line("name: \(name),")
            source.line("properties: [")
            source.indented { source in
                for member in members {
                    var arguments = "name: \(SwiftLiteral.string(member.name))"
                    if let description = member.property.description {
                        arguments += ", description: \(SwiftLiteral.string(description))"
                    }
                    arguments += ", schema: \(member.schema)"
                    if member.property.isOptional {
                        arguments += ", isOptional: true"
                    }
                    source.line("ValueSchema.Property(\(arguments)),")
                }
            }
            source.line("])")
        }
    }
}

/// An enumeration from the names that may be chosen.
struct ChoiceSource {
    let typeName: String
    /// Of names that are there twice the first counts.
    let cases: [(name: String, identifier: String)]
    private let comment: String
    private let descriptions: [String?]

    init(typeName: String, comment: String, cases: [AgentEnumCase]) {
        self.typeName = typeName
        self.comment = comment
        var scope = NameScope(reserved: ["allCases", "rawValue", "flowValue", "schema", "hash"])
        var seen = Set<String>()
        let distinct: [AgentEnumCase] = cases.filter { seen.insert($0.name).inserted }
        self.cases = distinct.map { one in
            let identifier = scope.claim(SwiftIdentifier.lowerCamel(one.name, fallback: "case"))
            return (one.name, identifier)
        }
        descriptions = distinct.map(\.description)
    }

    func write(to source: inout SourceWriter) {
        source.comment(comment)
        source.block("public enum \(typeName): String, FlowChoice") { source in
            for (one, description) in zip(cases, descriptions) {
                source.comment(description ?? "")
                let value: String =
                    one.name == one.identifier ? "" : " = " + SwiftLiteral.string(one.name)
                source.line("case \(SwiftIdentifier.escaped(one.identifier))\(value)")
            }
        }
    }
}

extension SourceWriter {
    /// A comment for the documentation, nothing for no text.
    mutating func comment(_ text: String) {
        let comment: String = SwiftLiteral.comment(text)
        if comment.contains(where: { !$0.isWhitespace }) {
            line("/// " + comment)
        }
    }

    mutating func lineBetween(_ isNeeded: Bool) {
        if isNeeded {
            line()
        }
    }
}

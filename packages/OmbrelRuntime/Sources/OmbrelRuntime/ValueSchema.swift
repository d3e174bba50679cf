/// What a model's answer must look like.
public indirect enum ValueSchema: Sendable, Equatable {
    case string
    case int
    case double
    case bool
    case array(ValueSchema)
    /// One of some strings. One that is there twice counts once.
    case choice(name: String, cases: [String])
    /// An object with these properties, in this order, and no others.
    case object(name: String, properties: [Property])

    public struct Property: Sendable, Equatable {
        public var name: String
        public var description: String?
        public var schema: ValueSchema
        public var isOptional: Bool

        public init(
            name: String, description: String? = nil, schema: ValueSchema, isOptional: Bool = false
        ) {
            self.name = name
            self.description = description
            self.schema = schema
            self.isOptional = isOptional
        }

        fileprivate var jsonSchemaMembers: FlowValue.Members {
            var members: FlowValue.Members = [:]
            members["description"] = description.map { .string($0) }
            if isOptional {
                let null: FlowValue = .object(["type": "null"])
                members["anyOf"] = .array([.object(schema.jsonSchemaMembers), null])
            } else {
                for (key, value) in schema.jsonSchemaMembers {
                    members[key] = value
                }
            }
            return members
        }
    }

    /// JSON Schema text: every property in the declared order, no others allowed. An optional one
    /// may be null, which stands for its absence: servers write properties that may be left out
    /// behind all the others, whatever their order in the schema.
    public var jsonSchema: String { FlowValue.object(jsonSchemaMembers).json }

    private var jsonSchemaMembers: FlowValue.Members {
        switch self {
        case .string: return ["type": "string"]
        case .int: return ["type": "integer"]
        case .double: return ["type": "number"]
        case .bool: return ["type": "boolean"]
        case .array(let element):
            return ["type": "array", "items": .object(element.jsonSchemaMembers)]
        case .choice(_, let cases):
            var seen = Set<String>()
            let names = cases.filter { seen.insert($0).inserted }
            return ["type": "string", "enum": .array(names.map { .string($0) })]
        case .object(_, let properties):
            return [
                "type": "object",
                "properties": .object(FlowValue.Members(properties.map {
                    (key: $0.name, value: .object($0.jsonSchemaMembers))
                })),
                "required": .array(properties.map { .string($0.name) }),
                "additionalProperties": .bool(false),
            ]
        }
    }

    /// Why no server can hold an answer to the schema: a choice of nothing, two properties of one
    /// name in an object, more than 64 levels or 10,000 parts. Nothing when one can.
    public var objection: String? {
        var parts = 0
        return objection(depth: 1, parts: &parts)
    }

    private func objection(depth: Int, parts: inout Int) -> String? {
        parts += 1
        if depth > 64 {
            return "The schema is nested more than 64 levels deep."
        }
        if parts > 10_000 {
            return "The schema has more than 10000 parts."
        }
        switch self {
        case .string, .int, .double, .bool:
            return nil
        case .array(let element):
            return element.objection(depth: depth + 1, parts: &parts)
        case .choice(let name, let cases):
            return cases.isEmpty ? "The choice \"\(name)\" has no values." : nil
        case .object(let name, let properties):
            var seen = Set<String>()
            for property in properties {
                guard seen.insert(property.name).inserted else {
                    return "The object \"\(name)\" has two properties named \"\(property.name)\"."
                }
                if let fault = property.schema.objection(depth: depth + 1, parts: &parts) {
                    return fault
                }
            }
            return nil
        }
    }

    /// The value with the keys of its objects in the declared order, those that are not declared
    /// left out, and whole numbers as `int` where those are asked for. Throws a `FlowError` that
    /// says what does not fit and where, as in `"items[2].price" is not a number`.
    public func fitted(_ value: FlowValue) throws -> FlowValue {
        try fitted(value, path: "")
    }

    private func fitted(_ value: FlowValue, path: String) throws -> FlowValue {
        func fault(_ what: String, at path: String) -> FlowError {
            FlowError((path.isEmpty ? "The answer " : "\"\(path)\" ") + what)
        }
        switch self {
        case .string:
            guard case .string = value else { throw fault("is not a string", at: path) }
            return value
        case .int:
            guard let whole = try? Int(flowValue: value) else {
                throw fault("is not a whole number", at: path)
            }
            return .int(whole)
        case .double:
            guard value.number != nil else { throw fault("is not a number", at: path) }
            return value
        case .bool:
            guard case .bool = value else { throw fault("is not true or false", at: path) }
            return value
        case .array(let element):
            guard case .array(let values) = value else { throw fault("is not a list", at: path) }
            return .array(try values.enumerated().map {
                try element.fitted($0.element, path: "\(path)[\($0.offset)]")
            })
        case .choice(_, let cases):
            guard case .string(let name) = value, cases.contains(name) else {
                throw fault("is none of the choices", at: path)
            }
            return value
        case .object(_, let properties):
            guard case .object(let members) = value else {
                throw fault("is not an object", at: path)
            }
            var fitted = FlowValue.Members()
            for property in properties {
                let inner = path.isEmpty ? property.name : path + "." + property.name
                guard let value = members[property.name], !(property.isOptional && value.isNull)
                else {
                    if property.isOptional {
                        continue
                    }
                    throw fault("is missing", at: inner)
                }
                fitted[property.name] = try property.schema.fitted(value, path: inner)
            }
            return .object(fitted)
        }
    }
}

extension FlowValue: ExpressibleByStringLiteral {
    public init(stringLiteral value: String) { self = .string(value) }
}

/// A type of the generated code whose values a flow carries.
public protocol FlowConvertible: Sendable {
    /// Throws a `FlowError` when the value is of another kind.
    init(flowValue: FlowValue) throws
    var flowValue: FlowValue { get }
}

/// What an agent with an object output answers.
public protocol FlowObject: FlowConvertible {
    /// An object with the properties in the order in which they are declared.
    static var schema: ValueSchema { get }
}

/// A choice among names: what an agent with an enumeration output answers, or a property of one.
/// The raw values are the names, in the order in which they are declared.
public protocol FlowChoice: FlowConvertible, RawRepresentable, CaseIterable
where RawValue == String {}

extension FlowChoice {
    public init(flowValue: FlowValue) throws {
        guard case .string(let name) = flowValue, let choice = Self(rawValue: name) else {
            throw FlowError("“\(flowValue.text)” is none of the choices.")
        }
        self = choice
    }
    public var flowValue: FlowValue { .string(rawValue) }

    /// The schema of the choice, under the name of the output or property.
    public static func schema(name: String) -> ValueSchema {
        .choice(name: name, cases: allCases.map(\.rawValue))
    }
}

extension FlowValue: FlowConvertible {
    public init(flowValue: FlowValue) { self = flowValue }
    public var flowValue: FlowValue { self }

    /// The property of an object as a type. Throws a `FlowError` that names the property when it
    /// is missing or of another kind; of an optional type a missing one and null are nothing.
    public func property<T: FlowConvertible>(_ name: String, as type: T.Type = T.self) throws -> T {
        guard case .object(let members) = self else {
            throw FlowError("The property “\(name)” is missing: this is not an object.")
        }
        guard let value = members[name] else {
            if let nothing = try? T(flowValue: .null), !(nothing is FlowValue) {
                return nothing
            }
            throw FlowError("The property “\(name)” is missing.")
        }
        do {
            return try T(flowValue: value)
        } catch {
            throw FlowError("The property “\(name)” is wrong: \(FlowError.message(of: error))")
        }
    }
}

extension String: FlowConvertible {
    public init(flowValue: FlowValue) throws {
        guard case .string(let text) = flowValue else { throw FlowError("It is not a string.") }
        self = text
    }
    public var flowValue: FlowValue { .string(self) }
}

extension Int: FlowConvertible {
    /// A number with a fraction of 0 counts as whole.
    public init(flowValue: FlowValue) throws {
        if case .int(let value) = flowValue {
            self = value
        } else if let number = flowValue.number, let value = Int(exactly: number) {
            self = value
        } else {
            throw FlowError("It is not a whole number.")
        }
    }
    public var flowValue: FlowValue { .int(self) }
}

extension Double: FlowConvertible {
    public init(flowValue: FlowValue) throws {
        guard let number = flowValue.number else { throw FlowError("It is not a number.") }
        self = number
    }
    public var flowValue: FlowValue { .double(self) }
}

extension Bool: FlowConvertible {
    public init(flowValue: FlowValue) throws {
        guard case .bool(let value) = flowValue else {
            throw FlowError("It is not true or false.")
        }
        self = value
    }
    public var flowValue: FlowValue { .bool(self) }
}

extension Array: FlowConvertible where Element: FlowConvertible {
    public init(flowValue: FlowValue) throws {
        guard case .array(let values) = flowValue else { throw FlowError("It is not a list.") }
        self = try values.map { try Element(flowValue: $0) }
    }
    public var flowValue: FlowValue { .array(map(\.flowValue)) }
}

extension Optional: FlowConvertible where Wrapped: FlowConvertible {
    public init(flowValue: FlowValue) throws {
        self = flowValue.isNull ? nil : try Wrapped(flowValue: flowValue)
    }
    public var flowValue: FlowValue { self?.flowValue ?? .null }
}

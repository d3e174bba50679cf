/// A value that a flow carries: what JSON can say, with the order of an object's keys.
public enum FlowValue: Sendable, Equatable {
    case null
    case bool(Bool)
    case int(Int)
    case double(Double)
    /// A number that neither `Int` nor `Double` holds exactly, as JSON writes it. Only made by
    /// reading JSON.
    case number(String)
    case string(String)
    case array([FlowValue])
    case object(Members)

    /// The keys and values of an object, in order. A key stands once.
    public struct Members: Sendable, Equatable, RandomAccessCollection,
        ExpressibleByDictionaryLiteral
    {
        private var elements: [(key: String, value: FlowValue)] = []

        public init() {}

        /// Of repeated keys the first counts.
        public init(_ elements: some Sequence<(key: String, value: FlowValue)>) {
            var seen = Set<String>()
            for element in elements where seen.insert(element.key).inserted {
                self.elements.append(element)
            }
        }

        public init(dictionaryLiteral elements: (String, FlowValue)...) {
            self.init(elements.lazy.map { (key: $0.0, value: $0.1) })
        }

        public var startIndex: Int { 0 }
        public var endIndex: Int { elements.count }
        public subscript(position: Int) -> (key: String, value: FlowValue) { elements[position] }
        public var keys: [String] { elements.map(\.key) }

        /// The value under a key. A new key goes to the end; nothing takes the key away.
        public subscript(key: String) -> FlowValue? {
            get { elements.first { $0.key == key }?.value }
            set {
                guard let index = elements.firstIndex(where: { $0.key == key }) else {
                    if let newValue {
                        elements.append((key: key, value: newValue))
                    }
                    return
                }
                if let newValue {
                    elements[index].value = newValue
                } else {
                    elements.remove(at: index)
                }
            }
        }

        public static func == (left: Members, right: Members) -> Bool {
            left.elements.elementsEqual(right.elements) { $0.key == $1.key && $0.value == $1.value }
        }
    }

    /// Reads one JSON value, in which arrays and objects stand at most 256 deep. Throws a
    /// `FlowError` that says where the text stops being JSON.
    public init(json: String) throws {
        var text = json
        self = try text.withUTF8 { bytes in
            var reader = JSONReader(bytes)
            return try reader.readDocument()
        }
    }

    /// Compact JSON text, keys in their order. Numbers that JSON can't say are null.
    public var json: String {
        var writer = JSONWriter()
        writer.write(self)
        return writer.text
    }

    /// How the value reads in a prompt: a string as it is, nothing for null, everything else as
    /// JSON.
    public var text: String {
        switch self {
        case .string(let text): text
        case .null: ""
        default: json
        }
    }

    /// The value under a key of an object.
    public subscript(key: String) -> FlowValue? {
        if case .object(let members) = self { members[key] } else { nil }
    }

    public var isNull: Bool { self == .null }

    /// The nearest double of a number; nothing for everything else.
    public var number: Double? {
        switch self {
        case .int(let value): Double(value)
        case .double(let value): value
        case .number(let text): Double(text)
        default: nil
        }
    }
}

/// Reads and writes the plain structure, without the order of an object's keys: coders don't keep
/// it. `init(json:)` and `json` do.
extension FlowValue: Codable {
    private struct Key: CodingKey {
        let stringValue: String
        var intValue: Int? { nil }
        init(stringValue: String) { self.stringValue = stringValue }
        init?(intValue: Int) { nil }
    }

    public init(from decoder: any Decoder) throws {
        if let container = try? decoder.container(keyedBy: Key.self) {
            let keys = container.allKeys.sorted { $0.stringValue < $1.stringValue }
            self = .object(Members(try keys.map {
                (key: $0.stringValue, value: try container.decode(FlowValue.self, forKey: $0))
            }))
            return
        }
        if var container = try? decoder.unkeyedContainer() {
            var values: [FlowValue] = []
            while !container.isAtEnd {
                values.append(try container.decode(FlowValue.self))
            }
            self = .array(values)
            return
        }
        let container = try decoder.singleValueContainer()
        if container.decodeNil() {
            self = .null
        } else if let value = try? container.decode(Bool.self) {
            self = .bool(value)
        } else if let value = try? container.decode(Int.self) {
            self = .int(value)
        } else if let value = try? container.decode(Double.self) {
            self = .double(value)
        } else {
            self = .string(try container.decode(String.self))
        }
    }

    public func encode(to encoder: any Encoder) throws {
        switch self {
        case .object(let members):
            var container = encoder.container(keyedBy: Key.self)
            for (key, value) in members {
                try container.encode(value, forKey: Key(stringValue: key))
            }
        case .array(let values):
            var container = encoder.unkeyedContainer()
            for value in values {
                try container.encode(value)
            }
        case .null:
            var container = encoder.singleValueContainer()
            try container.encodeNil()
        case .bool(let value):
            var container = encoder.singleValueContainer()
            try container.encode(value)
        case .int(let value):
            var container = encoder.singleValueContainer()
            try container.encode(value)
        case .double, .number:
            var container = encoder.singleValueContainer()
            try container.encode(number)
        case .string(let value):
            var container = encoder.singleValueContainer()
            try container.encode(value)
        }
    }
}

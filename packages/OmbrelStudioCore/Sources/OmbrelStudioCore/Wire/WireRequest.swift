/// A request that the studio hands over in a file.
public protocol WireRequest {
    /// Reads the record that comes next.
    init(from reader: inout WireReader) throws
}

extension WireRequest {
    /// Reads a request file. Large parts of it (the chunks of knowledge) are read when they are
    /// asked for.
    public init(contentsOf path: String) throws {
        try self.init(json: try MappedFile(path: path))
    }

    /// Reads a request from JSON text.
    public init(json: String) throws {
        try self.init(json: MappedFile(Array(json.utf8)))
    }

    private init(json file: MappedFile) throws {
        var reader = WireReader(file)
        self = try Self(from: &reader)
        try reader.json.finish()
    }
}

/// Reads the records of a request.
public struct WireReader {
    var json: JSONReader
    let file: MappedFile

    init(_ file: MappedFile) {
        self.file = file
        json = JSONReader(file.bytes)
    }

    /// Reads an object; `member` must read the value of the key or return false, whereupon it is
    /// skipped.
    mutating func readRecord(_ member: (String, inout WireReader) throws -> Bool) throws {
        let file: MappedFile = self.file
        try json.readObject { key, json in
            var reader = WireReader(file, json)
            if try !member(key, &reader) {
                try reader.json.skipValue()
            }
            json = reader.json
        }
    }

    mutating func readList<Element>(
        _ element: (inout WireReader) throws -> Element
    ) throws -> [Element] {
        let file: MappedFile = self.file
        return try json.readList { json in
            var reader = WireReader(file, json)
            let value: Element = try element(&reader)
            json = reader.json
            return value
        }
    }

    /// Reads an enumeration with payload: an object whose one key names the case.
    mutating func readCase<Value>(
        _ payload: (String, inout WireReader) throws -> Value
    ) throws -> Value {
        var value: Value?
        var count = 0
        try readRecord { key, reader in
            count += 1
            guard count == 1 else { return false }
            value = try payload(key, &reader)
            return true
        }
        guard count == 1, let value else {
            throw WireError("Invalid number of keys found, expected one.")
        }
        return value
    }

    /// Reads the object that holds a payload without a label.
    mutating func readPayload<Value>(
        _ value: (inout WireReader) throws -> Value
    ) throws -> Value {
        var payload: Value?
        try readRecord { key, reader in
            guard key == "_0" else { return false }
            payload = try value(&reader)
            return true
        }
        return try payload.required("_0")
    }

    /// Reads a string that is one of the raw values.
    mutating func readRawValue<Value: RawRepresentable>() throws -> Value
    where Value.RawValue == String {
        let text: String = try json.readString()
        guard let value = Value(rawValue: text) else {
            throw WireError("“\(text)” is none of the values that are known here.")
        }
        return value
    }

    /// Reads the object that a case without payload has, and returns the case.
    mutating func readEmptyPayload<Value>(_ value: Value) throws -> Value {
        try readRecord { _, _ in false }
        return value
    }

    /// Reads a value that may be null.
    mutating func readOptional<Value>(
        _ value: (inout WireReader) throws -> Value
    ) throws -> Value? {
        json.readNull() ? nil : try value(&self)
    }

    private init(_ file: MappedFile, _ json: JSONReader) {
        self.file = file
        self.json = json
    }
}

extension Optional {
    /// The value that was read for the key, which must be there.
    func required(_ key: String) throws -> Wrapped {
        guard let self else { throw WireError("the key “\(key)” is missing.") }
        return self
    }
}

/// Writes compact JSON.
struct JSONWriter {
    private(set) var text = ""

    mutating func write(_ value: FlowValue) {
        switch value {
        case .null: text += "null"
        case .bool(let value): text += value ? "true" : "false"
        case .int(let value): text += String(value)
        case .double(let value): text += value.isFinite ? String(value) : "null"
        case .number(let digits): text += digits
        case .string(let value): write(value)
        case .array(let values):
            text += "["
            for (index, value) in values.enumerated() {
                text += index == 0 ? "" : ","
                write(value)
            }
            text += "]"
        case .object(let members):
            text += "{"
            for (index, (key, value)) in members.enumerated() {
                text += index == 0 ? "" : ","
                write(key)
                text += ":"
                write(value)
            }
            text += "}"
        }
    }

    mutating func write(_ string: String) {
        text += "\""
        var start = string.utf8.startIndex
        let bytes = string.utf8
        func escape(_ byte: UInt8) -> String? {
            switch byte {
            case 0x22: return "\\\""
            case 0x5C: return "\\\\"
            case 0x08: return "\\b"
            case 0x09: return "\\t"
            case 0x0A: return "\\n"
            case 0x0C: return "\\f"
            case 0x0D: return "\\r"
            case 0..<0x20:
                let digits = String(byte, radix: 16)
                return "\\u00" + (digits.count < 2 ? "0" : "") + digits
            default: return nil
            }
        }
        var index = start
        while index < bytes.endIndex {
            let next = bytes.index(after: index)
            if let escaped = escape(bytes[index]) {
                text += string[start..<index]
                text += escaped
                start = next
            }
            index = next
        }
        text += string[start...]
        text += "\""
    }
}

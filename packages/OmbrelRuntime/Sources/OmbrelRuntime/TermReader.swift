/// Cuts texts into terms: the runs of characters that are letters or numbers, in the text after
/// lower-casing.
struct TermReader {
    /// A term in a text: ASCII bytes in lower case, or a text with other characters.
    enum Term {
        case ascii(UnsafeBufferPointer<UInt8>)
        case other(Substring)
    }

    private var lowered: [UInt8] = []

    /// The terms of a text in order.
    static func terms(of text: String) -> [String] {
        var terms: [String] = []
        var reader = TermReader()
        var text = text
        text.withUTF8 { bytes in
            reader.read(bytes) { term in
                switch term {
                case .ascii(let bytes): terms.append(String(decoding: bytes, as: UTF8.self))
                case .other(let text): terms.append(String(text))
                }
            }
        }
        return terms
    }

    /// Calls `take` for each term in order. What it gets is good during the call only.
    mutating func read(_ bytes: UnsafeBufferPointer<UInt8>, _ take: (Term) -> Void) {
        var offset = 0
        while offset < bytes.count {
            let mixed = Self.nextMixed(bytes, offset)
            readASCII(UnsafeBufferPointer(rebasing: bytes[offset..<mixed.lowerBound]), take)
            if !mixed.isEmpty {
                readMixed(UnsafeBufferPointer(rebasing: bytes[mixed]), take)
            }
            offset = mixed.upperBound
        }
    }

    /// The lower case of an ASCII letter or digit; 0 for every other byte.
    @inline(__always)
    private static func word(_ byte: UInt8) -> UInt8 {
        let lower = byte | 0x20
        let letter: UInt8 = lower &- 0x61 < 26 ? lower : 0
        return byte &- 0x30 < 10 ? byte : letter
    }

    /// The first stretch from `offset` on that holds bytes other than ASCII, with all that could
    /// make one character or one term with them; empty at the end when there is none.
    private static func nextMixed(_ bytes: UnsafeBufferPointer<UInt8>, _ offset: Int) -> Range<Int>
    {
        let raw = UnsafeRawBufferPointer(bytes)
        var i = offset
        while i + 8 <= bytes.count,
            raw.loadUnaligned(fromByteOffset: i, as: UInt64.self) & 0x8080_8080_8080_8080 == 0
        {
            i += 8
        }
        while i < bytes.count, bytes[i] < 0x80 {
            i += 1
        }
        guard i < bytes.count else { return i..<i }
        // Between two ASCII characters there is a boundary (or both are separators, as CR LF are).
        // So the characters around here need one ASCII character before and one after, and the
        // terms need the rest of the words that these belong to.
        var begin = i
        if begin > offset {
            begin -= 1
            while begin > offset, word(bytes[begin]) != 0, word(bytes[begin - 1]) != 0 {
                begin -= 1
            }
        }
        while i < bytes.count, bytes[i] >= 0x80 {
            while i < bytes.count, bytes[i] >= 0x80 {
                i += 1
            }
            i = min(i + 1, bytes.count)
            while i < bytes.count, word(bytes[i]) != 0 {
                i += 1
            }
        }
        return begin..<i
    }

    private mutating func readASCII(_ bytes: UnsafeBufferPointer<UInt8>, _ take: (Term) -> Void) {
        guard !bytes.isEmpty else { return }
        if lowered.count < bytes.count {
            lowered = [UInt8](repeating: 0, count: bytes.count * 2)
        }
        lowered.withUnsafeMutableBufferPointer { lowered in
            for i in 0..<bytes.count {
                lowered[i] = Self.word(bytes[i])
            }
            let words = UnsafeBufferPointer(rebasing: lowered[0..<bytes.count])
            var begin = 0
            while begin < words.count {
                guard words[begin] != 0 else {
                    begin += 1
                    continue
                }
                var end = begin + 1
                while end < words.count, words[end] != 0 {
                    end += 1
                }
                take(.ascii(UnsafeBufferPointer(rebasing: words[begin..<end])))
                begin = end + 1
            }
        }
    }

    private func readMixed(_ bytes: UnsafeBufferPointer<UInt8>, _ take: (Term) -> Void) {
        let lower = String(decoding: bytes, as: UTF8.self).lowercased()
        for term in lower.split(whereSeparator: { !($0.isLetter || $0.isNumber) }) {
            var ascii = String(term)
            if ascii.utf8.allSatisfy({ $0 < 0x80 }) {
                ascii.withUTF8 { take(.ascii($0)) }
            } else {
                take(.other(term))
            }
        }
    }
}

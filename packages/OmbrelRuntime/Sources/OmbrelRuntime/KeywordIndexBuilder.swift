/// Collects the postings of texts, and writes them in the form that `KeywordIndex` reads.
struct KeywordIndexBuilder {
    private struct Slot {
        var hash: UInt32
        var term: UInt32  // counted from 1; 0 is an empty slot
    }
    /// A term of a text, text by text in order of first occurrence.
    private struct Entry {
        var term: UInt32
        var frequency: UInt32
    }

    private var reader = TermReader()
    /// The terms of ASCII in a hash table with open addressing, the others in a dictionary, where
    /// canonically equivalent ones are the same.
    private var slots = [Slot](repeating: Slot(hash: 0, term: 0), count: 1 << 12)
    private var others: [String: UInt32] = [:]
    private var texts: [UInt8] = []
    private var textStarts: [Int] = [0]
    private var entries: [Entry] = []
    private var textEnds: [Int] = []  // in `entries`, of each text
    private var lengths: [UInt32] = []
    private var lastEntry: [Int] = []  // of each term
    private var counts: [UInt32] = []  // in how many texts each term is

    private var termCount: Int { textStarts.count - 1 }

    mutating func add(_ text: UnsafeBufferPointer<UInt8>) {
        let begin = entries.count
        var length: UInt32 = 0
        var reader = self.reader
        self.reader = TermReader()
        reader.read(text) { term in
            let id: Int
            switch term {
            case .ascii(let bytes): id = asciiTerm(bytes)
            case .other(let text): id = otherTerm(String(text))
            }
            length += 1
            let last = lastEntry[id]
            if last >= begin {
                entries[last].frequency += 1
            } else {
                lastEntry[id] = entries.count
                counts[id] += 1
                entries.append(Entry(term: UInt32(id), frequency: 1))
            }
        }
        self.reader = reader
        lengths.append(length)
        textEnds.append(entries.count)
    }

    private mutating func newTerm(_ bytes: some Sequence<UInt8>) -> Int {
        texts.append(contentsOf: bytes)
        textStarts.append(texts.count)
        lastEntry.append(-1)
        counts.append(0)
        return termCount - 1
    }

    private mutating func otherTerm(_ text: String) -> Int {
        if let known = others[text] {
            return Int(known)
        }
        let id = newTerm(text.utf8)
        others[text] = UInt32(id)
        return id
    }

    private mutating func asciiTerm(_ bytes: UnsafeBufferPointer<UInt8>) -> Int {
        var hash: UInt32 = 2_166_136_261
        for byte in bytes {
            hash = (hash ^ UInt32(byte)) &* 16_777_619
        }
        hash ^= hash >> 15
        let mask = slots.count - 1
        var place = Int(hash) & mask
        while slots[place].term != 0 {
            if slots[place].hash == hash, isTerm(Int(slots[place].term) - 1, bytes) {
                return Int(slots[place].term) - 1
            }
            place = (place + 1) & mask
        }
        let id = newTerm(bytes)
        slots[place] = Slot(hash: hash, term: UInt32(id + 1))
        if termCount * 2 > slots.count {
            grow()
        }
        return id
    }

    private func isTerm(_ id: Int, _ bytes: UnsafeBufferPointer<UInt8>) -> Bool {
        let start = textStarts[id]
        guard textStarts[id + 1] - start == bytes.count else { return false }
        for i in 0..<bytes.count where texts[start + i] != bytes[i] {
            return false
        }
        return true
    }

    private mutating func grow() {
        var grown = [Slot](repeating: Slot(hash: 0, term: 0), count: slots.count * 2)
        let mask = grown.count - 1
        for slot in slots where slot.term != 0 {
            var place = Int(slot.hash) & mask
            while grown[place].term != 0 {
                place = (place + 1) & mask
            }
            grown[place] = slot
        }
        slots = grown
    }

    /// The index of the texts so far.
    func finish() -> Bytes {
        let isOther = Set(others.values)
        let ascii = (0..<termCount).filter { !isOther.contains(UInt32($0)) }.map {
            (id: $0, name: String(decoding: texts[textStarts[$0]..<textStarts[$0 + 1]], as: UTF8.self))
        }
        let order = ascii.sorted { $0.name < $1.name }.map(\.id) + others.values.sorted().map(Int.init)
        var starts = [Int](repeating: 0, count: termCount)
        var total = 0
        for id in order {
            starts[id] = total
            total += Int(counts[id])
        }
        let layout = KeywordLayout(
            chunkCount: lengths.count, termCount: termCount, asciiTermCount: ascii.count,
            postingCount: total, textBytes: texts.count)
        return Bytes(count: layout.count) { memory in
            memory.initializeMemory(as: UInt8.self, repeating: 0)
            layout.writeHead(
                to: memory, totalLength: lengths.reduce(0) { $0 + UInt64($1) })
            for (i, length) in lengths.enumerated() {
                memory.storeBytes(
                    of: length.littleEndian, toByteOffset: layout.lengths + 4 * i, as: UInt32.self)
            }
            for (i, id) in order.enumerated() {
                layout.writeTerm(
                    i, to: memory, textStart: textStarts[id],
                    textCount: textStarts[id + 1] - textStarts[id], postingsStart: starts[id],
                    postingCount: Int(counts[id]))
            }
            var next = starts
            var entry = 0
            for (chunk, end) in textEnds.enumerated() {
                while entry < end {
                    let id = Int(entries[entry].term)
                    let place = layout.postings + 8 * next[id]
                    memory.storeBytes(
                        of: UInt32(chunk).littleEndian, toByteOffset: place, as: UInt32.self)
                    memory.storeBytes(
                        of: entries[entry].frequency.littleEndian, toByteOffset: place + 4,
                        as: UInt32.self)
                    next[id] += 1
                    entry += 1
                }
            }
            texts.withUnsafeBytes {
                UnsafeMutableRawBufferPointer(rebasing: memory[layout.texts...])
                    .copyMemory(from: $0)
            }
        }
    }
}

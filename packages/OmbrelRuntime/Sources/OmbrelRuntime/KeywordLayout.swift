/// Where what stands in the bytes of a keyword index: six counts, the length of each chunk in
/// terms, the terms, their postings, and their texts. Of the terms those of ASCII come first, by
/// their bytes. All numbers are little-endian.
struct KeywordLayout {
    let chunkCount: Int
    let termCount: Int
    let asciiTermCount: Int
    let postingCount: Int
    let textBytes: Int

    static let headSize = 48
    /// Where the number of all terms in all chunks stands.
    static let totalLength = 40
    static let termSize = 24

    var lengths: Int { Self.headSize }
    var terms: Int { lengths + (4 * chunkCount + 7) / 8 * 8 }
    var postings: Int { terms + Self.termSize * termCount }
    var texts: Int { postings + 8 * postingCount }
    var count: Int { texts + textBytes }

    func writeHead(to memory: UnsafeMutableRawBufferPointer, totalLength: UInt64) {
        let counts = [chunkCount, termCount, asciiTermCount, postingCount, textBytes]
        for (i, number) in (counts.map(UInt64.init) + [totalLength]).enumerated() {
            memory.storeBytes(of: number.littleEndian, toByteOffset: 8 * i, as: UInt64.self)
        }
    }

    func writeTerm(
        _ index: Int, to memory: UnsafeMutableRawBufferPointer, textStart: Int, textCount: Int,
        postingsStart: Int, postingCount: Int
    ) {
        let place = terms + Self.termSize * index
        memory.storeBytes(of: UInt64(textStart).littleEndian, toByteOffset: place, as: UInt64.self)
        memory.storeBytes(
            of: UInt64(postingsStart).littleEndian, toByteOffset: place + 8, as: UInt64.self)
        memory.storeBytes(
            of: UInt32(textCount).littleEndian, toByteOffset: place + 16, as: UInt32.self)
        memory.storeBytes(
            of: UInt32(postingCount).littleEndian, toByteOffset: place + 20, as: UInt32.self)
    }

    struct Term {
        var textStart: Int
        var textCount: Int
        var postingsStart: Int
        var postingCount: Int
    }

    /// Nothing when it is not one of this index.
    func term(_ index: Int, in memory: UnsafeRawBufferPointer) -> Term? {
        let place = terms + Self.termSize * index
        func long(_ offset: Int) -> UInt64 {
            UInt64(littleEndian: memory.loadUnaligned(fromByteOffset: place + offset, as: UInt64.self))
        }
        func short(_ offset: Int) -> Int {
            Int(UInt32(littleEndian: memory.loadUnaligned(
                fromByteOffset: place + offset, as: UInt32.self)))
        }
        guard long(0) <= UInt64(textBytes), long(8) <= UInt64(postingCount) else { return nil }
        let term = Term(
            textStart: Int(long(0)), textCount: short(16), postingsStart: Int(long(8)),
            postingCount: short(20))
        guard term.textCount <= textBytes - term.textStart,
            term.postingCount <= postingCount - term.postingsStart
        else { return nil }
        return term
    }

    init(
        chunkCount: Int, termCount: Int, asciiTermCount: Int, postingCount: Int, textBytes: Int
    ) {
        self.chunkCount = chunkCount
        self.termCount = termCount
        self.asciiTermCount = asciiTermCount
        self.postingCount = postingCount
        self.textBytes = textBytes
    }

    /// Nothing when the bytes are not as many as their head says.
    init?(_ memory: UnsafeRawBufferPointer) {
        guard memory.count >= Self.headSize else { return nil }
        var counts: [Int] = []
        for i in 0..<5 {
            let number = UInt64(
                littleEndian: memory.loadUnaligned(fromByteOffset: 8 * i, as: UInt64.self))
            // None of the products can overflow with counts up to this.
            guard number <= UInt64(memory.count) else { return nil }
            counts.append(Int(number))
        }
        self.init(
            chunkCount: counts[0], termCount: counts[1], asciiTermCount: counts[2],
            postingCount: counts[3], textBytes: counts[4])
        guard count == memory.count, asciiTermCount <= termCount else { return nil }
    }
}

/// Tells contents apart: 128 bits that change when any byte does. No protection against somebody
/// who makes contents collide.
struct ContentHash {
    private var one: UInt64 = 0x9E37_79B9_7F4A_7C15
    private var two: UInt64 = 0xC2B2_AE3D_27D4_EB4F

    mutating func add(_ bytes: UnsafeRawBufferPointer) {
        let count: Int = bytes.count
        var position = 0
        while position + 16 <= count {
            mix(
                bytes.loadUnaligned(fromByteOffset: position, as: UInt64.self),
                bytes.loadUnaligned(fromByteOffset: position + 8, as: UInt64.self))
            position += 16
        }
        var rest: (UInt64, UInt64) = (0, 0)
        for index in position..<count {
            let shift = UInt64((index - position) & 7) * 8
            if index - position < 8 {
                rest.0 |= UInt64(bytes[index]) << shift
            } else {
                rest.1 |= UInt64(bytes[index]) << shift
            }
        }
        mix(rest.0, rest.1)
        mix(UInt64(count), 0xFF51_AFD7_ED55_8CCD)
    }

    mutating func add(_ text: String) {
        var text = text
        text.withUTF8 { add(UnsafeRawBufferPointer($0)) }
    }

    /// 32 hexadecimal digits.
    var hexadecimal: String {
        var last: ContentHash = self
        last.mix(one ^ two, one &+ two)
        return Self.digits(last.one) + Self.digits(last.two)
    }

    private mutating func mix(_ first: UInt64, _ second: UInt64) {
        one = Self.fold(one ^ first, 0xA076_1D64_78BD_642F ^ second) &+ two.rotated(29)
        two = Self.fold(two ^ second, 0xE703_7ED1_A0B4_28DB ^ first) &+ one
    }

    private static func fold(_ left: UInt64, _ right: UInt64) -> UInt64 {
        let product = left.multipliedFullWidth(by: right)
        // The factors are kept, so that a factor of 0 does not swallow the other.
        return (product.high ^ product.low) &+ left &+ right.rotated(17)
    }

    private static func digits(_ number: UInt64) -> String {
        let digits = String(number, radix: 16)
        return String(repeating: "0", count: 16 - digits.count) + digits
    }
}

extension UInt64 {
    fileprivate func rotated(_ count: UInt64) -> UInt64 {
        self << count | self >> (64 - count)
    }
}

#if canImport(Darwin)
    import Darwin
#elseif canImport(Glibc)
    import Glibc
#elseif canImport(Musl)
    import Musl
#endif

/// As "%.2f".
func twoDecimals(_ number: Double) -> String {
    var buffer = [CChar](repeating: 0, count: 400)
    let length = withVaList([number]) { vsnprintf(&buffer, buffer.count, "%.2f", $0) }
    return String(decoding: buffer.prefix(Int(length)).map(UInt8.init(bitPattern:)), as: UTF8.self)
}

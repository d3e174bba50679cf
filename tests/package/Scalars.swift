// Prints for every scalar what the studio's package_samples prints.
func hex(_ text: String) -> String {
    text.unicodeScalars.map { String($0.value, radix: 16) }.joined(separator: "+")
}

var output = ""
for value in UInt32(0)..<0x110000 {
    guard let scalar = Unicode.Scalar(value) else { continue }
    let character = Character(scalar)
    let text = String(character)
    var terms = ""
    for (before, after) in [
        ("a", "a"), ("\r", "\n"), ("\u{1F469}\u{200D}", "\u{1F469}"), ("\u{915}\u{94D}", "\u{915}"),
        ("\u{1F1E9}", "\u{1F1EA}"), ("\u{1100}", "\u{11A8}"), ("\u{AC00}", "\u{1161}"),
        ("\u{600}", "\u{301}"), ("\u{B95}\u{BCD}", "\u{B95}\u{BCD}\u{B95}"),
        ("-", "\u{301}a"), ("a\u{301}", "-\u{301}a"),
    ] {
        for term in (before + text + after).lowercased().split(whereSeparator: {
            !($0.isLetter || $0.isNumber)
        }) {
            terms += "\(term.utf8.count) "
        }
        terms += "|"
    }
    output += "\(String(value, radix: 16)) \(hex(text.lowercased())) "
    output += "\(character.isLetter ? "L" : "-")\(character.isNumber ? "N" : "-") \(terms)\n"
    if output.utf8.count > 1 << 16 {
        print(output, terminator: "")
        output = ""
    }
}
print(output, terminator: "")

@Generable struct Report { var part: Part; var others: [Part] }
@Generable struct Part { var old: Int }
@Generable struct Part { var new: Caf\u00e9; var set: Set<Int>, view: any View, f: () -> Int }
struct Int { var n: Int }
struct Empty { var computed: Int { 3 } }
struct Left { var right: Right } ; struct Right { var left: Left; var me: Right }

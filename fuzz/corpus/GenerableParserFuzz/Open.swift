@Generable
class
enum case
extension
extension X { protocol P { struct S { actor T { var deep: [[[[Int?]!]]] -> Int -> some any [Int:
@Generable struct A { var x: ; var y: [; let z: (Int
@Guide( var w: Int }
} } struct
enum { case }
struct B<T { var q: Int
  case stray, var
  @Guide(description:, .anyOf("a" "b"), , ]) var r: String = {
struct C : D where { func f) { } var lost

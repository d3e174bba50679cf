@Generable struct A<T> { var a: B, b: B, c: [B], d: B? }
@Generable struct B { var a: C, b: C, c: [[C]], d: C? }
@Generable struct C { var a: D, b: D, c: [[D?]], d: D? }
@Generable struct D { var a: E, b: E, c: [E], d: E? }
@Generable struct E { var a: F, b: F, c: [F], d: F? }
@Generable struct F { var a: G, b: G, c: [G], d: G? }
@Generable struct G { var a: H, b: H, c: [H], d: A<Int>.B? }
@Generable enum H { case a, b, c, d }

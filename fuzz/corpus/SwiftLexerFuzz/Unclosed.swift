let a = "unclosed
let b = `unclosed
let c = """
  never
  closed \(or(not) 
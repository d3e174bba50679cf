/// Title
var title: String
/**
 * One
 * two
 */
let text = """
    a
      b
    """
#if x
#endif

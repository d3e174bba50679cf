#if canImport(FoundationModels) && os(macOS)
import FoundationModels
#elseif DEBUG
import Foundation
#else
#error("No model on this platform")
#endif

#sourceLocation(file: "Generated.swift", line: 1)
#warning("Look at this again")

@available(macOS 26, *)
struct `Type` {
    var `class`: String = #file
    var `default`: Int = #line
    let key = #keyPath(Person.name)

    func `repeat`(_ `in`: Int) -> Int {
        guard #available(iOS 26, *), let x = [1, 2, 3].first(where: { $0 > `in` }) else { return $1 }
        return x << 2 &+ ~x ?? 3
    }
}

##if nothing
#"raw"# + ##"more "# raw"## // and a comment with "quotes" and /* stars */
//// not documentation
///documentation
///
/**/ /***/ /** one */ /* two */
infix operator <~> : AdditionPrecedence
postfix operator …
let 变量 = Größe.ñandú(π: 3.14)

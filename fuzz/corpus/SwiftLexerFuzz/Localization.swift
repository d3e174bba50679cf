// Localization.swift
// Texts of the reader, with every kind of literal that they need.

import Foundation

/// Texts that the reader shows. Keys are stable; values are what translators write.
enum Texts {
    static let title = "Today’s reading"
    static let quote = "She said \"wait\", and then: \u{201C}go\u{201D}.\n\tEnd."
    static let path = #"C:\Users\reader\notes.txt"#
    static let pattern = ##"^"#(\w+)"\s*$"##
    static let unicode = "Zoë, naïve, 東京, Ελλάδα, 👩‍👩‍👧, 🇩🇪, e\u{301}"

    static func greeting(for name: String, unread count: Int) -> String {
        "Hello \(name.isEmpty ? "reader" : name), \(count) \(count == 1 ? "page" : "pages (\(count * 2) sides)") left"
    }

    static let help = """
        Press \u{2318}N for a new note.
          - "Quotes" and ""double"" ones stay.
          - A backslash \\ and a line that \
        goes on.

        Bye.
        """

    static let rawHelp = #"""
        \n stays as it is, \#n does not.
        """ is not the end either.
        \#(title)
        """#

    static let empty = ""
    static let emptyBlock = """
        """
}

/* A comment /* with another one /* and a third */ inside */ that ends here. */
/**
 * Numbers, in every form that people write.
 *
 * - Note: signs are not part of them.
 */
let numbers: [Double] = [0, -1, 1_000_000, 0xFF, 0b1010, 0o17, 1.5, 2.5e-3, 0x1.8p3, .5]
let ranges = (0...10, 0..<10, ...5, 2...)

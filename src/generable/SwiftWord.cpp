#include "generable/SwiftWord.h"

#include <algorithm>
#include <array>

namespace ombrel {

namespace {

struct Entry {
    std::string_view word;
    SwiftWord meaning;
};

constexpr auto byWord = [](const Entry& a, const Entry& b) { return a.word < b.word; };

constexpr auto entries = [] {
    using enum SwiftWord;
    std::array table{
        Entry{"public", modifier},
        Entry{"private", modifier},
        Entry{"fileprivate", modifier},
        Entry{"internal", modifier},
        Entry{"open", modifier},
        Entry{"package", modifier},
        Entry{"final", modifier},
        Entry{"static", modifier},
        Entry{"nonisolated", modifier},
        Entry{"indirect", modifier},
        Entry{"mutating", modifier},
        Entry{"nonmutating", modifier},
        Entry{"lazy", modifier},
        Entry{"weak", modifier},
        Entry{"unowned", modifier},
        Entry{"override", modifier},
        Entry{"required", modifier},
        Entry{"convenience", modifier},
        Entry{"dynamic", modifier},
        Entry{"optional", modifier},
        Entry{"consuming", modifier},
        Entry{"borrowing", modifier},
        Entry{"isolated", modifier},
        Entry{"sending", modifier},
        Entry{"distributed", modifier},
        Entry{"var", variable},
        Entry{"let", variable},
        Entry{"case", caseWord},
        Entry{"struct", typeWord},
        Entry{"class", typeWord},
        Entry{"actor", typeWord},
        Entry{"enum", typeWord},
        Entry{"extension", typeWord},
        Entry{"protocol", typeWord},
        Entry{"func", function},
        Entry{"init", function},
        Entry{"deinit", function},
        Entry{"subscript", function},
        Entry{"macro", function},
        Entry{"typealias", expression},
        Entry{"associatedtype", expression},
        Entry{"import", expression},
        Entry{"operator", expression},
        Entry{"precedencegroup", expression},
    };
    std::sort(table.begin(), table.end(), byWord);
    return table;
}();

} // namespace

SwiftWord swiftWord(std::string_view word) {
    const auto found = std::lower_bound(entries.begin(), entries.end(), Entry{word, {}}, byWord);
    return found != entries.end() && found->word == word ? found->meaning : SwiftWord::none;
}

} // namespace ombrel
